// Takes the messages and results that the service delivers.

#include <system/camera_metadata.h>

#include <mutex>
#include <utility>
#include <vector>

#include "gralloc/clientlog.h"
#include "offlinecameracallbacks.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

namespace {

// The metadata block in these bytes, which still belongs to them. Null for no bytes and, with an
// error line, for a block that records another size than theirs.
const camera_metadata_t* convertFromAidl(const std::vector<uint8_t>& metadata) {
    if (metadata.empty()) {
        return nullptr;
    }
    const auto* block = reinterpret_cast<const camera_metadata_t*>(metadata.data());
    if (metadata.size() < sizeof(uint32_t) || get_camera_metadata_size(block) != metadata.size()) {
        CLIENT_LOGE("%s: input CameraMetadata is corrupt!", __func__);
        return nullptr;
    }
    return block;
}

void AppendClientBuffers(const std::vector<StreamBuffer>& buffers,
                         std::vector<ClientStreamBuffer>* out) {
    for (const StreamBuffer& buffer : buffers) {
        out->push_back({buffer.streamId, buffer.bufferId, nullptr, buffer.status, -1, -1});
    }
}

}  // namespace

OfflineCameraClient::OfflineCameraCallBacks::OfflineCameraCallBacks(OfflineCameraClient* client)
    : m_client(client) {
    CLIENT_LOGI("[AIDL]OfflineCameraCallBacks constructor called");
}

OfflineCameraClient::OfflineCameraCallBacks::~OfflineCameraCallBacks() {
    CLIENT_LOGI("[AIDL]OfflineCameraCallBacks destructor called");
}

::ndk::ScopedAStatus OfflineCameraClient::OfflineCameraCallBacks::IllegalArgument() {
    constexpr int32_t kIllegalArgument = 1;
    return ::ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(kIllegalArgument,
                                                                     "ILLEGAL_ARGUMENT");
}

// Kept: a data race. The messages are replaced without m_resultLock while the main thread may be
// reading them in IsShutterReceivedLocked or clearing them. In exchange, a delivery never waits.
::ndk::ScopedAStatus OfflineCameraClient::OfflineCameraCallBacks::notify(
        const std::vector<NotifyMsg>& msgs) {
    CLIENT_LOGI("%s: callback notify", __func__);
    if (msgs.empty() || m_client == nullptr) {
        return IllegalArgument();
    }
    m_client->m_notifyMessages = msgs;
    m_client->m_resultCondition.notify_one();
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus OfflineCameraClient::OfflineCameraCallBacks::processCaptureResult(
        const std::vector<OfflineCaptureResult>& results) {
    CLIENT_LOGI("%s: callback capture result", __func__);
    if (results.empty()) {
        return IllegalArgument();
    }
    const std::lock_guard<std::mutex> lock(m_client->m_resultLock);
    CLIENT_LOGI("ProcessOfflineResult %lu", static_cast<unsigned long>(results.size()));
    for (const OfflineCaptureResult& result : results) {
        ProcessOfflineResult(result);
    }
    CLIENT_LOGI("%s: result notifty", "ProcessOfflineResult");
    m_client->m_resultCondition.notify_one();
    return ::ndk::ScopedAStatus::ok();
}

void OfflineCameraClient::OfflineCameraCallBacks::ProcessOfflineResult(
        const OfflineCaptureResult& result) {
    const OfflineFrameInfo& out = result.outFrameInfo;
    CLIENT_LOGI("%s: outframeinfo numPartialMetadata %d frame numbrer %d buffer size %lu ",
                __func__, out.numPartialMetadata, result.frameNumber,
                static_cast<unsigned long>(out.buffers.size()));

    const auto frameNumber = static_cast<uint32_t>(result.frameNumber);
    const auto record = m_client->m_resultFrameInfos.find(frameNumber);
    if (record != m_client->m_resultFrameInfos.end()) {
        UpdateResultFrameInfo(out, &record->second);
    } else {
        CLIENT_LOGI("%s: result.end() numPartialMetadata %d", "GetResultFrameInfo",
                    out.numPartialMetadata);
        ClientFrameInfo frameInfo;
        frameInfo.numPartialMetadata = out.numPartialMetadata;
        AppendClientBuffers(out.buffers, &frameInfo.buffers);
        frameInfo.pMetadata = convertFromAidl(out.metadata);
        CLIENT_LOGI("%s: result.end() pMetadata %p", "GetResultFrameInfo",
                    static_cast<const void*>(frameInfo.pMetadata));
        CLIENT_LOGI("%s: result.end() ", "GetResultFrameInfo");
        m_client->m_resultFrameInfos.emplace(frameNumber, std::move(frameInfo));
    }

    const OfflineFrameInfo& in = result.inFrameInfo;
    CLIENT_LOGI("%s: inframeinfo numPartialMetadata %d frame numbrer %d buffer size %lu ", __func__,
                in.numPartialMetadata, result.frameNumber,
                static_cast<unsigned long>(in.buffers.size()));
}

void OfflineCameraClient::OfflineCameraCallBacks::UpdateResultFrameInfo(
        const OfflineFrameInfo& frameInfo, ClientFrameInfo* record) {
    const bool isBufferUpdate = record->buffers.empty();
    const bool isPartialMetaUpdate = record->numPartialMetadata == 0;
    const bool isMetaUpdate = record->pMetadata == nullptr;
    CLIENT_LOGI("%s: isBufferUpdate %d isPartialMetaUpdate %d isMetaUpdate %d",
                "GetResultFrameInfo", isBufferUpdate, isPartialMetaUpdate, isMetaUpdate);
    if (isPartialMetaUpdate) {
        record->numPartialMetadata = frameInfo.numPartialMetadata;
    }
    if (isBufferUpdate) {
        AppendClientBuffers(frameInfo.buffers, &record->buffers);
    }
    // Kept: the count decides; isMetaUpdate is only logged.
    if (isPartialMetaUpdate) {
        record->pMetadata = convertFromAidl(frameInfo.metadata);
    }
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
