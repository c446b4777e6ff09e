// Calls of the service, each with its bound.
#include "device.h"

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BpOfflineCameraCallback.h>
#include <android/binder_manager.h>
#include <system/camera_metadata.h>

#include <algorithm>
#include <fstream>
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

std::vector<uint8_t> OrientationMetadata() {
    std::vector<uint8_t> blob;
    const int32_t degrees = 90;
    camera_metadata_t* const metadata = allocate_camera_metadata(10, 80);
    add_camera_metadata_entry(metadata, ANDROID_JPEG_ORIENTATION, &degrees, 1);
    const auto* bytes = reinterpret_cast<const uint8_t*>(metadata);
    if (metadata != nullptr) blob.assign(bytes, bytes + get_camera_metadata_size(metadata));
    free_camera_metadata(metadata);
    return blob;
}

// The device's own dump, as the test client sends it, where there is one.
std::vector<uint8_t> FrameMetadata() {
    std::ifstream file("/data/vendor/camera/metadata/original_dump.bin", std::ios::binary);
    const std::vector<uint8_t> dump{std::istreambuf_iterator<char>(file), {}};
    return dump.empty() ? OrientationMetadata() : dump;
}

}  // namespace

std::string Answer::Text() const {
    if (status == nullptr) return call + " did not return within 5 s";
    if (Died()) return call + ": the service died";
    return call + (Ok() ? " returned OK" : " returned " + status->getDescription());
}

Answer Bounded(const std::string& name, Call call) {
    struct Pending {
        std::mutex lock;  // guards the answer
        std::condition_variable came;
        Answer answer;
    };
    const auto pending = std::make_shared<Pending>();
    pending->answer.call = name;
    std::thread([pending, call = std::move(call)] {
        int32_t number = 0;
        auto status = std::make_shared<ScopedAStatus>(call(&number));
        const auto returned = Clock::now();
        const std::lock_guard<std::mutex> guard(pending->lock);
        pending->answer.returned = returned;
        pending->answer.status = std::move(status);
        pending->answer.number = number;
        pending->came.notify_all();
    }).detach();
    std::unique_lock<std::mutex> guard(pending->lock);
    const bool came =
            pending->came.wait_for(guard, kWait, [&] { return pending->answer.status != nullptr; });
    if (!came) ++s_unanswered;
    if (pending->answer.Died() && s_firstDead.empty()) s_firstDead = ", before " + name + " was";
    if (came && !pending->answer.Died()) s_lastAnswered = name;
    return pending->answer;
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
    if (!Eventually(look)) return false;
    service = package::IOfflineCameraService::fromBinder(binder);
    m_canOpen.reset();
    m_plain.clear();
    s_firstDead.clear();
    return true;
}

bool Device::Hangs() {
    return s_unanswered >= kMostUnanswered;
}

std::string Device::Trouble() {
    if (Hangs()) return Say(kMostUnanswered, " calls were not answered");
    const bool dead = AIBinder_ping(binder.get()) == STATUS_DEAD_OBJECT;
    return dead ? "the service died after " + s_lastAnswered + " was answered" + s_firstDead : "";
}

Callback Device::ForeignCallback() {
    return ndk::SharedRefBase::make<package::BpOfflineCameraCallback>(binder);
}

Answer Device::Register(int32_t id, const Callback& callback) {
    return Bounded("registerClient", [=, service = service](int32_t*) {
        return service->registerClient(id, callback);
    });
}

Answer Device::Open(const std::string& name, const Callback& callback, SessionProxy* session) {
    const auto place = std::make_shared<SessionProxy>();
    Answer answer = Bounded("openOfflineSession", [=, service = service](int32_t*) {
        return service->openOfflineSession(name, callback, place.get());
    });
    if (answer.Ok()) *session = *place;
    return answer;
}

Answer Device::ListModes(std::vector<int32_t>* modes) {
    const auto place = std::make_shared<std::vector<int32_t>>();
    Answer answer = Bounded("getSupportedOpModes", [=, service = service](int32_t*) {
        return service->getSupportedOpModes(place.get());
    });
    if (answer.Ok()) *modes = *place;
    return answer;
}

bool Device::CanOpen() {
    if (!m_canOpen) m_canOpen = service != nullptr && Session(*this).IsOpen();
    return *m_canOpen;
}

const PlainRun& Device::Plain(Mode mode) {
    const auto [run, fresh] = m_plain.try_emplace(mode);
    if (fresh) RunPlain(mode, &run->second);
    return run->second;
}

std::vector<const PlainRun*> Device::Claimed() {
    std::vector<const PlainRun*> claimed;
    for (const Mode mode : kModes) {
        if (Plain(mode).configured.Ok()) claimed.push_back(&Plain(mode));
    }
    return claimed;
}

const PlainRun* Device::Working() {
    for (const PlainRun* run : Claimed()) {
        if (run->Works()) return run;
    }
    return nullptr;
}

