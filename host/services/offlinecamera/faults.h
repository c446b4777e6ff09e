// Wrong behaviour on demand. The service's own code asks for a fault by name, or calls a hook, at
// each place where one can act.
#pragma once

#include <imaging/planes.h>

#include <string>
#include <vector>

#include "borrowed_buffers.h"
#include "fault_set.h"
#include "frame_messages.h"
#include "session_worker.h"

namespace offlinecamera::faults {

// The faults of this process; faults.cpp lists the names. Unchanging once the service runs, so any
// thread may read them.
services::FaultSet& Set();
inline bool Has(const std::string& name) {
    return Set().Has(name);
}

// Kills the process if the fault is switched on; `place` is for the log.
void DieAt(const char* place, const std::string& fault);
// In a call: kills the process if the fault "die-on-NAME" is switched on; with "NAME-error" the
// status, which is not OK, is the call's answer.
ndk::ScopedAStatus AtCall(const char* operation, const std::string& name);
void AwaitFences(const OfflineRequestInfo& info);
void DropFences(Request* request);
void Leak(const char* fault);  // a descriptor, if the fault is switched on
// The client that a session of this client calls; `opened` if the session is new.
Client ClientOf(const Client& client, bool opened);

// On the session's thread.
void BeforeFrame(const Client& client, const Stream& stream, const StopSignal& stop);
// False if the message is not to be sent.
bool AlterMessage(NotifyMsg* message);
std::vector<OfflineCaptureResult> MakeResults(const Request& request, BufferStatus status,
                                              const StopSignal& stop);
void ShrinkPicture(imaging::Nv12View* picture);
void SpoilPicture(const imaging::MutableNv12View& picture);
void SpoilLater(const Request& request, const StopSignal& stop);  // after the result

}  // namespace offlinecamera::faults
