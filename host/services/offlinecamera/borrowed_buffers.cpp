// Borrows buffers from the client and gives them back.
#include "borrowed_buffers.h"

#include "refusal.h"

namespace offlinecamera {

using ::aidl::android::hardware::camera::device::BufferRequestStatus;
using ::aidl::android::hardware::camera::device::StreamBuffersVal;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineBufferRequest;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineStreamBufferRet;
using base::Failure;

base::Result<BorrowedBuffers> BorrowedBuffers::Borrow(const Client& client, const Stream& stream,
                                                      int32_t count) {
    std::vector<OfflineBufferRequest> asked(1);
    asked[0].stream = stream;
    asked[0].numBuffersRequested = count;
    std::vector<OfflineStreamBufferRet> answers;
    // Only the buffers count: a client may leave this value alone.
    BufferRequestStatus ignored = BufferRequestStatus::OK;
    const auto status = client->requestStreamBuffers(asked, &answers, &ignored);
    if (!status.isOk()) return Failure{"requestStreamBuffers failed: " + status.getDescription()};
    if (answers.size() != 1 || answers[0].val.getTag() != StreamBuffersVal::buffers) {
        return Failure{"requestStreamBuffers gave no buffers"};
    }
    const auto& lent = answers[0].val.get<StreamBuffersVal::buffers>();
    BorrowedBuffers borrowed(client, stream.id);
    for (const StreamBuffer& buffer : lent) borrowed.m_ids.push_back(buffer.bufferId);
    if (lent.size() != static_cast<size_t>(count)) {
        return Failure{"requestStreamBuffers gave " + std::to_string(lent.size()) +
                       " buffers instead of " + std::to_string(count)};
    }
    for (const StreamBuffer& buffer : lent) {
        auto imported = ImportedBuffer::Import(buffer.buffer, buffer.acquireFence, stream);
        if (!imported.Ok()) {
            return Failure{"lent buffer " + std::to_string(buffer.bufferId) + ": " +
                           imported.Error()};
        }
        borrowed.m_imported.push_back(std::move(imported).Value());
    }
    return borrowed;
}

BorrowedBuffers::~BorrowedBuffers() {
    m_imported.clear();
    if (!m_ids.empty()) ReturnStreamBuffers(*m_client, m_streamId, m_ids);
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
