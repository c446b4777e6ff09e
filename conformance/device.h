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

struct Answer {
    std::string call;
    std::shared_ptr<ndk::ScopedAStatus> status;  // null if it did not return within kWait
    Clock::time_point returned = {};
    int32_t number = 0;               // what processOfflineRequest returned
    SessionProxy session = {};        // what openOfflineSession returned
    std::vector<int32_t> modes = {};  // what getSupportedOpModes returned

    bool Ok() const { return status != nullptr && status->isOk(); }
    bool Died() const { return status != nullptr && status->getStatus() == STATUS_DEAD_OBJECT; }
    bool Refused() const { return status != nullptr && !status->isOk() && !Died(); }
    std::string Text() const;
    Verdict MustSucceed(const std::string& what) const { return Require(Ok(), what, Text()); }
    Verdict MustBeRefused() const { return Require(Refused(), "a refusal", Text()); }
    Verdict MustReturn() const { return Require(Ok() || Refused(), "any answer", Text()); }
};

// Makes a call, which may write what it returns, on a thread of its own and waits for kWait. A call
// that takes longer keeps its thread; so it must own what it uses.
using Call = std::function<ndk::ScopedAStatus(Answer* answer)>;
Answer Bounded(const std::string& name, Call call);

// Asks every few milliseconds. Returns whether it held within the limit.
bool Eventually(const std::function<bool()>& holds, milliseconds limit = kWait);

// Three requests of a mode one after the other, as the test client would send them, and what checks
// find in what came of them.
struct PlainRun {
    static constexpr size_t kFrames = 3;

    Configuration info;
    Answer configured;
    std::vector<Answer> sent;
    size_t complete = 0;  // frames, all of whose result came
    Events events;
    std::vector<uint8_t> picture;             // all of the first frame's output buffer
    std::map<std::string, Verdict> findings;  // by a check's name

    std::string Mode() const { return NameOf(info.opMode); }
    bool Works() const { return complete == kFrames && !picture.empty(); }
    bool Borrows() const;
    // Keeps the first one of a check that is not good.
    void Note(const std::string& check, const Verdict& verdict);
    void Expect(const char* check, bool holds, const std::string& expected,
                const std::string& came) {
        Note(check, Require(holds, expected, came));
    }
};

void JudgeFile(PlainRun* run);
void JudgeLending(PlainRun* run);

class Device {
  public:
    static constexpr char kInstance[] =
            "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";

    // Waits until the service is registered, and takes it. False after kWait, or if it hangs.
    bool Connect();
    // Why nothing more can be checked: the service is dead, or hangs. Else empty.
    std::string Trouble();

    Answer Register(int32_t id, const Callback& callback);
    Answer Open(const Callback& callback);
    // Of another interface, as the service's own object is.
    Callback ForeignCallback();
    Answer ListModes();

    bool CanOpen();  // a first session
    const PlainRun& Plain(Mode mode);
    // The plain runs of the modes whose streams are taken, or of one mode if they are.
    std::vector<const PlainRun*> Claimed(std::optional<Mode> mode = {});
    // The first of them that works, or null.
    const PlainRun* Working(std::optional<Mode> mode = {});

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
    explicit Session(Device& device);
    ~Session();

    bool IsOpen() const { return proxy != nullptr; }
    Answer Configure(const Configuration& wanted);
    // A request in the test client's form, whose buffer ids begin above `idOffset`.
    OfflineRequestInfo Request(int64_t idOffset = 0);
    Answer Process(std::vector<OfflineRequestInfo> requests);
    Answer Process(OfflineRequestInfo request);
    Answer Close();

    // Waits until every output of a frame is in results. `what` is expected.
    Verdict AwaitResult(const Answer& sent, const std::string& what = "a result");
    Verdict Exchange(const std::string& what, int64_t idOffset = 0);
    // Waits until `count` frames have brought a result or an error. Each may take kWait.
    Verdict AwaitEnds(size_t count);
    Events All() { return client->All(); }

    Device& device;
    const std::shared_ptr<Recorder> client;
    const Answer opened;
    const SessionProxy proxy;
    Configuration info;  // the streams of its requests: those that were taken

  private:
    bool m_closed = false;
};

// Closes with frames in flight. No callback may come then.
Verdict ClosesInFlight(Session& session);

// A duplicate of the descriptor as a fence. An eventfd is readable once it is signalled, as a sync
// fence is.
NativeHandle FenceOf(int descriptor);

// What a client may be in when it dies. One more is "waiting", for a fence.
inline constexpr const char* kVictimStates[] = {"registered", "opened",   "configured",
                                                "in-flight",  "callback", "lending"};

// Starts this program as a client, kills it in the state, and looks whether its session ends. Skips
// if it does not get there.
Verdict KillClient(Device& device, const std::string& state);
[[noreturn]] void BeVictim(const std::string& last);  // the life of such a client

// A check on an open session, and on one with streams: those of the mode, or of the first one that
// brings results.
using Use = std::function<Verdict(Session&)>;
Run OnSession(const Use& use);
Run OnStreams(const Use& use, std::optional<Mode> mode = {});

// A check whose findings the plain runs note. Where none does, it is skipped for the reason.
Check Noted(const std::string& name, const std::string& rule,
            const std::string& reason = "no frame was taken: see process.taken");

}  // namespace conformance
