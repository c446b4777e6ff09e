// Submits the request and waits for its shutter and its result.

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "gralloc/clientlog.h"
#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

namespace {

constexpr uint32_t kWaitLimitMs = 5000;

}  // namespace

int32_t OfflineCameraClient::ProcessOfflineRequest() {
    int32_t status = kSuccess;
    if (m_offlineSession == nullptr) {
        CLIENT_LOGE("m_offlineSession is NULL");
        status = kNullGiven;
    } else {
        ClearResultsAndMessages();
        status = InitOfflineRequest(&m_configureInfo);
        if (status == kSuccess) {
            const ::ndk::ScopedAStatus called = m_offlineSession->processOfflineRequest(
                    m_offlineRequests, &m_returnFrameNumber);
            if (called.isOk()) {
                CLIENT_LOGI("ProcessOfflineRequest sucessfully");
            } else {
                CLIENT_LOGE("%s, FAILED...", __func__);
                status = kFailed;
            }
        }
    }
    for (OfflineRequestInfo& request : m_offlineRequests) {
        if (request.frameNumber == -1) {
            request.frameNumber = m_returnFrameNumber;
        }
        CLIENT_LOGI("request id frameNumber:%d return frameNumber %d", request.frameNumber,
                    m_returnFrameNumber);
    }
    return status;
}

void OfflineCameraClient::ClearResultsAndMessages() {
    const std::lock_guard<std::mutex> lock(m_resultLock);
    m_resultFrameInfos.clear();
    m_frameInfos.clear();
    m_notifyMessages.clear();
}

void OfflineCameraClient::WaitCaptureResultCompleted() {
    for (OfflineRequestInfo& request : m_offlineRequests) {
        const int32_t frameNumber = request.frameNumber;
        CLIENT_LOGI("WaitCaptureResultCompleted result frameNum is %d", frameNumber);
        // Kept: goes on without the shutter; the result may come all the same.
        WaitForShutter(frameNumber, kWaitLimitMs);
        const int32_t status = WaitForResult(&request, kWaitLimitMs);
        CLIENT_LOGI("WaitCaptureResultCompleted status is %d", status);
        if (status != kSuccess) {
            continue;
        }
        // Kept: reads the map without m_resultLock from here on, although a result that arrives now
        // changes it. The frame is in it: WaitForResult found it, and only this thread clears it.
        const auto outputResult = m_resultFrameInfos.find(static_cast<uint32_t>(frameNumber));
        if (outputResult == m_resultFrameInfos.end()) {
            CLIENT_LOGE("not receive result frame, please check it");
            continue;
        }
        CLIENT_LOGI("result completed outputResult->second.buffers.size %lu",
                    static_cast<unsigned long>(outputResult->second.buffers.size()));
        for (const ClientStreamBuffer& buffer : outputResult->second.buffers) {
            DumpResultBuffer(buffer, frameNumber);
        }
    }
}

// Logs "received" only if it had to wait, as WaitForResult does.
bool OfflineCameraClient::WaitForShutter(int32_t frameNumber, uint32_t timeout_ms) {
    std::unique_lock<std::mutex> lock(m_resultLock);
    CLIENT_LOGI("WaitForShutter frame %d time %d", frameNumber, timeout_ms);
    if (IsShutterReceivedLocked(frameNumber)) {
        return true;
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    bool received = false;
    bool timedOut = false;
    while (!received && !timedOut) {
        timedOut = m_resultCondition.wait_until(lock, deadline) == std::cv_status::timeout;
        received = IsShutterReceivedLocked(frameNumber);
    }
    CLIENT_LOGI("WaitForShutter frame %d received %d", frameNumber, received);
    return received;
}

bool OfflineCameraClient::IsShutterReceivedLocked(int32_t frameNumber) {
    for (const NotifyMsg& message : m_notifyMessages) {
        if (message.getTag() == NotifyMsg::Tag::shutter &&
            message.get<NotifyMsg::Tag::shutter>().frameNumber == frameNumber) {
            return true;
        }
    }
    CLIENT_LOGI("IsShutterReceivedLocked frameNumber is %d", frameNumber);
    return false;
}

int32_t OfflineCameraClient::WaitForResult(OfflineRequestInfo* request, uint32_t timeout_ms) {
    std::unique_lock<std::mutex> lock(m_resultLock);
    CLIENT_LOGI("WaitForResult result timeout_ms %d", timeout_ms);
    if (IsResultReceivedLocked(request)) {
        return kSuccess;
    }
    const bool received = m_resultCondition.wait_for(
            lock, std::chrono::milliseconds(timeout_ms), [this, request] {
                CLIENT_LOGI("WaitForResult wait_for condtion trigger");
                return IsResultReceivedLocked(request);
            });
    CLIENT_LOGI("WaitForResult received is %d", received);
    return received ? kSuccess : kTimedOut;
}

bool OfflineCameraClient::IsResultReceivedLocked(OfflineRequestInfo* request) {
    const auto record = m_resultFrameInfos.find(static_cast<uint32_t>(request->frameNumber));
    if (record == m_resultFrameInfos.end()) {
        return false;
    }
    if (!ContainsTheSameBuffers(&record->second.buffers, &request->outputBuffers)) {
        CLIENT_LOGW("IsResultReceivedLocked failed");
        return false;
    }
    CLIENT_LOGI("IsResultReceivedLocked sucessfully");
    return true;
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
