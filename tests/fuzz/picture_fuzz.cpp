// Picture readers: PNG, JPEG with EXIF, PPM.
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz_input.h"
#include "host/tools/offlineframes/picture_file.h"

namespace {

// A few bytes can ask for 600 MB of picture, which is allowed but makes a slow fuzzer: larger
// pictures than these are left to the readers' own tests.
constexpr uint32_t kMaxSide = 1024;

uint32_t BigEndian(const uint8_t* bytes, size_t count) {
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i) value = value << 8 | bytes[i];
    return value;
}

bool IsLarge(const uint8_t* data, size_t size) {
    if (size >= 24 && data[0] == 0x89) {
        return BigEndian(data + 16, 4) > kMaxSide || BigEndian(data + 20, 4) > kMaxSide;
    }
    for (size_t i = 0; size >= 9 && i < size - 8 && data[0] == 0xff; ++i) {
        const bool startOfFrame = data[i] == 0xff && data[i + 1] >= 0xc0 && data[i + 1] <= 0xcf;
        if (startOfFrame &&
            (BigEndian(data + i + 5, 2) > kMaxSide || BigEndian(data + i + 7, 2) > kMaxSide)) {
            return true;
        }
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0 || IsLarge(data, size)) return 0;
    static const int file = memfd_create("picture", MFD_CLOEXEC);
    Require(ftruncate(file, 0) == 0);
    Require(pwrite(file, data, size, 0) == static_cast<ssize_t>(size));
    const auto read = offlineframes::ReadPicture("/proc/self/fd/" + std::to_string(file));
    if (!read.Ok()) {
        Require(!read.Error().empty());
        return 0;
    }
    const offlineframes::Picture& picture = read.Value();
    Require(offlineframes::IsUsableSize(picture.width, picture.height));
    Require(picture.rgb.size() == size_t{picture.width} * picture.height * 3);
    return 0;
}
