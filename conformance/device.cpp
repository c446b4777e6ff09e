// Calls of the service, each with its bound.
#include "device.h"

#include <android/binder_manager.h>
#include <poll.h>
#include <system/camera_metadata.h>

#include <algorithm>
#include <condition_variable>
#include <fstream>
#include <iterator>
#include <mutex>
#include <thread>

#include "plain_run.h"

namespace conformance {

namespace {

using ndk::ScopedAStatus;

constexpr char kMetadataDump[] = "/data/vendor/camera/metadata/original_dump.bin";
std::atomic<int> s_unansweredCalls{0};

std::vector<uint8_t> OrientationMetadata() {
    std::vector<uint8_t> blob;
    const int32_t degrees = 90;
    camera_metadata_t* const metadata = allocate_camera_metadata(10, 80);
    if (metadata != nullptr &&
        add_camera_metadata_entry(metadata, ANDROID_JPEG_ORIENTATION, &degrees, 1) == 0) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(metadata);
        blob.assign(bytes, bytes + get_camera_metadata_size(metadata));
    }
    free_camera_metadata(metadata);
    return blob;
}

// The device's own dump, as the test client sends it, where there is one.
std::vector<uint8_t> FrameMetadata() {
    std::ifstream file(kMetadataDump, std::ios::binary);
    const std::vector<uint8_t> dump{std::istreambuf_iterator<char>(file), {}};
    const size_t size = dump.size();
    const auto* metadata = reinterpret_cast<const camera_metadata_t*>(dump.data());
    const bool sound = size > 0 && validate_camera_metadata_structure(metadata, &size) == 0;
    return sound ? dump : OrientationMetadata();
}

void MarkDead(void* flag) {
    *static_cast<std::atomic<bool>*>(flag) = true;
}

}  // namespace

bool Answer::Refused() const {
    return !timedOut && !status->isOk() && status->getStatus() != STATUS_DEAD_OBJECT;
}

std::string Answer::Text() const {
    if (timedOut) return call + " did not return within 5 s";
    if (status->getStatus() == STATUS_DEAD_OBJECT) return call + ": the service is dead";
    return call + (status->isOk() ? " returned OK" : " returned " + status->getDescription());
}

