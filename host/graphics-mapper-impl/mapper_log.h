// Reasons of failures, for the platform log.
#pragma once

#include <graphics_core/outcome.h>

namespace graphics {

// Logs a failure as "operation: reason"; says nothing about a success. Returns its error.
BufferError logged(const char* operation, const Outcome& outcome);

}  // namespace graphics