OfflineRequestInfo Device::Request(const Configuration& info, int64_t idOffset) {
    int64_t inputId = idOffset, outputId = idOffset;
    OfflineRequestInfo request;
    request.frameNumber = -1;
    request.inFrameInfos.resize(FramesOf(info.opMode));
    const auto add = [&](const Stream& stream, size_t number, int64_t id, auto* list) {
        list->emplace_back();
        list->back().streamId = stream.id;
        list->back().bufferId = id;
        list->back().buffer = pool.Get(stream, number).Handle();
    };
    for (size_t frame = 0; frame < request.inFrameInfos.size(); ++frame) {
        auto& input = request.inFrameInfos[frame];
        input.metadata = info.opMode == kY2J ? OrientationMetadata() : FrameMetadata();
        for (const Stream& stream : info.streams) {
            if (IsInput(stream)) add(stream, frame, ++inputId, &input.buffers);
        }
    }
    for (const Stream& stream : info.streams) {
        if (IsInput(stream)) continue;
        add(stream, request.outputBuffers.size(), ++outputId, &request.outputBuffers);
    }
    return request;
}

Session::Session(Device& device, const std::string& name)
    : client(ndk::SharedRefBase::make<Recorder>(&device.pool)), m_device(device) {
    opened = device.Open(name, client, &proxy);
}

Session::~Session() {
    if (client->ServiceProcess() != 0) m_device.process = client->ServiceProcess();
    if (IsOpen() && !m_closed) Close();
}

Answer Session::Configure(const Configuration& info) {
    Answer answer = Bounded("configureOfflineStreams", [proxy = proxy, info](int32_t*) {
        return proxy->configureOfflineStreams(info);
    });
    const auto outputs = std::count_if(info.streams.begin(), info.streams.end(),
                                       [](const Stream& stream) { return !IsInput(stream); });
    if (answer.Ok()) m_outputs = static_cast<size_t>(outputs);
    return answer;
}

Answer Session::Process(std::vector<OfflineRequestInfo> requests) {
    const auto sent = std::make_shared<std::vector<OfflineRequestInfo>>(std::move(requests));
    return Bounded("processOfflineRequest", [proxy = proxy, sent](int32_t* number) {
        return proxy->processOfflineRequest(*sent, number);
    });
}

Answer Session::Process(OfflineRequestInfo request) {
    std::vector<OfflineRequestInfo> one;
    one.push_back(std::move(request));
    return Process(std::move(one));
}

Answer Session::Close() {
    m_closed = true;
    return Bounded("closeOfflineSession",
                   [proxy = proxy](int32_t*) { return proxy->closeOfflineSession(); });
}

Verdict Session::AwaitResult(const Answer& sent, const std::string& what) {
    if (!sent.Ok()) return sent.MustSucceed(what);
    const auto complete = [&](const Events& events) {
        return Failed(events, sent.number) ||
               BuffersOf(Of(events, Event::kResult, sent.number)).size() >= m_outputs;
    };
    const bool came = client->WaitFor(complete);
    return Require(came && !Failed(All(), sent.number), Say(what, " of frame ", sent.number),
                   Text(All()) + (came ? "" : ", and no more in 5 s"));
}

Verdict Session::Exchange(const Configuration& info, const std::string& what, int64_t idOffset) {
    return AwaitResult(Process(m_device.Request(info, idOffset)), what);
}

Verdict Session::AwaitEnds(size_t count) {
    const auto ended = [](const Events& events) {
        std::set<int32_t> frames;
        for (const Event& event : events) {
            const bool ends = event.kind == Event::kError || !event.buffers.empty();
            if (ends && event.frame != -1) frames.insert(event.frame);
        }
        return frames.size();
    };
    for (size_t i = 1; i <= count; ++i) {
        if (client->WaitFor([&](const Events& events) { return ended(events) >= i; })) continue;
        return Fail(Say("result or error of each of ", count, " frames, within 5 s"), Text(All()));
    }
    return {};
}

Run OnSession(const std::function<Verdict(Device&, Session&)>& use) {
    return [=](Device& device) {
        if (!device.CanOpen()) return Skip("no session can be opened: see session.open");
        Session session(device);
        return session.IsOpen() ? use(device, session)
                                : session.opened.MustSucceed("a session, as before");
    };
}

Run OnStreams(const UseStreams& use, const Configuration& given) {
    return OnSession([=](Device& device, Session& session) {
        const PlainRun* run = device.Working();
        if (run == nullptr) return Skip("no mode brings results: see configuration and process");
        const Configuration& info = given.streams.empty() ? run->info : given;
        const Answer taken = session.Configure(info);
        return taken.Ok() ? use(device, session, info)
                          : taken.MustSucceed("streams taken as before");
    });
}

Run OnPlainRuns(const LookAtRun& look, const std::string& reason) {
    return [=](Device& device) {
        if (!device.pool.Ready()) return Skip("no graphics allocator, or no mapper 4.0");
        bool any = false;
        for (const PlainRun* run : device.Claimed()) {
            const std::optional<Verdict> verdict = look(*run);
            if (verdict && !verdict->Good()) return *verdict;
            any |= verdict.has_value();
        }
        return any ? Verdict() : Skip(reason);
    };
}

}  // namespace conformance
