// The service under test as its checks see it: bounded calls, sessions, requests.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraService.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "check.h"
#include "recorder.h"

namespace conformance {

using package::OfflineRequestInfo;

struct PlainRun;

// What came of a call.
struct Answer {
    std::string call;
    bool timedOut = false;
    std::shared_ptr<ndk::ScopedAStatus> status;  // null if it timed out
    int32_t number = 0;                          // what processOfflineRequest returned

    bool Ok() const { return !timedOut && status->isOk(); }
    // A status, other than that the service is dead.
    bool Refused() const;
    std::string Text() const;  // "call: ..."
};

// Waits with `holds` asked every few milliseconds. Returns whether it held within `limit`.
bool Eventually(const std::function<bool()>& holds, std::chrono::milliseconds limit = kWait);

// Makes a call on a thread of its own and waits for kWait. A call that takes longer keeps that
// thread; so `call` must own what it uses. It gets the place for a number.
using Call = std::function<ndk::ScopedAStatus(int32_t* number)>;
Answer Bounded(const std::string& name, Call call);
// How many calls took longer.
int UnansweredCalls();

class Device {
  public:
    static constexpr char kInstance[] =
            "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";

    Device();

    // Waits until the service is registered, and takes it. False after kWait.
    bool Connect();
    bool Dead();

    ndk::SpAIBinder binder;
    std::shared_ptr<package::IOfflineCameraService> service;  // null for another interface
    Pool pool;
    std::vector<uint8_t> metadata;  // of every input frame, but for Y2J

    std::shared_ptr<Recorder> NewRecorder();

    // Whether a first session could be opened.
    bool CanOpen();

    // The result of the configuration alone, and of three frames; made when first asked for.
    const PlainRun& Plain(Mode mode);
    // The modes whose streams the service takes.
    std::vector<Mode> Claimed();
    // The first mode that brings results. False if none does.
    bool Working(Mode* mode);

    // A request in the form of the test client's, with the device's buffers.
    OfflineRequestInfo Request(const OfflineSessionConfigureInfo& info, int64_t idOffset = 0);

    // The service's process; 0 before it has called a recorder.
    pid_t process = 0;

  private:
    const ndk::ScopedAIBinder_DeathRecipient m_recipient;
    std::shared_ptr<std::atomic<bool>> m_dead;
    std::optional<bool> m_canOpen;
    std::map<Mode, std::shared_ptr<PlainRun>> m_plain;
};

// An open session and its client. Closes it at the end.
class Session {
  public:
    explicit Session(Device& device, const std::string& name = "offlincameratest",
                     std::shared_ptr<Recorder> recorder = nullptr);
    ~Session();

    const Answer& Opened() const { return m_opened; }
    bool IsOpen() const { return m_session != nullptr; }
    Recorder& Client() { return *m_recorder; }
    const std::shared_ptr<package::IOfflineCameraSession>& Proxy() const { return m_session; }

    Answer Configure(const OfflineSessionConfigureInfo& info);
    Answer Process(std::vector<OfflineRequestInfo> requests);
    Answer Process(OfflineRequestInfo request);
    Answer Close();

    // Waits until a result names every output of the mode's requests. Empty if it came; else what
    // came instead.
    std::string AwaitResult(int32_t frame);

  private:
    Device& m_device;
    std::shared_ptr<Recorder> m_recorder;
    std::shared_ptr<package::IOfflineCameraSession> m_session;
    Answer m_opened;
    bool m_closed = false;
    size_t m_outputs = 0;
};

// Where a frame's messages are among events.
size_t Count(const Events& events, Event::Kind kind, int32_t frame);
// Whether an error message or a result with a broken buffer tells that the frame failed.
bool Failed(const Events& events, int32_t frame);
// The outputs that results of the frame have named.
std::vector<BufferMark> Outputs(const Events& events, int32_t frame);
// Waits until every release fence of the events is signalled. False after kWait.
bool FencesSignal(const Events& events);
// The events as one line, such as "shutter 1, result 1 (stream 1 buffer 1)".
std::string Summary(const Events& events);

// Opens a session and calls `use`.
Verdict WithSession(Device& device, const std::function<Verdict(Session&)>& use);
// The same, with the streams of a mode that brings results.
using UseMode = std::function<Verdict(Session&, const OfflineSessionConfigureInfo&)>;
Verdict WithStreams(Device& device, const UseMode& use);
Verdict WithStreams(Device& device, Mode mode, const UseMode& use);

}  // namespace conformance
