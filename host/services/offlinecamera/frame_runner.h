// One request from shutter to result, on its session's thread.
#pragma once

#include "borrowed_buffers.h"
#include "session_worker.h"

namespace offlinecamera {

// Sends the shutter message, makes the pictures, sends the result: the output buffers' and the
// input buffers' ids without handles, one part of metadata. If the pictures fail, an error message
// (ERROR_REQUEST) goes before the result, and the result's output buffers have status ERROR. Once
// stopped, nothing more is sent.
void RunFrame(const Request& request, const Client& client, const StopSignal& stop);

}  // namespace offlinecamera
