// Which buffers the client still holds, and whether a result names the ones it waits for.

#include <set>
#include <utility>

#include "gralloc/clientlog.h"
#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

namespace {

using BufferKey = std::pair<int32_t, int64_t>;  // stream id, buffer id

template <class BufferT>
std::set<BufferKey> KeysOf(const std::vector<BufferT>& buffers, void (*log)(const BufferKey&)) {
    std::set<BufferKey> keys;
    for (const BufferT& buffer : buffers) {
        const BufferKey key{buffer.streamId, buffer.bufferId};
        log(key);
        keys.insert(key);
    }
    return keys;
}

void LogResultKey(const BufferKey& key) {
    CLIENT_LOGI("ContainsTheSameBuffers result streamId  %d bufferId  %lu", key.first,
                static_cast<unsigned long>(key.second));
}

void LogRequestKey(const BufferKey& key) {
    CLIENT_LOGI("ContainsTheSameBuffers request streamId  %d bufferId  %lu", key.first,
                static_cast<unsigned long>(key.second));
}

}  // namespace

bool OfflineCameraClient::ContainsTheSameBuffers(std::vector<ClientStreamBuffer>* result,
                                                 std::vector<StreamBuffer>* request) {
    const std::set<BufferKey> resultKeys = KeysOf(*result, LogResultKey);
    const std::set<BufferKey> requestKeys = KeysOf(*request, LogRequestKey);
    return resultKeys == requestKeys;
}

void OfflineCameraClient::freeBuffer(native_handle* buffer) {
    const auto held = m_allocatedHandles.find(buffer);
    if (held == m_allocatedHandles.end()) {
        return;
    }
    m_allocatedHandles.erase(held);
    CLIENT_LOGI("freeBuffer %p", static_cast<void*>(buffer));
    // Kept: the wrapper is not tested for null. A handle on record came from it.
    m_grallocWrapper->freeBuffer(buffer);
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
