// The content of a buffer descriptor: what a client asks an allocator for.
#include <gralloctypes/Gralloc4.h>

#include "byte_stream.h"

namespace android {
namespace gralloc4 {

status_t encodeBufferDescriptorInfo(const details::BufferDescriptorInfo& info,
                                    details::Bytes* out) {
    if (out == nullptr) return BAD_VALUE;
    ByteWriter writer;
    writer.put(std::string(info.name));
    writer.put(info.width);
    writer.put(info.height);
    writer.put(info.layerCount);
    writer.put(info.format);
    writer.put(info.usage);
    writer.put(info.reservedSize);
    *out = writer.bytes();
    return NO_ERROR;
}

status_t decodeBufferDescriptorInfo(const details::Bytes& in, details::BufferDescriptorInfo* out) {
    if (out == nullptr) return BAD_VALUE;
    ByteReader reader(in);
    std::string name;
    details::BufferDescriptorInfo info{};
    if (!reader.get(&name) || !reader.get(&info.width) || !reader.get(&info.height) ||
        !reader.get(&info.layerCount) || !reader.get(&info.format) || !reader.get(&info.usage) ||
        !reader.get(&info.reservedSize)) {
        return BAD_VALUE;
    }
    info.name = name;
    *out = std::move(info);
    return reader.atEnd() ? NO_ERROR : BAD_VALUE;
}

}  // namespace gralloc4
}  // namespace android
