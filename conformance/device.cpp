// Calls of the service, each with its bound.
#include "device.h"

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BpOfflineCameraCallback.h>
#include <android/binder_manager.h>
#include <fcntl.h>
#include <system/camera_metadata.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <set>
#include <thread>

namespace conformance {

namespace {

using ndk::ScopedAStatus;

constexpr int kMostUnanswered = 4;  // calls, before the rest is skipped

// Of this process's main thread, which makes all calls.
int s_unanswered = 0;
std::string s_lastAnswered, s_firstDead;  // calls

// What the test client sends: the device's own dump, where there is one, and for Y2J 90 degrees.
std::vector<uint8_t> MetadataFor(int32_t mode) {
    std::ifstream file("/data/vendor/camera/metadata/original_dump.bin", std::ios::binary);
    std::vector<uint8_t> blob(std::istreambuf_iterator<char>(file), {});
    if (mode != kY2J && !blob.empty()) return blob;
    const int32_t degrees = 90;
    camera_metadata_t* const metadata = allocate_camera_metadata(10, 80);
    add_camera_metadata_entry(metadata, ANDROID_JPEG_ORIENTATION, &degrees, 1);
    const auto* bytes = reinterpret_cast<const uint8_t*>(metadata);
    if (metadata != nullptr) blob.assign(bytes, bytes + get_camera_metadata_size(metadata));
    free_camera_metadata(metadata);
    return blob;
}

}  // namespace

std::string Answer::Text() const {
    if (status == nullptr) return call + " did not return within 5 s";
    if (Died()) return call + ": the service died";
    return call + (Ok() ? " returned OK" : " returned " + status->getDescription());
}

Answer Bounded(const std::string& name, Call call) {
    std::packaged_task<Answer()> task([call = std::move(call)] {
        Answer answer;
        answer.status = std::make_shared<ScopedAStatus>(call(&answer));
        answer.returned = Clock::now();
        return answer;
    });
    std::future<Answer> coming = task.get_future();
    std::thread(std::move(task)).detach();
    Answer answer;
    const bool came = coming.wait_for(kWait) == std::future_status::ready;
    if (came) answer = coming.get();
    answer.call = name;
    s_unanswered += !came;
    if (answer.Died() && s_firstDead.empty()) s_firstDead = ", before " + name + " was";
    if (came && !answer.Died()) s_lastAnswered = name;
    return answer;
}

bool Eventually(const std::function<bool()>& holds, milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    while (!holds()) {
        if (Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(milliseconds(5));
    }
    return true;
}

bool Device::Connect() {
    const auto look = [&] {
        binder.set(AServiceManager_checkService(kInstance));
        return binder.get() != nullptr && AIBinder_ping(binder.get()) == STATUS_OK;
    };
    if (s_unanswered >= kMostUnanswered || !Eventually(look)) return false;
    service = package::IOfflineCameraService::fromBinder(binder);
    m_canOpen.reset();
    m_plain.clear();
    s_firstDead.clear();
    return true;
}

std::string Device::Trouble() {
    if (s_unanswered >= kMostUnanswered) return Say(kMostUnanswered, " calls were not answered");
    const bool dead = AIBinder_ping(binder.get()) == STATUS_DEAD_OBJECT;
    return dead ? "the service died after " + s_lastAnswered + " was answered" + s_firstDead : "";
}

Callback Device::ForeignCallback() {
    return ndk::SharedRefBase::make<package::BpOfflineCameraCallback>(binder);
}

Answer Device::Register(int32_t id, const Callback& callback) {
    return Bounded("registerClient", [=, service = service](Answer*) {
        return service->registerClient(id, callback);
    });
}

Answer Device::Open(const Callback& callback) {
    return Bounded("openOfflineSession", [=, service = service](Answer* answer) {
        return service->openOfflineSession("offlincameratest", callback, &answer->session);
    });
}

Answer Device::ListModes() {
    return Bounded("getSupportedOpModes", [service = service](Answer* answer) {
        return service->getSupportedOpModes(&answer->modes);
    });
}

bool Device::CanOpen() {
    if (!m_canOpen) m_canOpen = Session(*this).IsOpen();
    return *m_canOpen;
}

const std::vector<PlainRun>& Device::PlainRuns() {
    while (m_plain.size() < std::size(kModes)) m_plain.push_back(RunPlain(kModes[m_plain.size()]));
    return m_plain;
}

const PlainRun* Device::Find(const Need& need) {
    for (const PlainRun& run : PlainRuns()) {
        const bool wanted = !need.mode || *need.mode == run.info.opMode;
        if (wanted && (run.*need.holds)()) return &run;
    }
    return nullptr;
}

Session::Session(Device& device)
    : device(device),
      client(ndk::SharedRefBase::make<Recorder>(&device.pool)),
      opened(device.Open(client)),
      proxy(opened.Ok() ? opened.session : nullptr) {}

Session::~Session() {
    if (IsOpen() && !m_closed) Close();
}

Answer Session::Configure(const Configuration& wanted) {
    const Answer answer = Bounded("configureOfflineStreams", [proxy = proxy, wanted](Answer*) {
        return proxy->configureOfflineStreams(wanted);
    });
    if (answer.Ok()) info = wanted;
    return answer;
}

Requests Session::Request(int64_t idOffset) {
    int64_t inputId = idOffset, outputId = idOffset;
    Requests requests(1);
    auto& request = requests[0];
    request.frameNumber = -1;
    const auto add = [&](const Stream& stream, size_t number, int64_t id, auto* list) {
        auto& buffer = list->emplace_back();
        buffer.streamId = stream.id;
        buffer.bufferId = id;
        buffer.buffer = device.pool.Get(stream, number).Handle();
    };
    for (size_t frame = 0; frame < FramesOf(info.opMode); ++frame) {
        auto& input = request.inFrameInfos.emplace_back();
        input.metadata = MetadataFor(info.opMode);
        for (const Stream& stream : info.streams) {
            if (IsInput(stream)) add(stream, frame, ++inputId, &input.buffers);
        }
    }
    auto& outputs = request.outputBuffers;
    for (const Stream& stream : info.streams) {
        if (!IsInput(stream)) add(stream, outputs.size(), ++outputId, &outputs);
    }
    return requests;
}

Answer Session::Process(Requests requests) {
    const auto sent = std::make_shared<Requests>(std::move(requests));
    return Bounded("processOfflineRequest", [proxy = proxy, sent](Answer* answer) {
        return proxy->processOfflineRequest(*sent, &answer->number);
    });
}

Answer Session::Close() {
    m_closed = true;
    return Bounded("closeOfflineSession",
                   [proxy = proxy](Answer*) { return proxy->closeOfflineSession(); });
}

Verdict Session::AwaitResult(const Answer& sent, const std::string& what) {
    if (!sent.Ok()) return sent.MustSucceed(what);
    const auto outputs =
            std::count_if(info.streams.begin(), info.streams.end(), std::not_fn(IsInput));
    const auto complete = [&](const Events& events) {
        const auto named = BuffersOf(Of(events, Event::kResult, sent.number));
        return Failed(events, sent.number) || named.size() >= static_cast<size_t>(outputs);
    };
    const bool came = client->WaitFor(complete);
    return Require(came && !Failed(All(), sent.number), Say(what, " of frame ", sent.number),
                   Text(All()) + (came ? "" : ", and no more in 5 s"));
}

Verdict Session::AwaitAnswer(const Answer& sent, Outcome good) {
    if (!sent.Ok()) return sent.MustBeRefused();
    const Verdict result = AwaitResult(sent, "an answer");
    if (Failed(All(), sent.number)) return {};
    if (!result.Good() || good == Outcome::kOk) return result;
    if (good == Outcome::kWarn) return Warn("a result with good buffers");
    return Fail("a refusal, an error message or a broken buffer", Text(All()));
}

Verdict Session::Exchange(const std::string& what, int64_t idOffset) {
    return AwaitResult(Process(Request(idOffset)), what);
}

Verdict Session::AwaitEnds(size_t count) {
    std::set<int32_t> ended;  // frames
    const auto more = [&](const Events& events) {
        const size_t before = ended.size();
        for (const Event& event : events) {
            const bool result = event.kind == Event::kResult && !event.buffers.empty();
            if (result || event.kind == Event::kError) ended.insert(event.frame);
        }
        return ended.size() > before;
    };
    while (ended.size() < count && client->WaitFor(more)) continue;
    return Require(ended.size() >= count,
                   Say("result or error of each of ", count, " frames, within 5 s"), Text(All()));
}

NativeHandle FenceOf(int descriptor) {
    NativeHandle handle;
    handle.fds.emplace_back(fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    return handle;
}

Need Works(std::optional<Mode> mode) {
    return {&PlainRun::Works,
            mode ? Say(NameOf(*mode), " brings no results")
                 : "no mode brings results: see configuration and process",
            mode};
}

Run OnSession(const Use& use, const Need& need) {
    return [=](Device& device) {
        const PlainRun* run = need.holds ? device.Find(need) : nullptr;
        if (need.holds && run == nullptr) return Skip(need.otherwise);
        if (!device.CanOpen()) return Skip("no session can be opened: see session.open");
        Session session(device);
        if (run != nullptr) session.info = run->info;
        return session.IsOpen() ? use(session) : session.opened.MustSucceed("a session, as before");
    };
}

Run OnStreams(const Use& use, const Need& need) {
    const auto configure = [=](Session& session) {
        const Answer taken = session.Configure(session.info);
        return taken.Ok() ? use(session) : taken.MustSucceed("streams taken as before");
    };
    return OnSession(configure, need);
}

Check Noted(const std::string& name, const std::string& rule, const std::string& reason) {
    const auto look = [=](Device& device) {
        if (!device.pool.Ready()) return Skip("no graphics allocator, or no mapper 4.0");
        Verdict verdict = Skip(device.Find({&PlainRun::Taken}) ? reason : "no mode is taken");
        for (const PlainRun& run : device.PlainRuns()) {
            const auto found = run.findings.find(name);
            if (found == run.findings.end()) continue;
            verdict = found->second;
            if (!verdict.Good()) break;
        }
        return verdict;
    };
    return {name, rule, look};
}

}  // namespace conformance
