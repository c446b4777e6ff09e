// Borrows buffers from the client and gives them back.
#include "borrowed_buffers.h"

#include "refusal.h"

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::camera::device::BufferRequestStatus;
using ::aidl::android::hardware::camera::device::StreamBuffersVal;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineBufferRequest;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineStreamBufferRet;

}  // namespace

std::string BorrowedBuffers::Borrow(const ::android::sp<ImportedBuffer::IMapper>& mapper,
                                    const Stream& stream, int32_t count) {
    mStreamId = stream.id;
    std::vector<OfflineBufferRequest> asked(1);
    asked[0].stream = stream;
    asked[0].numBuffersRequested = count;
    std::vector<OfflineStreamBufferRet> answers;
    // The buffers alone decide: a client may leave this value alone.
    BufferRequestStatus ignored = BufferRequestStatus::OK;
    const auto status = mClient->requestStreamBuffers(asked, &answers, &ignored);
    if (!status.isOk()) return "requestStreamBuffers failed: " + status.getDescription();
    if (answers.size() != 1 || answers[0].val.getTag() != StreamBuffersVal::buffers) {
        return "requestStreamBuffers gave no buffers";
    }
    const auto& lent = answers[0].val.get<StreamBuffersVal::buffers>();
    for (const StreamBuffer& buffer : lent) mIds.push_back(buffer.bufferId);
    if (lent.size() != static_cast<size_t>(count)) {
        return "requestStreamBuffers gave " + std::to_string(lent.size()) + " buffers instead of " +
               std::to_string(count);
    }
    for (const StreamBuffer& buffer : lent) {
        ImportedBuffer imported;
        std::string problem = imported.Import(mapper, buffer.buffer, buffer.acquireFence, stream);
        if (!problem.empty()) {
            return "lent buffer " + std::to_string(buffer.bufferId) + ": " + problem;
        }
        mImported.push_back(std::move(imported));
    }
    return {};
}

void BorrowedBuffers::GiveBack() {
    mImported.clear();
    if (!mIds.empty()) ReturnStreamBuffers(*mClient, mStreamId, mIds);
    mIds.clear();
}

void ReturnStreamBuffers(IOfflineCameraCallback& client, int32_t streamId,
                         const std::vector<int64_t>& bufferIds) {
    std::vector<StreamBuffer> buffers(bufferIds.size());
    for (size_t i = 0; i < bufferIds.size(); ++i) {
        buffers[i].streamId = streamId;
        buffers[i].bufferId = bufferIds[i];
    }
    const auto status = client.returnStreamBuffers(buffers);
    if (!status.isOk()) LogProblem("returnStreamBuffers failed: " + status.getDescription());
}

}  // namespace offlinecamera
