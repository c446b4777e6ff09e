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
using Requests = std::vector<package::OfflineRequestInfo>;  // of one call

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
    bool Taken() const { return configured.Ok(); }  // its streams
    bool Works() const { return complete == kFrames && !picture.empty(); }
    bool Borrows() const;
    bool BorrowsAndWorks() const { return Works() && Borrows(); }
    // Keeps the first one of a check that is not good.
    void Note(const std::string& check, const Verdict& verdict);
    void Expect(const char* check, bool holds, const std::string& expected,
                const std::string& came) {
        Note(check, Require(holds, expected, came));
    }
};

void JudgeLending(PlainRun* run);

// What a check needs of a plain run, and why it is skipped where none has that.
struct Need {
    bool (PlainRun::*holds)() const = nullptr;
    std::string otherwise = {};
    std::optional<Mode> mode = {};  // any, if it is not set
};

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
    // One of each of kModes, in that order. Asked for before a check opens a session, as the
    // service may have but one.
    const std::vector<PlainRun>& PlainRuns();
    // The first plain run that is such, or null.
    const PlainRun* Find(const Need& need);

    ndk::SpAIBinder binder;
    std::shared_ptr<package::IOfflineCameraService> service;  // null for another interface
    Pool pool;

  private:
    PlainRun RunPlain(Mode mode);

    std::optional<bool> m_canOpen;
    std::vector<PlainRun> m_plain;
};

// An open session and its client. Closed at the end.
class Session {
  public:
    explicit Session(Device& device);
    ~Session();

    bool IsOpen() const { return proxy != nullptr; }
    Answer Configure(const Configuration& wanted);
    // One request in the test client's form, whose buffer ids begin above `idOffset`.
    Requests Request(int64_t idOffset = 0);
    Answer Process(Requests requests);
    Answer Close();

    // Waits until every output of a frame is in results. `what` is expected.
    Verdict AwaitResult(const Answer& sent, const std::string& what = "a result");
    // Waits for any answer: a refusal, a failure, or a result, where `good` is what a good one is.
    Verdict AwaitAnswer(const Answer& sent, Outcome good);
    Verdict Exchange(const std::string& what, int64_t idOffset = 0);
    // Waits until `count` frames have brought a result or an error. Each may take kWait.
    Verdict AwaitEnds(size_t count);
    Events All() { return client->All(); }

    Device& device;
    const std::shared_ptr<Recorder> client;
    const Answer opened;
    const SessionProxy proxy;
    Configuration info;  // the streams of its requests

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

// That the mode brings results, or any mode.
Need Works(std::optional<Mode> mode = {});

// A check on an open session, which has the streams of the needed run as its info, if there is a
// need; OnStreams configures them, too.
using Use = std::function<Verdict(Session&)>;
Run OnSession(const Use& use, const Need& need = {});
Run OnStreams(const Use& use, const Need& need = Works());

// A check whose findings the plain runs note. Where none does, it is skipped for the reason.
Check Noted(const std::string& name, const std::string& rule,
            const std::string& reason = "no frame was taken: see process.taken");

}  // namespace conformance
