// The service under test: bounded calls, sessions, requests, and the plain runs that most checks
// look at.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraService.h>
#include <sys/types.h>

#include <map>
#include <optional>

#include "check.h"
#include "recorder.h"

namespace conformance {

using Callback = std::shared_ptr<package::IOfflineCameraCallback>;
using SessionProxy = std::shared_ptr<package::IOfflineCameraSession>;
using package::OfflineRequestInfo;

// What came of a call.
struct Answer {
    std::string call;
    std::shared_ptr<ndk::ScopedAStatus> status;  // null if it did not return within kWait
    int32_t number = 0;                          // what processOfflineRequest returned
    Clock::time_point returned = {};

    bool Ok() const { return status != nullptr && status->isOk(); }
    bool Died() const { return status != nullptr && status->getStatus() == STATUS_DEAD_OBJECT; }
    bool Refused() const { return status != nullptr && !status->isOk() && !Died(); }
    std::string Text() const;

    Verdict MustSucceed(const std::string& what) const { return Require(Ok(), what, Text()); }
    Verdict MustBeRefused() const { return Require(Refused(), "a refusal", Text()); }
    Verdict MustReturn() const { return Require(Ok() || Refused(), "any answer", Text()); }
};

// Makes a call on a thread of its own and waits for kWait. A call that takes longer keeps its
// thread; so it must own what it uses.
using Call = std::function<ndk::ScopedAStatus(int32_t* number)>;
Answer Bounded(const std::string& name, Call call);

// Asks every few milliseconds. Returns whether it held within the limit.
bool Eventually(const std::function<bool()>& holds, milliseconds limit = kWait);

// What the service wrote to the output buffer of the first two frames, whose input is the same
// while the buffer's bytes were others before.
struct Picture {
    std::string unwritten;           // where the picture kept its bytes both times; empty: nowhere
    std::string outside;             // where bytes beside the picture changed
    bool sameForOtherInput = false;  // the third frame has another input
    bool changedLater = false;       // the third one, after its result
    std::vector<uint8_t> bytes;      // of the first one
};

struct SentFrame {
    Answer answer;
    bool result = false;
};

// Three requests of a mode one after the other, as the test client would send them.
struct PlainRun {
    static constexpr size_t kFrames = 3;

    Configuration info;
    Answer configured;
    std::vector<SentFrame> frames;
    Events events;
    Picture picture;

    std::string Mode() const { return NameOf(info.opMode); }
    bool Works() const { return !picture.bytes.empty() && frames.size() == kFrames; }
};

class Device {
  public:
    static constexpr char kInstance[] =
            "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";

    // Waits until the service is registered, and takes it. False after kWait.
    bool Connect();
    // Why nothing more can be checked: the service is dead, or hangs. Else empty.
    std::string Trouble();
    bool Hangs();

    Answer Register(int32_t id, const Callback& callback);
    Answer Open(const std::string& name, const Callback& callback, SessionProxy* session);
    // Of another interface, as the service's own object is.
    Callback ForeignCallback();
    Answer ListModes(std::vector<int32_t>* modes);

    bool CanOpen();  // a first session
    const PlainRun& Plain(Mode mode);
    // The plain runs of the modes whose streams are taken; of those, the first with a result.
    std::vector<const PlainRun*> Claimed();
    const PlainRun* Working();

    // A request in the test client's form, whose buffer ids begin above `idOffset`.
    OfflineRequestInfo Request(const Configuration& info, int64_t idOffset = 0);

    ndk::SpAIBinder binder;
    std::shared_ptr<package::IOfflineCameraService> service;  // null for another interface
    Pool pool;
    pid_t process = 0;  // the service's; known after a plain run

  private:
    void RunPlain(Mode mode, PlainRun* run);

    std::optional<bool> m_canOpen;
    std::map<Mode, PlainRun> m_plain;
};

// An open session and its client. Closed at the end.
class Session {
  public:
    explicit Session(Device& device, const std::string& name = "offlincameratest");
    ~Session();

    bool IsOpen() const { return proxy != nullptr; }
    Answer Configure(const Configuration& info);
    Answer Process(std::vector<OfflineRequestInfo> requests);
    Answer Process(OfflineRequestInfo request);
    Answer Close();

    // Waits until every output of a frame is in results. `what` is expected.
    Verdict AwaitResult(const Answer& sent, const std::string& what = "a result");
    // Sends a request and awaits its result.
    Verdict Exchange(const Configuration& info, const std::string& what, int64_t idOffset = 0);
    // Waits until `count` frames have brought a result or an error. Each may take kWait.
    Verdict AwaitEnds(size_t count);
    Events All() { return client->All(); }

    Answer opened;
    std::shared_ptr<Recorder> client;
    SessionProxy proxy;

  private:
    Device& m_device;
    bool m_closed = false;
    size_t m_outputs = 0;
};

// The events of one kind, and of one frame unless it is -1.
Events Of(const Events& events, Event::Kind kind, int32_t frame = -1);
std::vector<BufferMark> BuffersOf(const Events& events);
// Whether an error message or a broken buffer tells that the frame failed.
bool Failed(const Events& events, int32_t frame);
bool FencesSignal(const Events& events);  // all of them, within kWait
std::string Text(const BufferMark& buffer);
std::string Text(const Events& events);

// Closes with frames in flight. No callback may come then.
Verdict ClosesInFlight(Device& device, Session& session, const Configuration& info);

// What a client may be in when it dies.
inline constexpr const char* kVictimStates[] = {"registered", "opened",   "configured",
                                                "in-flight",  "callback", "lending"};

// Starts this program as a client, and kills it in the state. Returns what went wrong.
std::string KillClient(const std::string& state);

// The life of such a client.
[[noreturn]] void BeVictim(const std::string& state);

// What a process holds; zeroes where /proc does not tell.
struct Held {
    size_t descriptors = 0, threads = 0, sharedMappings = 0;
};
Held HeldBy(pid_t process);

// A check on an open session, and on one with streams: those given, or those of the first mode that
// brings results.
Run OnSession(const std::function<Verdict(Device&, Session&)>& use);
using UseStreams = std::function<Verdict(Device&, Session&, const Configuration&)>;
Run OnStreams(const UseStreams& use, const Configuration& info = {});

// A check of the plain runs, up to the first finding. `look` gives nothing for a run that it does
// not apply to; where it applies to none, `reason` tells why the check is skipped.
using LookAtRun = std::function<std::optional<Verdict>(const PlainRun&)>;
Run OnPlainRuns(const LookAtRun& look, const std::string& reason = "no mode is taken");

}  // namespace conformance
