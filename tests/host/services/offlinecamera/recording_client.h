// A client that writes down, one line each, what the service tells it.
#pragma once

#include <gmock/gmock.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "graphics.h"
#include "quiet_client.h"

namespace offlinecamera {

/**
 * Events, in order of arrival:
 *   "shutter F", "error F", "result F out 1:7 in 0:1 0:2" (stream:buffer; "!" after a buffer with
 *   status ERROR, " parts N" unless 1), "lend S x N", "return S:B", "empty CALLBACK".
 * It lends buffers with ids from 101 on and answers empty lists with an error. Thread-safe.
 */
class RecordingClient : public QuietClient {
  public:
    using StreamBuffersVal = ::aidl::android::hardware::camera::device::StreamBuffersVal;

    ndk::ScopedAStatus notify(const std::vector<NotifyMsg>& messages) override {
        if (messages.empty()) return Empty("notify");
        for (const NotifyMsg& message : messages) {
            if (message.getTag() == NotifyMsg::shutter) {
                Add("shutter " + std::to_string(message.get<NotifyMsg::shutter>().frameNumber));
            } else {
                Add("error " + std::to_string(message.get<NotifyMsg::error>().frameNumber));
            }
        }
        return ndk::ScopedAStatus::ok();
    }

    ndk::ScopedAStatus processCaptureResult(const std::vector<Result>& results) override {
        if (results.empty()) return Empty("result");
        for (const Result& result : results) {
            if (onResult) onResult(result);
            Add("result " + std::to_string(result.frameNumber) + " out" +
                Text(result.outFrameInfo.buffers) + " in" + Text(result.inFrameInfo.buffers) +
                (result.outFrameInfo.numPartialMetadata == 1 ? "" : " wrong parts"));
        }
        return ndk::ScopedAStatus::ok();
    }

    ndk::ScopedAStatus requestStreamBuffers(const std::vector<BufferRequest>& requests,
                                            std::vector<BufferRet>* rets,
                                            BufferRequestStatus*) override {
        rets->clear();
        if (requests.empty()) return Empty("request");
        for (const BufferRequest& request : requests) {
            Add("lend " + std::to_string(request.stream.id) + " x " +
                std::to_string(request.numBuffersRequested));
            std::vector<StreamBuffer> buffers(request.numBuffersRequested);
            for (StreamBuffer& buffer : buffers) {
                buffer.streamId = request.stream.id;
                buffer.bufferId = ++mLastLentId;
                if (!lendsEmptyHandles) buffer.buffer = Allocate(request.stream);
            }
            if (lendsTooFew) buffers.pop_back();
            BufferRet ret;
            ret.stream = request.stream;
            ret.val = StreamBuffersVal::make<StreamBuffersVal::buffers>(std::move(buffers));
            rets->push_back(std::move(ret));
        }
        return ndk::ScopedAStatus::ok();
    }

    ndk::ScopedAStatus returnStreamBuffers(const std::vector<StreamBuffer>& buffers) override {
        if (buffers.empty()) return Empty("return");
        Add("return" + Text(buffers));
        return ndk::ScopedAStatus::ok();
    }

    /** Waits until `count` events have come, not longer than 30 s. @return all of them */
    std::vector<std::string> WaitForEvents(size_t count) {
        std::unique_lock<std::mutex> guard(mLock);
        EXPECT_TRUE(mChanged.wait_for(guard, std::chrono::seconds(30),
                                      [&] { return mEvents.size() >= count; }))
                << "waited for " << count << " events";
        return mEvents;
    }

    std::vector<std::string> Events() { return WaitForEvents(0); }

    // Set before the request is sent.
    std::function<void(const Result&)> onResult;
    bool lendsEmptyHandles = false;
    bool lendsTooFew = false;

  private:
    static std::string Text(const std::vector<StreamBuffer>& buffers) {
        std::string text;
        for (const StreamBuffer& buffer : buffers) {
            text += " " + std::to_string(buffer.streamId) + ":" + std::to_string(buffer.bufferId);
            if (buffer.status != ::aidl::android::hardware::camera::device::BufferStatus::OK) {
                text += "!";
            }
            if (!buffer.buffer.fds.empty() || !buffer.buffer.ints.empty()) text += " with handle";
        }
        return text;
    }

    ndk::ScopedAStatus Empty(const std::string& callback) {
        Add("empty " + callback);
        return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(1, "ILLEGAL_ARGUMENT");
    }

    void Add(const std::string& event) {
        std::lock_guard<std::mutex> guard(mLock);
        mEvents.push_back(event);
        mChanged.notify_all();
    }

    std::mutex mLock;
    std::condition_variable mChanged;
    std::vector<std::string> mEvents;
    std::atomic<int64_t> mLastLentId{100};
};

}  // namespace offlinecamera
