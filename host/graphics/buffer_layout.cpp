// Layout of the planes of each format.
#include <graphics/buffer_layout.h>

namespace graphics {

using base::Result;

namespace {

constexpr uint32_t kRaw10Group = 4;  // pixels in 5 bytes
constexpr uint32_t kRaw10RowAlignment = 64;
constexpr uint32_t kYcbcrAlignment = 128;  // of rows in bytes, and of their number

// Every usage bit that has a meaning here. Protected memory is missing, and so are a vendor's own.
constexpr uint64_t kSupportedUsage = kCpuUsageMask | 1u << 8 | 1u << 9 | 1u << 11 | 1u << 12 |
                                     1u << 15 | 1u << 16 | 1u << 17 | 1u << 18 | 1u << 20 |
                                     1u << 22 | 1u << 23 | 1u << 24 | 1u << 25 | 1u << 26 |
                                     1u << 27 | uint64_t{1} << 32;

constexpr uint32_t RoundUp(uint32_t value, uint32_t alignment) {
    return (value + alignment - 1) / alignment * alignment;
}

// The limits of a side keep all arithmetic below inside its types.
static_assert(uint64_t{kMaxSide} * kMaxSide * 3 / 2 <= kMaxBufferBytes);
static_assert(kMaxSide % kYcbcrAlignment == 0 && kMaxSide % kRaw10RowAlignment == 0);

base::Failure Unsupported(const BufferDescription& description, const std::string& reason) {
    return Failed(BufferError::kUnsupported, std::to_string(description.width) + " x " +
                                                     std::to_string(description.height) + ": " +
                                                     reason);
}

Result<BufferLayout> LayOutBlob(const BufferDescription& description) {
    if (description.height != 1) return Unsupported(description, "a BLOB has a height of 1");
    if (description.width > kMaxBlobBytes) return Unsupported(description, "larger than 1 GiB");
    return BufferLayout{description.width, description.width, {}};
}

Result<BufferLayout> LayOutRaw10(const BufferDescription& description) {
    const uint32_t width = description.width;
    const uint32_t height = description.height;
    if (width % kRaw10Group != 0) {
        return Unsupported(description, "the width of RAW10 must be a multiple of 4");
    }
    const uint32_t stride = RoundUp(width / kRaw10Group * 5, kRaw10RowAlignment);
    const uint64_t size = uint64_t{stride} * height;
    const Plane raw = {{{kComponentRaw, 0, 10}}, 0, 10, stride, height, size, width, height, 1};
    return BufferLayout{stride, size, {raw}};
}

Result<BufferLayout> LayOutYcbcr420(const BufferDescription& description) {
    const uint32_t width = description.width;
    const uint32_t height = description.height;
    const uint32_t stride = RoundUp(width, kYcbcrAlignment);
    const uint32_t rows = RoundUp(height, kYcbcrAlignment);
    const uint64_t size = uint64_t{stride} * rows;
    const Plane luma = {{{kComponentY, 0, 8}}, 0, 8, stride, rows, size, width, height, 1};
    const Plane chroma = {{{kComponentCb, 0, 8}, {kComponentCr, 8, 8}},
                          size,
                          16,
                          stride,
                          rows / 2,
                          size / 2,
                          (width + 1) / 2,
                          (height + 1) / 2,
                          2};
    return BufferLayout{stride, size + size / 2, {luma, chroma}};
}

}  // namespace

Result<BufferLayout> LayOut(const BufferDescription& description) {
    if (description.width == 0 || description.height == 0 || description.layerCount == 0) {
        return Failed(BufferError::kBadValue, "width, height and layers must not be zero");
    }
    if (description.name.size() > kMaxNameBytes) {
        return Failed(BufferError::kBadValue,
                      "the name is longer than " + std::to_string(kMaxNameBytes) + " bytes");
    }
    if (description.layerCount != 1) return Unsupported(description, "more than one layer");
    if (description.reservedSize != 0) {
        return Unsupported(description, "buffers have no reserved region");
    }
    if (const uint64_t unknown = description.usage & ~kSupportedUsage; unknown != 0) {
        return Unsupported(description,
                           "usage bits " + std::to_string(unknown) + " are not supported");
    }
    if (description.format == kFormatBlob) return LayOutBlob(description);
    if (description.width > kMaxSide || description.height > kMaxSide) {
        return Unsupported(description, "a side is longer than 32768 pixels");
    }
    if (description.format == kFormatRaw10) return LayOutRaw10(description);
    if (description.format == kFormatYcbcr420) return LayOutYcbcr420(description);
    return Unsupported(description, "format " + std::to_string(description.format) +
                                            " is not supported: use RAW10, YCBCR_420_888 or BLOB");
}

}  // namespace graphics
