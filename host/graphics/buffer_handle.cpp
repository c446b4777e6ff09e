// Creation, check and duplication of buffer handles.
#include <fcntl.h>
#include <graphics/buffer_handle.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <type_traits>

namespace graphics {

using base::Done;
using base::Failure;
using base::Result;

namespace {

static_assert(std::has_unique_object_representations_v<HandleIntegers>, "no padding to leak");
static_assert(sizeof(HandleIntegers) % sizeof(int) == 0);

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;

Failure BadBuffer(std::string reason) {
    return Failed(BufferError::kBadBuffer, std::move(reason));
}

Failure NoResources(const char* what) {
    return Failed(BufferError::kNoResources, std::string(what) + ": " + std::strerror(errno));
}

bool HasShapeOfBuffer(const native_handle_t* handle) {
    return handle != nullptr && handle->version == static_cast<int>(sizeof(native_handle_t)) &&
           handle->numFds == kHandleFds && handle->numInts == kHandleInts;
}

// A handle without a descriptor yet: -1 in its place.
UniqueHandle NewHandle() {
    UniqueHandle handle(native_handle_create(kHandleFds, kHandleInts));
    if (handle != nullptr) handle->data[0] = -1;
    return handle;
}

// Checks that `fd` is the memfd of the handle, sealed against shrinking: reading a page that was
// cut off raises SIGBUS.
Result<Done> CheckMemory(const HandleIntegers& integers, int fd) {
    const int seals = fcntl(fd, F_GET_SEALS);
    struct stat status = {};
    if (seals < 0 || fstat(fd, &status) != 0) {
        return BadBuffer("descriptor " + std::to_string(fd) + " is not a memfd");
    }
    if ((seals & F_SEAL_SHRINK) == 0) return BadBuffer("the memfd is not sealed against shrinking");
    if (static_cast<uint64_t>(status.st_size) != integers.size) {
        return BadBuffer("the handle says " + std::to_string(integers.size) +
                         " bytes, the memfd has " + std::to_string(status.st_size));
    }
    if (static_cast<uint64_t>(status.st_ino) != integers.id) {
        return BadBuffer("the handle's buffer id is not that of the memfd");
    }
    return Done{};
}

Result<BufferInfo> CheckBuffer(const HandleIntegers& integers, int fd) {
    if (integers.magic != kHandleMagic) return BadBuffer("the handle is not one of a host buffer");
    // Without a NUL it is too long, which LayOut() refuses.
    const std::string name(integers.name, strnlen(integers.name, sizeof(integers.name)));
    const BufferDescription description = {name,
                                           integers.width,
                                           integers.height,
                                           integers.layerCount,
                                           integers.format,
                                           integers.usage,
                                           0};
    Result<BufferLayout> layout = LayOut(description);
    if (!layout.Ok()) return BadBuffer("the handle describes no buffer: " + layout.Error());
    if (integers.stride != layout.Value().stride || integers.size != layout.Value().size) {
        return BadBuffer("the handle's stride and size are not those of its format");
    }
    if (const auto memory = CheckMemory(integers, fd); !memory.Ok()) return memory.GetFailure();
    return BufferInfo{description, std::move(layout).Value()};
}

HandleIntegers IntegersOf(const BufferDescription& description, const BufferLayout& layout,
                          uint64_t id) {
    HandleIntegers integers = {};
    integers.magic = kHandleMagic;
    integers.width = description.width;
    integers.height = description.height;
    integers.layerCount = description.layerCount;
    integers.format = description.format;
    integers.stride = layout.stride;
    integers.usage = description.usage;
    integers.size = layout.size;
    integers.id = id;
    std::memcpy(integers.name, description.name.data(), description.name.size());
    return integers;
}

}  // namespace

bool ReadIntegers(const native_handle_t* handle, HandleIntegers* out) {
    if (!HasShapeOfBuffer(handle)) return false;
    std::memcpy(out, handle->data + kHandleFds, sizeof(*out));
    return true;
}

bool WriteIntegers(const HandleIntegers& integers, native_handle_t* handle) {
    if (!HasShapeOfBuffer(handle)) return false;
    std::memcpy(handle->data + kHandleFds, &integers, sizeof(integers));
    return true;
}

void HandleCloser::operator()(native_handle_t* handle) const {
    native_handle_close(handle);
    native_handle_delete(handle);
}

Result<UniqueHandle> CreateBuffer(const BufferDescription& description) {
    const Result<BufferLayout> layout = LayOut(description);
    if (!layout.Ok()) return layout.GetFailure();
    const uint64_t size = layout.Value().size;
    UniqueHandle handle = NewHandle();
    if (handle == nullptr) return NoResources("native_handle_create");
    const int fd = memfd_create("graphics_buffer", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (fd < 0) return NoResources("memfd_create");
    handle->data[0] = fd;
    struct stat status = {};
    if (ftruncate(fd, static_cast<off_t>(size)) != 0) return NoResources("ftruncate");
    if (fcntl(fd, F_ADD_SEALS, kSeals) != 0) return NoResources("F_ADD_SEALS");
    if (fstat(fd, &status) != 0) return NoResources("fstat");
    WriteIntegers(IntegersOf(description, layout.Value(), status.st_ino), handle.get());
    return handle;
}

Result<CheckedBuffer> DuplicateBuffer(const native_handle_t* raw) {
    HandleIntegers integers;
    if (!ReadIntegers(raw, &integers)) {
        return BadBuffer(raw == nullptr
                                 ? "the handle is null"
                                 : "the handle has not the descriptors and integers of a buffer");
    }
    UniqueHandle handle = NewHandle();
    if (handle == nullptr) return NoResources("native_handle_create");
    handle->data[0] = fcntl(raw->data[0], F_DUPFD_CLOEXEC, 0);
    if (handle->data[0] < 0) {
        if (errno != EBADF) return NoResources("F_DUPFD_CLOEXEC");
        return BadBuffer("descriptor " + std::to_string(raw->data[0]) + " is not open");
    }
    Result<BufferInfo> info = CheckBuffer(integers, handle->data[0]);
    if (!info.Ok()) return info.GetFailure();
    WriteIntegers(integers, handle.get());
    return CheckedBuffer{std::move(handle), std::move(info).Value()};
}

}  // namespace graphics
