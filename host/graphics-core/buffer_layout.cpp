// Layout of the planes of each format.
#include <graphics_core/buffer_layout.h>

namespace graphics {

namespace {

constexpr uint32_t kRaw10Group = 4;  // pixels in 5 bytes
constexpr uint32_t kRaw10RowAlignment = 64;
constexpr uint32_t kYcbcrAlignment = 128;  // of rows in bytes, and of their number

// Every usage bit that has a meaning here. Protected memory is missing, and so are a vendor's own.
constexpr uint64_t kSupportedUsage = kCpuUsageMask | 1u << 8 | 1u << 9 | 1u << 11 | 1u << 12 |
                                     1u << 15 | 1u << 16 | 1u << 17 | 1u << 18 | 1u << 20 |
                                     1u << 22 | 1u << 23 | 1u << 24 | 1u << 25 | 1u << 26 |
                                     1u << 27 | uint64_t{1} << 32;

constexpr uint32_t roundUp(uint32_t value, uint32_t alignment) {
    return (value + alignment - 1) / alignment * alignment;
}

// The limits of a side keep all arithmetic below inside its types.
static_assert(uint64_t{kMaxSide} * kMaxSide * 3 / 2 <= kMaxBufferBytes);
static_assert(kMaxSide % kYcbcrAlignment == 0 && kMaxSide % kRaw10RowAlignment == 0);

std::string shape(const BufferDescription& description) {
    return std::to_string(description.width) + " x " + std::to_string(description.height);
}

Outcome unsupported(const BufferDescription& description, const char* reason) {
    return failure(BufferError::kUnsupported, shape(description) + ": " + reason);
}

Outcome checkCommon(const BufferDescription& description) {
    if (description.width == 0 || description.height == 0 || description.layerCount == 0) {
        return failure(BufferError::kBadValue, shape(description) + ", " +
                                                       std::to_string(description.layerCount) +
                                                       " layers: none of them may be zero");
    }
    if (description.name.size() > kMaxNameBytes ||
        description.name.find('\0') != std::string::npos) {
        return failure(BufferError::kBadValue, "the name must have at most " +
                                                       std::to_string(kMaxNameBytes) +
                                                       " bytes, none of them zero");
    }
    if (description.layerCount != 1) return unsupported(description, "more than one layer");
    if (description.reservedSize != 0) {
        return unsupported(description, "buffers have no reserved region");
    }
    if (const uint64_t unknown = description.usage & ~kSupportedUsage; unknown != 0) {
        return failure(BufferError::kUnsupported,
                       "usage bits " + std::to_string(unknown) + " are not supported");
    }
    return {};
}

Outcome layOutBlob(const BufferDescription& description, BufferLayout* out) {
    if (description.height != 1) return unsupported(description, "a BLOB has a height of 1");
    if (description.width > kMaxBlobBytes) return unsupported(description, "larger than 1 GiB");
    *out = {description.width, description.width, {}};
    return {};
}

Outcome layOutRaw10(const BufferDescription& description, BufferLayout* out) {
    const uint32_t width = description.width;
    const uint32_t height = description.height;
    if (width % kRaw10Group != 0) {
        return unsupported(description, "the width of RAW10 must be a multiple of 4");
    }
    const uint32_t stride = roundUp(width / kRaw10Group * 5, kRaw10RowAlignment);
    const uint64_t size = uint64_t{stride} * height;
    *out = {stride,
            size,
            {{{{kComponentRaw, 0, 10}}, 0, 10, stride, height, size, width, height, 1}}};
    return {};
}

Outcome layOutYcbcr420(const BufferDescription& description, BufferLayout* out) {
    const uint32_t width = description.width;
    const uint32_t height = description.height;
    const uint32_t stride = roundUp(width, kYcbcrAlignment);
    const uint32_t rows = roundUp(height, kYcbcrAlignment);
    const uint64_t luma = uint64_t{stride} * rows;
    const uint64_t chroma = uint64_t{stride} * (rows / 2);
    *out = {stride,
            luma + chroma,
            {{{{kComponentY, 0, 8}}, 0, 8, stride, rows, luma, width, height, 1},
             {{{kComponentCb, 0, 8}, {kComponentCr, 8, 8}},
              luma,
              16,
              stride,
              rows / 2,
              chroma,
              (width + 1) / 2,
              (height + 1) / 2,
              2}}};
    return {};
}

}  // namespace

Outcome layOut(const BufferDescription& description, BufferLayout* out) {
    if (Outcome checked = checkCommon(description); !checked.ok()) return checked;
    if (description.format == kFormatBlob) return layOutBlob(description, out);
    if (description.format != kFormatRaw10 && description.format != kFormatYcbcr420) {
        return failure(BufferError::kUnsupported,
                       "format " + std::to_string(description.format) +
                               " is not supported: use RAW10, YCBCR_420_888 or BLOB");
    }
    if (description.width > kMaxSide || description.height > kMaxSide) {
        return unsupported(description, "a side is longer than 32768 pixels");
    }
    return description.format == kFormatRaw10 ? layOutRaw10(description, out)
                                              : layOutYcbcr420(description, out);
}

}  // namespace graphics
