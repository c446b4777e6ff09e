// Binary PPM (P6) reading.

#include <cctype>
#include <charconv>

#include "picture_file.h"

namespace offlineframes {
namespace {

// Reads the header's numbers: white space and comments before each.
class HeaderReader {
  public:
    explicit HeaderReader(const Bytes& bytes) : mBytes(bytes), mOffset(2) {}

    // 0 when there is no number that fits.
    uint32_t number() {
        skipSpace();
        const char* const start = reinterpret_cast<const char*>(mBytes.data()) + mOffset;
        const char* const end = reinterpret_cast<const char*>(mBytes.data()) + mBytes.size();
        uint32_t value = 0;
        const auto [stop, error] = std::from_chars(start, end, value);
        if (error != std::errc()) return 0;
        mOffset += static_cast<size_t>(stop - start);
        return value;
    }
    // Where the pixels start: after the one white space that ends the header.
    size_t pixels() const { return mOffset + 1; }

  private:
    void skipSpace() {
        while (mOffset < mBytes.size()) {
            if (mBytes[mOffset] == '#') {
                while (mOffset < mBytes.size() && mBytes[mOffset] != '\n') ++mOffset;
            } else if (isspace(mBytes[mOffset])) {
                ++mOffset;
            } else {
                return;
            }
        }
    }

    const Bytes& mBytes;
    size_t mOffset;
};

}  // namespace

Result<Picture> decodePpm(const Bytes& bytes, const std::string& name) {
    HeaderReader header(bytes);
    const uint32_t width = header.number();
    const uint32_t height = header.number();
    const uint32_t maximum = header.number();
    if (width == 0 || height == 0 || maximum == 0 || maximum > 65535) {
        return Failure{name + ": damaged PPM header (expected P6, width, height, maximum)"};
    }
    if (!isUsableSize(width, height)) {
        return Failure{name + ": a PPM of " + std::to_string(width) + "x" + std::to_string(height) +
                       " is too large"};
    }
    const size_t sampleBytes = maximum > 255 ? 2 : 1;
    const size_t expected = header.pixels() + size_t{width} * height * 3 * sampleBytes;
    if (bytes.size() < expected) {
        return Failure{name + ": PPM of " + std::to_string(width) + "x" + std::to_string(height) +
                       " should have " + std::to_string(expected) + " bytes, found " +
                       std::to_string(bytes.size())};
    }
    Picture picture(width, height);
    const uint8_t* in = bytes.data() + header.pixels();
    for (uint8_t& out : picture.rgb) {
        const uint32_t sample = sampleBytes == 2 ? (uint32_t{in[0]} << 8 | in[1]) : in[0];
        const uint32_t bounded = sample < maximum ? sample : maximum;
        out = static_cast<uint8_t>((bounded * 255 + maximum / 2) / maximum);
        in += sampleBytes;
    }
    return picture;
}

}  // namespace offlineframes
