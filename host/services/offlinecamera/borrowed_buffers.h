// Buffers that the client lends for the time of one frame.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraCallback.h>

#include <memory>
#include <string>
#include <vector>

#include "imported_buffer.h"
#include "request.h"

namespace offlinecamera {

using ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraCallback;

/** Borrows with requestStreamBuffers; gives everything back with returnStreamBuffers at its end. */
class BorrowedBuffers {
  public:
    explicit BorrowedBuffers(std::shared_ptr<IOfflineCameraCallback> client)
        : mClient(std::move(client)) {}
    ~BorrowedBuffers() { GiveBack(); }
    BorrowedBuffers(const BorrowedBuffers&) = delete;
    BorrowedBuffers& operator=(const BorrowedBuffers&) = delete;

    /** Asks for `count` buffers that fit `stream`, and imports them. Call it once.
     * @return empty, or what was wrong with the client's answer */
    [[nodiscard]] std::string Borrow(const ::android::sp<ImportedBuffer::IMapper>& mapper,
                                     const Stream& stream, int32_t count);

    const ImportedBuffer& operator[](size_t i) const { return mImported[i]; }

    /** Ids of the buffers that are lent now. */
    const std::vector<int64_t>& Ids() const { return mIds; }

    void GiveBack();

  private:
    const std::shared_ptr<IOfflineCameraCallback> mClient;
    int32_t mStreamId = 0;
    std::vector<int64_t> mIds;
    std::vector<ImportedBuffer> mImported;
};

/** Calls returnStreamBuffers with these ids and without handles; logs a failure. */
void ReturnStreamBuffers(IOfflineCameraCallback& client, int32_t streamId,
                         const std::vector<int64_t>& bufferIds);

}  // namespace offlinecamera
