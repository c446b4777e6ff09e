// Wrong behaviour on demand. The service's own code calls a hook, or asks for a fault by name, at
// each place where one can act.
#pragma once

#include <imaging/planes.h>

#include <vector>

#include "borrowed_buffers.h"
#include "fault_set.h"
#include "frame_messages.h"
#include "session_worker.h"

namespace offlinecamera {

// Unchanging once the service runs, so any thread may call it. faults.cpp lists the names.
class FaultInjector : public services::FaultSet {
  public:
    FaultInjector();

    // Kills the process if the fault is switched on; `place` is for the log.
    void DieAt(const char* place, const char* fault) const;
    // In a call: kills the process if the fault `die` is switched on; with the fault `error` the
    // status, which is not OK, is the call's answer.
    ndk::ScopedAStatus AtCall(const char* operation, const char* die, const char* error) const;

    // On the session's thread.
    void BeforeFrame(const SessionClient& client, const Stream& stream,
                     const StopSignal& stop) const;
    // False if the message is not to be sent.
    bool AlterMessage(NotifyMsg* message) const;
    std::vector<OfflineCaptureResult> MakeResults(const Request& request, BufferStatus status,
                                                  const StopSignal& stop) const;
    void ShrinkPicture(imaging::Nv12View* picture) const;
    void SpoilPicture(const imaging::MutableNv12View& picture) const;
    void SpoilLater(const Request& request, const StopSignal& stop) const;  // after the result
    void SpoilRequest(Request* request) const;

    // In a call.
    void AwaitFences(const OfflineRequestInfo& info) const;
    void Leak(const char* fault) const;  // a descriptor, if the fault is switched on
    // The client that a session of this client calls; `opened` if the session is new.
    SessionClient ClientOf(const SessionClient& client, bool opened) const;

  private:
    void BorrowAndReturn(const SessionClient& client, const Stream& stream) const;
    OfflineCaptureResult MakeOneResult(const Request& request, BufferStatus status) const;
};

}  // namespace offlinecamera
