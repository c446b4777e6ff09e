// One offline request after every check: its buffers are imported and fit their streams.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineRequestInfo.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "imported_buffer.h"
#include "stream_set.h"

namespace offlinecamera {

using ::aidl::android::hardware::camera::device::StreamBuffer;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineRequestInfo;

struct RequestBuffer {
    const Stream* stream = nullptr;  // in the request's stream set
    int64_t bufferId = 0;
    ImportedBuffer buffer;
};

struct Request {
    int32_t frameNumber = -1;
    std::shared_ptr<const StreamSet> streams;
    std::vector<std::vector<RequestBuffer>> inputs;  // per frame, in the set's stream order
    std::vector<RequestBuffer> outputs;              // in the client's order
    int32_t orientation = 0;                         // of JPEG files, degrees
};

// Checks a request and imports its buffers, which live as long as the result. The JPEG orientation
// is taken from the first frame's metadata, else from the request's, else 0. Fails with what is
// wrong, naming frame, stream and buffer.
base::Result<Request> MakeRequest(const OfflineRequestInfo& info,
                                  std::shared_ptr<const StreamSet> streams);

}  // namespace offlinecamera
