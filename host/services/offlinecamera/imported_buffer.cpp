// Imports, checks and locks the buffers of a client.
#include "imported_buffer.h"

#include <aidl/android/hardware/graphics/common/BufferUsage.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <fcntl.h>
#include <sys/socket.h>

#include <utility>

#include "buffer_geometry.h"
#include "refusal.h"

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::android::hardware::hidl_handle;
using Mapper = ::android::hardware::graphics::mapper::V4_0::IMapper;
using ::android::hardware::graphics::mapper::V4_0::Error;

/** Takes a copy of the fence's descriptor. */
std::string DupFence(const ImportedBuffer::NativeHandle& fence, ndk::ScopedFileDescriptor* out) {
    if (fence.fds.size() > 1 || !fence.ints.empty()) {
        return "acquire fence has " + std::to_string(fence.fds.size()) + " descriptors and " +
               std::to_string(fence.ints.size()) + " integers: it is one descriptor or nothing";
    }
    if (fence.fds.empty()) return {};
    // A socket may hold whoever closes it, or hold other descriptors, as those of its own client.
    int type = 0;
    socklen_t size = sizeof(type);
    if (getsockopt(fence.fds[0].get(), SOL_SOCKET, SO_TYPE, &type, &size) == 0) {
        return "acquire fence is a socket";
    }
    out->set(fcntl(fence.fds[0].get(), F_DUPFD_CLOEXEC, 0));
    return out->get() < 0 ? "acquire fence cannot be duplicated" : "";
}

/** A fence in the form that the mapper takes; borrows the descriptor (-1: no fence). */
class FenceHandle {
  public:
    explicit FenceHandle(int fd) {
        if (fd < 0) return;
        mHandle = native_handle_create(1, 0);
        if (mHandle != nullptr) mHandle->data[0] = fd;
    }
    ~FenceHandle() {
        if (mHandle != nullptr) native_handle_delete(mHandle);
    }
    FenceHandle(const FenceHandle&) = delete;
    FenceHandle& operator=(const FenceHandle&) = delete;

    hidl_handle Get() const { return hidl_handle(mHandle); }

  private:
    native_handle_t* mHandle = nullptr;
};

}  // namespace

ImportedBuffer::~ImportedBuffer() {
    Release();
}

ImportedBuffer::ImportedBuffer(ImportedBuffer&& other) noexcept
    : mMapper(std::move(other.mMapper)),
      mHandle(std::exchange(other.mHandle, nullptr)),
      mPlanes(other.mPlanes),
      mFence(std::move(other.mFence)) {}

ImportedBuffer& ImportedBuffer::operator=(ImportedBuffer&& other) noexcept {
    std::swap(mMapper, other.mMapper);
    std::swap(mHandle, other.mHandle);
    std::swap(mPlanes, other.mPlanes);
    std::swap(mFence, other.mFence);
    return *this;
}

std::string ImportedBuffer::Import(const ::android::sp<IMapper>& mapper, const NativeHandle& handle,
                                   const NativeHandle& acquireFence, const Stream& stream) {
    if (mapper == nullptr) return "there is no graphics mapper";
    if (::android::isAidlNativeHandleEmpty(handle)) {
        return "the buffer handle is empty: was the buffer allocated?";
    }
    if (std::string problem = DupFence(acquireFence, &mFence); !problem.empty()) return problem;
    native_handle_t* raw = ::android::makeFromAidl(handle);
    if (raw == nullptr) return "the buffer handle is too large";
    Error error = Error::NO_RESOURCES;
    mMapper = mapper;
    const auto answer = mMapper->importBuffer(hidl_handle(raw), [&](Error result, void* buffer) {
        error = result;
        mHandle = buffer;
    });
    native_handle_delete(raw);
    if (!answer.isOk() || error != Error::NONE || mHandle == nullptr) {
        mHandle = nullptr;
        return "the mapper does not import the buffer handle: error " +
               std::to_string(static_cast<int>(error));
    }
    return ReadGeometry(stream);
}

std::string ImportedBuffer::ReadGeometry(const Stream& stream) {
    BufferGeometry geometry;
    std::string problem = ReadBufferGeometry(mMapper, mHandle, &geometry);
    if (problem.empty()) problem = PlacePlanes(geometry, stream, &mPlanes);
    return problem;
}

void ImportedBuffer::Release() {
    if (mHandle == nullptr) return;
    const auto answer = mMapper->freeBuffer(mHandle);
    if (!answer.isOk() || static_cast<Error>(answer) != Error::NONE) {
        LogProblem("the mapper does not free a buffer");
    }
    mHandle = nullptr;
}

LockedBuffer::~LockedBuffer() {
    if (mData == nullptr) return;
    Error error = Error::NO_RESOURCES;
    const auto answer = mBuffer->mMapper->unlock(
            mBuffer->mHandle, [&](Error result, const hidl_handle&) { error = result; });
    if (!answer.isOk() || error != Error::NONE) LogProblem("the mapper does not unlock a buffer");
}

std::string LockedBuffer::Lock(const ImportedBuffer& buffer, Access access) {
    const FenceHandle fence(buffer.mFence.get());
    const BufferUsage usage =
            access == Access::kRead ? BufferUsage::CPU_READ_OFTEN : BufferUsage::CPU_WRITE_OFTEN;
    Error error = Error::NO_RESOURCES;
    void* data = nullptr;
    const Mapper::Rect wholeBuffer = {0, 0, 0, 0};
    const auto answer =
            buffer.mMapper->lock(buffer.mHandle, static_cast<uint64_t>(usage), wholeBuffer,
                                 fence.Get(), [&](Error result, void* address) {
                                     error = result;
                                     data = address;
                                 });
    if (!answer.isOk() || error != Error::NONE || data == nullptr) {
        return "the mapper does not lock the buffer: error " +
               std::to_string(static_cast<int>(error));
    }
    mBuffer = &buffer;
    mData = static_cast<uint8_t*>(data);
    return {};
}

imaging::MutableRawView LockedBuffer::Raw(const ImportedBuffer::Stream& stream) const {
    return {mData + mBuffer->Planes().first, static_cast<uint32_t>(stream.width),
            static_cast<uint32_t>(stream.height), mBuffer->Planes().strideBytes};
}

imaging::MutableNv12View LockedBuffer::Nv12(const ImportedBuffer::Stream& stream) const {
    const PlanePlaces& planes = mBuffer->Planes();
    return {mData + planes.first, mData + planes.second, static_cast<uint32_t>(stream.width),
            static_cast<uint32_t>(stream.height), planes.strideBytes};
}

}  // namespace offlinecamera
