// One metadata value in bytes: the name and number of its type, then the value itself.
#pragma once

#include <gralloctypes/Gralloc4.h>

#include "byte_stream.h"

namespace android {
namespace gralloc4 {

// The value's own part: overloads for every type of value that is not a plain number or string.
template <typename T>
void putValue(ByteWriter& writer, const T& value) {
    writer.put(value);
}
template <typename T>
bool getValue(ByteReader& reader, T* value) {
    return reader.get(value);
}

inline void putValue(ByteWriter& writer, const details::ExtendableType& value) {
    writer.put(value.name);
    writer.put(value.value);
}
inline bool getValue(ByteReader& reader, details::ExtendableType* value) {
    return reader.get(&value->name) && reader.get(&value->value);
}

template <typename T>
status_t encodeMetadata(const details::MetadataType& type, const T& value, details::Bytes* out) {
    if (out == nullptr) return BAD_VALUE;
    ByteWriter writer;
    writer.put(std::string(type.name));
    writer.put(type.value);
    putValue(writer, value);
    *out = writer.bytes();
    return NO_ERROR;
}

template <typename T>
status_t decodeMetadata(const details::MetadataType& type, const details::Bytes& in, T* out) {
    if (out == nullptr) return BAD_VALUE;
    ByteReader reader(in);
    std::string name;
    int64_t number = 0;
    T value{};
    if (!reader.get(&name) || name != std::string(type.name)) return BAD_VALUE;
    if (!reader.get(&number) || number != type.value) return BAD_VALUE;
    if (!getValue(reader, &value)) return BAD_VALUE;
    *out = std::move(value);
    return reader.atEnd() ? NO_ERROR : BAD_VALUE;
}

}  // namespace gralloc4
}  // namespace android
