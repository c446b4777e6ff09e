// Metadata values, and the content of buffer descriptors, in bytes.
#include <gralloctypes/Gralloc4.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace android::gralloc4 {

using details::BufferDescriptorInfo;
using details::Bytes;
using details::MetadataType;
using details::PlaneLayout;
using details::PlaneLayoutComponent;
using hardware::hidl_string;

namespace {

// The one list of what each type consists of, for a writer, or for a reader where `value` is not
// const. False when the reader fails.
template <typename Archive, typename Value>
bool Transfer(Archive& archive, Value& value);

template <typename Archive, typename... Values>
bool TransferAll(Archive& archive, Values&... values) {
    return (Transfer(archive, values) && ...);
}

// Packs values in native byte order.
class ByteWriter {
  public:
    template <typename T>
    bool Pass(const T& value) {
        static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>, "not a packed value");
        return Append(&value, sizeof(value));
    }
    bool Pass(const std::string& text) {
        return Pass(static_cast<int64_t>(text.size())) && Append(text.data(), text.size());
    }
    bool Pass(const hidl_string& text) { return Pass(std::string(text)); }
    template <typename T>
    bool Pass(const std::vector<T>& values) {
        Pass(static_cast<int64_t>(values.size()));
        for (const T& value : values) Transfer(*this, value);
        return true;
    }

    // Everything written so far.
    Bytes Written() const { return m_bytes; }

  private:
    std::vector<uint8_t> m_bytes;

    bool Append(const void* data, size_t size) {
        const auto* first = static_cast<const uint8_t*>(data);
        m_bytes.insert(m_bytes.end(), first, first + size);
        return true;
    }
};

// Borrows the bytes and checks every size. Pass() returns false when too few are left.
class ByteReader {
  public:
    explicit ByteReader(const Bytes& bytes) : m_next(bytes.data()), m_left(bytes.size()) {}

    template <typename T>
    bool Pass(T& value) {
        static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>, "not a packed value");
        if (m_left < sizeof(value)) return false;
        std::memcpy(&value, m_next, sizeof(value));
        Skip(sizeof(value));
        return true;
    }
    bool Pass(std::string& text) {
        size_t length = 0;
        if (!GetCount(&length)) return false;
        text.assign(reinterpret_cast<const char*>(m_next), length);
        Skip(length);
        return true;
    }
    bool Pass(hidl_string& text) {
        std::string read;
        if (!Pass(read)) return false;
        text = read;
        return true;
    }
    template <typename T>
    bool Pass(std::vector<T>& values) {
        size_t count = 0;
        if (!GetCount(&count)) return false;
        values.resize(count);
        return std::all_of(values.begin(), values.end(),
                           [this](T& value) { return Transfer(*this, value); });
    }

    bool AtEnd() const { return m_left == 0; }

  private:
    const uint8_t* m_next;
    size_t m_left;

    // The number of elements that follow. Each takes at least one byte, so a number that cannot be
    // true is refused before anything is allocated for it.
    bool GetCount(size_t* count) {
        int64_t value = 0;
        if (!Pass(value) || value < 0 || static_cast<uint64_t>(value) > m_left) return false;
        *count = static_cast<size_t>(value);
        return true;
    }

    void Skip(size_t size) {
        m_next += size;
        m_left -= size;
    }
};

template <typename Archive, typename Value>
bool Transfer(Archive& archive, Value& value) {
    using Type = std::remove_const_t<Value>;
    if constexpr (std::is_same_v<Type, PlaneLayoutComponent>) {
        return TransferAll(archive, value.type.name, value.type.value, value.offsetInBits,
                           value.sizeInBits);
    } else if constexpr (std::is_same_v<Type, PlaneLayout>) {
        return TransferAll(archive, value.components, value.offsetInBytes,
                           value.sampleIncrementInBits, value.strideInBytes, value.widthInSamples,
                           value.heightInSamples, value.totalSizeInBytes,
                           value.horizontalSubsampling, value.verticalSubsampling);
    } else if constexpr (std::is_same_v<Type, BufferDescriptorInfo>) {
        return TransferAll(archive, value.name, value.width, value.height, value.layerCount,
                           value.format, value.usage, value.reservedSize);
    } else {
        return archive.Pass(value);
    }
}

// Writes `parts` one after the other.
template <typename... Parts>
status_t Encode(Bytes* out, const Parts&... parts) {
    if (out == nullptr) return BAD_VALUE;
    ByteWriter writer;
    TransferAll(writer, parts...);
    *out = writer.Written();
    return NO_ERROR;
}

// The name and number of the type come before the value.
template <typename T>
status_t EncodeMetadata(const MetadataType& type, const T& value, Bytes* out) {
    return Encode(out, type.name, type.value, value);
}

// Reads what comes behind a header, if any.
template <typename T>
status_t DecodeRest(ByteReader& reader, T* out) {
    T value{};
    if (!Transfer(reader, value)) return BAD_VALUE;
    *out = std::move(value);
    return reader.AtEnd() ? NO_ERROR : BAD_VALUE;
}

template <typename T>
status_t Decode(const MetadataType& type, const Bytes& in, T* out) {
    if (out == nullptr) return BAD_VALUE;
    ByteReader reader(in);
    std::string name;
    int64_t number = 0;
    if (!TransferAll(reader, name, number)) return BAD_VALUE;
    if (name != std::string(type.name) || number != type.value) return BAD_VALUE;
    return DecodeRest(reader, out);
}

}  // namespace

status_t encodeWidth(uint64_t width, Bytes* out) {
    return EncodeMetadata(MetadataType_Width, width, out);
}

status_t decodeWidth(const Bytes& in, uint64_t* out) {
    return Decode(MetadataType_Width, in, out);
}

status_t encodeHeight(uint64_t height, Bytes* out) {
    return EncodeMetadata(MetadataType_Height, height, out);
}

status_t decodeHeight(const Bytes& in, uint64_t* out) {
    return Decode(MetadataType_Height, in, out);
}

status_t encodePixelFormatRequested(const details::PixelFormat& format, Bytes* out) {
    return EncodeMetadata(MetadataType_PixelFormatRequested, format, out);
}

status_t decodePixelFormatRequested(const Bytes& in, details::PixelFormat* out) {
    return Decode(MetadataType_PixelFormatRequested, in, out);
}

status_t encodeAllocationSize(uint64_t allocationSize, Bytes* out) {
    return EncodeMetadata(MetadataType_AllocationSize, allocationSize, out);
}

status_t decodeAllocationSize(const Bytes& in, uint64_t* out) {
    return Decode(MetadataType_AllocationSize, in, out);
}

status_t encodePlaneLayouts(const std::vector<PlaneLayout>& planeLayouts, Bytes* out) {
    return EncodeMetadata(MetadataType_PlaneLayouts, planeLayouts, out);
}

status_t decodePlaneLayouts(const Bytes& in, std::vector<PlaneLayout>* out) {
    return Decode(MetadataType_PlaneLayouts, in, out);
}

status_t encodeBufferDescriptorInfo(const BufferDescriptorInfo& info, Bytes* out) {
    return Encode(out, info);
}

status_t decodeBufferDescriptorInfo(const Bytes& in, BufferDescriptorInfo* out) {
    if (out == nullptr) return BAD_VALUE;
    ByteReader reader(in);
    return DecodeRest(reader, out);
}

bool isStandardMetadataType(const MetadataType& type) {
    return type.name == GRALLOC4_STANDARD_METADATA_TYPE;
}

bool isStandardPlaneLayoutComponentType(const details::ExtendableType& type) {
    return type.name == GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE;
}

}  // namespace android::gralloc4