bool Eventually(const std::function<bool()>& holds, std::chrono::milliseconds limit) {
    constexpr std::chrono::milliseconds kStep(5);
    const auto deadline = Clock::now() + limit;
    while (!holds()) {
        if (Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(kStep);
    }
    return true;
}

int UnansweredCalls() {
    return s_unansweredCalls;
}

Answer Bounded(const std::string& name, Call call) {
    struct Pending {
        std::mutex lock;  // guards the answer
        std::condition_variable came;
        Answer answer;
    };
    const auto pending = std::make_shared<Pending>();
    std::thread([pending, call = std::move(call)] {
        int32_t number = 0;
        auto status = std::make_shared<ScopedAStatus>(call(&number));
        const std::lock_guard<std::mutex> guard(pending->lock);
        pending->answer.status = std::move(status);
        pending->answer.number = number;
        pending->came.notify_all();
    }).detach();
    std::unique_lock<std::mutex> guard(pending->lock);
    const bool came =
            pending->came.wait_for(guard, kWait, [&] { return pending->answer.status != nullptr; });
    Answer answer = pending->answer;
    answer.call = name;
    answer.timedOut = !came;
    if (!came) ++s_unansweredCalls;
    return answer;
}

Device::Device() : metadata(FrameMetadata()), m_recipient(AIBinder_DeathRecipient_new(MarkDead)) {}

bool Device::Connect() {
    const auto look = [&] {
        binder.set(AServiceManager_checkService(kInstance));
        return binder.get() != nullptr && AIBinder_isAlive(binder.get());
    };
    if (!Eventually(look)) return false;
    service = package::IOfflineCameraService::fromBinder(binder);
    m_canOpen.reset();
    m_plain.clear();
    // Never freed: the link refers to it for as long as the process lives.
    m_dead = *new std::shared_ptr<std::atomic<bool>>(std::make_shared<std::atomic<bool>>(false));
    AIBinder_linkToDeath(binder.get(), m_recipient.get(), m_dead.get());
    return true;
}

bool Device::Dead() {
    return *m_dead || AIBinder_ping(binder.get()) == STATUS_DEAD_OBJECT;
}

std::shared_ptr<Recorder> Device::NewRecorder() {
    return ndk::SharedRefBase::make<Recorder>(&pool, m_dead);
}

bool Device::CanOpen() {
    if (!m_canOpen) m_canOpen = service != nullptr && Session(*this).IsOpen();
    return *m_canOpen;
}

const PlainRun& Device::Plain(Mode mode) {
    auto& run = m_plain[mode];
    if (run == nullptr) run = RunPlain(*this, mode);
    return *run;
}

std::vector<Mode> Device::Claimed() {
    std::vector<Mode> claimed;
    for (Mode mode : kModes) {
        if (Plain(mode).configured.status != nullptr && Plain(mode).configured.Ok()) {
            claimed.push_back(mode);
        }
    }
    return claimed;
}

bool Device::Working(Mode* mode) {
    for (Mode candidate : kModes) {
        *mode = candidate;
        if (Plain(candidate).Works()) return true;
    }
    return false;
}

OfflineRequestInfo Device::Request(const OfflineSessionConfigureInfo& info, int64_t idOffset) {
    const auto mode = static_cast<Mode>(info.opMode);
    int64_t inputId = idOffset, outputId = idOffset;
    OfflineRequestInfo request;
    request.frameNumber = -1;
    request.inFrameInfos.resize(FramesOf(mode));
    const auto add = [&](const Stream& stream, size_t number, int64_t id, auto* list) {
        list->emplace_back();
        list->back().streamId = stream.id;
        list->back().bufferId = id;
        list->back().buffer = pool.Get(stream, number).Handle();
    };
    for (size_t frame = 0; frame < FramesOf(mode); ++frame) {
        auto& input = request.inFrameInfos[frame];
        input.metadata = mode == Mode::kY2J ? OrientationMetadata() : metadata;
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

Session::Session(Device& device, const std::string& name, std::shared_ptr<Recorder> recorder)
    : m_device(device), m_recorder(recorder != nullptr ? recorder : device.NewRecorder()) {
    const auto place = std::make_shared<std::shared_ptr<package::IOfflineCameraSession>>();
    m_opened = Bounded("openOfflineSession",
                       [=, service = device.service, client = m_recorder](int32_t*) {
                           return service->openOfflineSession(name, client, place.get());
                       });
    if (m_opened.Ok()) m_session = *place;
}

Session::~Session() {
    if (m_recorder->ServiceProcess() != 0) m_device.process = m_recorder->ServiceProcess();
    m_recorder->inCallback = nullptr;
    if (m_session != nullptr && !m_closed) Close();
}

Answer Session::Configure(const OfflineSessionConfigureInfo& info) {
    Answer answer = Bounded("configureOfflineStreams", [session = m_session, info](int32_t*) {
        return session->configureOfflineStreams(info);
    });
    if (answer.Ok()) {
        m_outputs = static_cast<size_t>(
                std::count_if(info.streams.begin(), info.streams.end(),
                              [](const Stream& stream) { return !IsInput(stream); }));
    }
    return answer;
}

Answer Session::Process(std::vector<OfflineRequestInfo> requests) {
    const auto sent = std::make_shared<std::vector<OfflineRequestInfo>>(std::move(requests));
    return Bounded("processOfflineRequest", [session = m_session, sent](int32_t* number) {
        return session->processOfflineRequest(*sent, number);
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
                   [session = m_session](int32_t*) { return session->closeOfflineSession(); });
}

std::string Session::AwaitResult(int32_t frame) {
    bool failed = false;
    const bool came = m_recorder->WaitFor(
            [&](const Events& events) {
                failed = Failed(events, frame);
                return failed || Outputs(events, frame).size() >= m_outputs;
            },
            kWait);
    if (came && !failed) return "";
    return Say(failed ? "a failure" : "no result within 5 s", " of frame ", frame,
               "; all that came: ", Summary(m_recorder->All()));
}

size_t Count(const Events& events, Event::Kind kind, int32_t frame) {
    return static_cast<size_t>(std::count_if(events.begin(), events.end(), [&](const Event& event) {
        return event.kind == kind && event.frame == frame;
    }));
}

bool Failed(const Events& events, int32_t frame) {
    const auto broken = [&](const Event& event) {
        return event.kind == Event::kResult && event.frame == frame &&
               std::any_of(event.buffers.begin(), event.buffers.end(),
                           [](const BufferMark& buffer) { return !buffer.good; });
    };
    return Count(events, Event::kError, frame) > 0 ||
           std::any_of(events.begin(), events.end(), broken);
}

std::vector<BufferMark> Outputs(const Events& events, int32_t frame) {
    std::vector<BufferMark> outputs;
    for (const Event& event : events) {
        if (event.kind != Event::kResult || event.frame != frame) continue;
        outputs.insert(outputs.end(), event.buffers.begin(), event.buffers.end());
    }
    return outputs;
}

bool FencesSignal(const Events& events) {
    const auto deadline = Clock::now() + kWait;
    for (const Event& event : events) {
        for (const auto& fence : event.fences) {
            pollfd wait = {fence->get(), POLLIN, 0};
            const auto left =
                    std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            if (poll(&wait, 1, std::max(0, static_cast<int>(left.count()))) != 1) return false;
        }
    }
    return true;
}

std::string Summary(const Events& events) {
    static constexpr const char* kNames[] = {"shutter",           "error",    "result",
                                             "asked for buffers", "returned", "empty"};
    std::string text;
    for (const Event& event : events) {
        text += (text.empty() ? "" : ", ") + std::string(kNames[event.kind]);
        if (event.kind <= Event::kResult) text += Say(" ", event.frame);
        if (event.kind == Event::kEmpty) text += Say(" ", event.callback);
        if (event.kind != Event::kResult && event.kind != Event::kReturned) continue;
        text += " (";
        for (const BufferMark& buffer : event.buffers) {
            text += (&buffer == &event.buffers[0] ? "" : ", ") + Text(buffer);
        }
        text += ")";
    }
    return text.empty() ? "nothing" : text;
}

Verdict WithSession(Device& device, const std::function<Verdict(Session&)>& use) {
    if (!device.CanOpen()) return Skip("no session can be opened: see session.open");
    Session session(device);
    if (!session.IsOpen()) return Fail("a session, as before", session.Opened().Text());
    return use(session);
}

Verdict WithStreams(Device& device, Mode mode, const UseMode& use) {
    return WithSession(device, [&](Session& session) {
        const OfflineSessionConfigureInfo& info = device.Plain(mode).info;
        const Answer answer = session.Configure(info);
        if (answer.Ok()) return use(session, info);
        return Fail(Say("the streams of ", NameOf(mode), " taken again"), answer.Text());
    });
}

Verdict WithStreams(Device& device, const UseMode& use) {
    Mode mode;
    if (device.Working(&mode)) return WithStreams(device, mode, use);
    return Skip("no mode brings results: see the groups configuration and process");
}

}  // namespace conformance
