// Creation, check and duplication of buffer handles.
#include <fcntl.h>
#include <graphics_core/buffer_handle.h>
#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <type_traits>

namespace graphics {

namespace {

static_assert(std::has_unique_object_representations_v<HandleIntegers>, "no padding to leak");
static_assert(sizeof(HandleIntegers) % sizeof(int) == 0);

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;

Outcome badBuffer(std::string reason) {
    return failure(BufferError::kBadBuffer, std::move(reason));
}

Outcome noResources(const char* what) {
    return failure(BufferError::kNoResources, std::string(what) + ": " + std::strerror(errno));
}

bool hasShapeOfBuffer(const native_handle_t* handle) {
    return handle != nullptr && handle->version == static_cast<int>(sizeof(native_handle_t)) &&
           handle->numFds == kHandleFds && handle->numInts == kHandleInts;
}

// A handle without a descriptor yet: -1 in its place.
UniqueHandle newHandle() {
    UniqueHandle handle(native_handle_create(kHandleFds, kHandleInts));
    if (handle != nullptr) handle->data[0] = -1;
    return handle;
}

bool hasCanonicalName(const HandleIntegers& integers) {
    const size_t length = strnlen(integers.name, sizeof(integers.name));
    for (size_t i = length; i < sizeof(integers.name); ++i) {
        if (integers.name[i] != '\0') return false;
    }
    return length <= kMaxNameBytes;
}

// That `fd` is memory which stays there: mapped pages of a file that shrinks end the process.
Outcome checkMemory(const HandleIntegers& integers, int fd) {
    const int seals = fcntl(fd, F_GET_SEALS);
    struct stat status = {};
    struct statfs system = {};
    if (seals < 0 || fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) ||
        fstatfs(fd, &system) != 0) {
        return badBuffer("descriptor " + std::to_string(fd) + " is not a memory file");
    }
    // The seal does not keep huge pages, of which there are few, from being taken out again.
    if (system.f_type != TMPFS_MAGIC) return badBuffer("the memory file is not one of small pages");
    if ((seals & F_SEAL_SHRINK) == 0) {
        return badBuffer("the memory file is not sealed against shrinking");
    }
    if ((seals & (F_SEAL_WRITE | F_SEAL_FUTURE_WRITE)) != 0) {
        return badBuffer("the memory file is sealed against writing");
    }
    if ((fcntl(fd, F_GETFL) & O_ACCMODE) != O_RDWR) {
        return badBuffer("the memory file is not open for reading and writing");
    }
    if (static_cast<uint64_t>(status.st_size) != integers.size) {
        return badBuffer("the handle says " + std::to_string(integers.size) +
                         " bytes, the memory file has " + std::to_string(status.st_size));
    }
    if (static_cast<uint64_t>(status.st_ino) != integers.id) {
        return badBuffer("the handle's buffer id is not that of the memory file");
    }
    return {};
}

HandleIntegers describe(const BufferDescription& description, const BufferLayout& layout,
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

bool readIntegers(const native_handle_t* handle, HandleIntegers* out) {
    if (!hasShapeOfBuffer(handle)) return false;
    std::memcpy(out, handle->data + kHandleFds, sizeof(*out));
    return true;
}

bool writeIntegers(const HandleIntegers& integers, native_handle_t* handle) {
    if (!hasShapeOfBuffer(handle)) return false;
    std::memcpy(handle->data + kHandleFds, &integers, sizeof(integers));
    return true;
}

void HandleCloser::operator()(native_handle_t* handle) const {
    native_handle_close(handle);
    native_handle_delete(handle);
}

Outcome createBuffer(const BufferDescription& description, UniqueHandle* out) {
    BufferLayout layout;
    if (Outcome laidOut = layOut(description, &layout); !laidOut.ok()) return laidOut;
    UniqueHandle handle = newHandle();
    if (handle == nullptr) return noResources("native_handle_create");
    const int fd = memfd_create("graphics_buffer", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (fd < 0) return noResources("memfd_create");
    handle->data[0] = fd;
    struct stat status = {};
    if (ftruncate(fd, static_cast<off_t>(layout.size)) != 0) return noResources("ftruncate");
    if (fcntl(fd, F_ADD_SEALS, kSeals) != 0) return noResources("F_ADD_SEALS");
    if (fstat(fd, &status) != 0) return noResources("fstat");
    writeIntegers(describe(description, layout, status.st_ino), handle.get());
    *out = std::move(handle);
    return {};
}

Outcome checkBuffer(const HandleIntegers& integers, int fd, BufferInfo* out) {
    if (integers.magic != kHandleMagic) return badBuffer("the handle is not one of a host buffer");
    if (!hasCanonicalName(integers)) return badBuffer("the handle's name is malformed");
    BufferInfo info;
    info.id = integers.id;
    info.description = {integers.name,
                        integers.width,
                        integers.height,
                        integers.layerCount,
                        integers.format,
                        integers.usage,
                        0};
    if (const Outcome laidOut = layOut(info.description, &info.layout); !laidOut.ok()) {
        return badBuffer("the handle describes no buffer: " + laidOut.reason);
    }
    if (integers.stride != info.layout.stride || integers.size != info.layout.size) {
        return badBuffer("the handle's stride and size are not those of its format");
    }
    if (Outcome memory = checkMemory(integers, fd); !memory.ok()) return memory;
    *out = std::move(info);
    return {};
}

Outcome duplicateBuffer(const native_handle_t* raw, UniqueHandle* outHandle, BufferInfo* outInfo) {
    // Only the copies are looked at, so that nobody can change them after the check.
    HandleIntegers integers;
    if (!readIntegers(raw, &integers)) {
        return badBuffer(raw == nullptr ? "the handle is null"
                                        : "the handle has not the shape of a buffer");
    }
    UniqueHandle handle = newHandle();
    if (handle == nullptr) return noResources("native_handle_create");
    handle->data[0] = fcntl(raw->data[0], F_DUPFD_CLOEXEC, 0);
    if (handle->data[0] < 0) {
        if (errno != EBADF) return noResources("F_DUPFD_CLOEXEC");
        return badBuffer("descriptor " + std::to_string(raw->data[0]) + " is not open");
    }
    BufferInfo info;
    if (Outcome checked = checkBuffer(integers, handle->data[0], &info); !checked.ok()) {
        return checked;
    }
    writeIntegers(integers, handle.get());
    *outHandle = std::move(handle);
    *outInfo = std::move(info);
    return {};
}

Outcome checkFits(const BufferInfo& info, const BufferDescription& description, uint32_t stride) {
    const BufferDescription& own = info.description;
    const bool fits = own.width == description.width && own.height == description.height &&
                      own.layerCount == description.layerCount &&
                      own.format == description.format && description.reservedSize == 0 &&
                      (description.usage & ~own.usage) == 0 && stride == info.layout.stride;
    return fits ? Outcome{}
                : failure(BufferError::kBadValue, "the buffer was allocated as another one");
}

}  // namespace graphics
