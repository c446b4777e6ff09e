// Lends buffers to the service and takes them back.

#include <aidl/android/hardware/camera/device/StreamBuffersVal.h>

#include <algorithm>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "gralloc/clientlog.h"
#include "offlinecameracallbacks.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

using ::aidl::android::hardware::camera::device::StreamBuffersVal;

StreamBuffer OfflineCameraClient::OfflineCameraCallBacks::LendBuffer(const Stream& stream) {
    const AllocatedBuffer buffer = m_client->AllocateStreamBuffer(stream);
    CLIENT_LOGI("streamId %d, bufferStride %d, bufferScanline %d, buffer %p width %d, height %d",
                stream.id, buffer.stride, buffer.scanline, static_cast<void*>(buffer.handle),
                stream.width, stream.height);
    StreamBuffer lent = MakeStreamBuffer(stream, m_nextBufferId, buffer.handle);
    CLIENT_LOGI("m_nextBufferId %ld", static_cast<long>(m_nextBufferId));
    ++m_nextBufferId;

    std::unordered_map<uint64_t, native_handle*> entry;
    entry.emplace(static_cast<uint64_t>(lent.bufferId), buffer.handle);
    m_streamBufferMaps.push_back(std::move(entry));
    return lent;
}

::ndk::ScopedAStatus OfflineCameraClient::OfflineCameraCallBacks::requestStreamBuffers(
        const std::vector<OfflineBufferRequest>& requests,
        std::vector<OfflineStreamBufferRet>* rets, BufferRequestStatus* status) {
    const std::lock_guard<std::mutex> lock(m_bufferLock);
    // Kept: *status is never written, so it says nothing to the caller.
    if (status == nullptr || rets == nullptr || requests.empty()) {
        return IllegalArgument();
    }
    rets->clear();
    for (const OfflineBufferRequest& request : requests) {
        // A negative number is answered like 0.
        std::vector<StreamBuffer> buffers(
                static_cast<size_t>(std::max(request.numBuffersRequested, 0)));
        for (StreamBuffer& buffer : buffers) {
            buffer = LendBuffer(request.stream);
        }
        OfflineStreamBufferRet ret;
        ret.stream = request.stream;
        ret.val.set<StreamBuffersVal::Tag::buffers>(std::move(buffers));
        rets->push_back(std::move(ret));
    }
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus OfflineCameraClient::OfflineCameraCallBacks::returnStreamBuffers(
        const std::vector<StreamBuffer>& buffers) {
    const std::lock_guard<std::mutex> lock(m_bufferLock);
    if (buffers.empty()) {
        return IllegalArgument();
    }
    for (const StreamBuffer& buffer : buffers) {
        if (buffer.bufferId == 0) {
            continue;
        }
        const auto id = static_cast<uint64_t>(buffer.bufferId);
        bool known = false;
        for (auto& lent : m_streamBufferMaps) {
            // Only the record goes; the handle stays in m_allocatedHandles.
            known = lent.erase(id) != 0;
            if (known) {
                break;
            }
        }
        if (!known) {
            CLIENT_LOGE("%s: unknown buffer ID %lu", __func__, static_cast<unsigned long>(id));
        }
    }
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
