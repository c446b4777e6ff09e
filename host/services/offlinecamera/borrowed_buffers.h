// Buffers that the client lends for the time of one frame.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraCallback.h>

#include <memory>
#include <vector>

#include "imported_buffer.h"
#include "request.h"

namespace offlinecamera {

using ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraCallback;

// Whom a session calls.
using Client = std::shared_ptr<IOfflineCameraCallback>;

// Gives everything back with returnStreamBuffers at the end of its life.
class BorrowedBuffers {
  public:
    // Asks for `count` buffers that fit `stream` with requestStreamBuffers, and imports them. Fails
    // with what is wrong with the client's answer; what it lent is then given back already.
    static base::Result<BorrowedBuffers> Borrow(const Client& client, const Stream& stream,
                                                int32_t count);

    ~BorrowedBuffers();
    BorrowedBuffers(BorrowedBuffers&&) = default;

    const ImportedBuffer& operator[](size_t i) const { return m_imported[i]; }

    // Never gives them back.
    void Keep() { m_ids.clear(); }

    const std::vector<int64_t>& Ids() const { return m_ids; }

  private:
    BorrowedBuffers(Client client, int32_t streamId)
        : m_client(std::move(client)), m_streamId(streamId) {}

    Client m_client;
    int32_t m_streamId;
    std::vector<int64_t> m_ids;  // empty once moved from
    std::vector<ImportedBuffer> m_imported;
};

// Calls returnStreamBuffers with these ids and without handles; logs a failure.
void ReturnStreamBuffers(IOfflineCameraCallback& client, int32_t streamId,
                         const std::vector<int64_t>& bufferIds);

}  // namespace offlinecamera
