// Log lines of both mappers.
#include "mapper_log.h"

#include <android/log.h>

namespace graphics {

BufferError logged(const char* operation, const Outcome& outcome) {
    if (!outcome.ok()) {
        __android_log_print(ANDROID_LOG_ERROR, "GraphicsMapper", "%s: %s", operation,
                            outcome.reason.c_str());
    }
    return outcome.error;
}

}  // namespace graphics
