// Metadata values, and the content of buffer descriptors, in bytes.
#include <gralloctypes/Gralloc4.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace android::gralloc4 {

using details::Bytes;
using details::MetadataType;
using details::PlaneLayout;
using details::PlaneLayoutComponent;

namespace {

// Packs values in native byte order.
class ByteWriter {
  public:
    template <typename T>
    void Put(const T& value) {
        static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>, "not a packed value");
        PutBytes(&value, sizeof(value));
    }
    void Put(const std::string& text) {
        PutCount(text.size());
        PutBytes(text.data(), text.size());
    }
    void PutCount(size_t count) { Put(static_cast<int64_t>(count)); }

    // Everything written so far.
    Bytes Written() const { return m_bytes; }

  private:
    std::vector<uint8_t> m_bytes;

    void PutBytes(const void* data, size_t size) {
        const auto* first = static_cast<const uint8_t*>(data);
        m_bytes.insert(m_bytes.end(), first, first + size);
    }
};

// Borrows the bytes and checks every size. Each Get...() returns false, and writes nothing, when
// too few are left.
class ByteReader {
  public:
    explicit ByteReader(const Bytes& bytes) : m_next(bytes.data()), m_left(bytes.size()) {}

    template <typename T>
    bool Get(T* value) {
        static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>, "not a packed value");
        if (m_left < sizeof(*value)) return false;
        std::memcpy(value, m_next, sizeof(*value));
        Skip(sizeof(*value));
        return true;
    }
    bool Get(std::string* text) {
        size_t length = 0;
        if (!GetCount(&length)) return false;
        text->assign(reinterpret_cast<const char*>(m_next), length);
        Skip(length);
        return true;
    }

    // The number of elements that follow. Each takes at least one byte, so a number that cannot be
    // true is refused before anything is allocated for it.
    bool GetCount(size_t* count) {
        int64_t value = 0;
        if (!Get(&value) || value < 0 || static_cast<uint64_t>(value) > m_left) return false;
        *count = static_cast<size_t>(value);
        return true;
    }

    bool AtEnd() const { return m_left == 0; }

  private:
    const uint8_t* m_next;
    size_t m_left;

    void Skip(size_t size) {
        m_next += size;
        m_left -= size;
    }
};

template <typename T>
void PutValue(ByteWriter& writer, const T& value) {
    writer.Put(value);
}

template <typename T>
bool GetValue(ByteReader& reader, T* value) {
    return reader.Get(value);
}

void PutValue(ByteWriter& writer, const PlaneLayoutComponent& component) {
    writer.Put(component.type.name);
    writer.Put(component.type.value);
    writer.Put(component.offsetInBits);
    writer.Put(component.sizeInBits);
}

bool GetValue(ByteReader& reader, PlaneLayoutComponent* component) {
    return reader.Get(&component->type.name) && reader.Get(&component->type.value) &&
           reader.Get(&component->offsetInBits) && reader.Get(&component->sizeInBits);
}

void PutValue(ByteWriter& writer, const PlaneLayout& plane);
bool GetValue(ByteReader& reader, PlaneLayout* plane);

template <typename T>
void PutValue(ByteWriter& writer, const std::vector<T>& values) {
    writer.PutCount(values.size());
    for (const T& value : values) PutValue(writer, value);
}

template <typename T>
bool GetValue(ByteReader& reader, std::vector<T>* values) {
    size_t count = 0;
    if (!reader.GetCount(&count)) return false;
    values->resize(count);
    for (T& value : *values) {
        if (!GetValue(reader, &value)) return false;
    }
    return true;
}

void PutValue(ByteWriter& writer, const PlaneLayout& plane) {
    PutValue(writer, plane.components);
    writer.Put(plane.offsetInBytes);
    writer.Put(plane.sampleIncrementInBits);
    writer.Put(plane.strideInBytes);
    writer.Put(plane.widthInSamples);
    writer.Put(plane.heightInSamples);
    writer.Put(plane.totalSizeInBytes);
    writer.Put(plane.horizontalSubsampling);
    writer.Put(plane.verticalSubsampling);
}

bool GetValue(ByteReader& reader, PlaneLayout* plane) {
    return GetValue(reader, &plane->components) && reader.Get(&plane->offsetInBytes) &&
           reader.Get(&plane->sampleIncrementInBits) && reader.Get(&plane->strideInBytes) &&
           reader.Get(&plane->widthInSamples) && reader.Get(&plane->heightInSamples) &&
           reader.Get(&plane->totalSizeInBytes) && reader.Get(&plane->horizontalSubsampling) &&
           reader.Get(&plane->verticalSubsampling);
}

// The name and number of the type come before the value.
template <typename T>
status_t Encode(const MetadataType& type, const T& value, Bytes* out) {
    if (out == nullptr) return BAD_VALUE;
    ByteWriter writer;
    writer.Put(std::string(type.name));
    writer.Put(type.value);
    PutValue(writer, value);
    *out = writer.Written();
    return NO_ERROR;
}

template <typename T>
status_t Decode(const MetadataType& type, const Bytes& in, T* out) {
    if (out == nullptr) return BAD_VALUE;
    ByteReader reader(in);
    std::string name;
    int64_t number = 0;
    T value{};
    if (!reader.Get(&name) || name != std::string(type.name)) return BAD_VALUE;
    if (!reader.Get(&number) || number != type.value) return BAD_VALUE;
    if (!GetValue(reader, &value)) return BAD_VALUE;
    *out = std::move(value);
    return reader.AtEnd() ? NO_ERROR : BAD_VALUE;
}

}  // namespace

status_t encodeWidth(uint64_t width, Bytes* out) {
    return Encode(MetadataType_Width, width, out);
}

status_t decodeWidth(const Bytes& in, uint64_t* out) {
    return Decode(MetadataType_Width, in, out);
}

status_t encodeHeight(uint64_t height, Bytes* out) {
    return Encode(MetadataType_Height, height, out);
}

status_t decodeHeight(const Bytes& in, uint64_t* out) {
    return Decode(MetadataType_Height, in, out);
}

status_t encodePixelFormatRequested(const details::PixelFormat& format, Bytes* out) {
    return Encode(MetadataType_PixelFormatRequested, format, out);
}

status_t decodePixelFormatRequested(const Bytes& in, details::PixelFormat* out) {
    return Decode(MetadataType_PixelFormatRequested, in, out);
}

status_t encodeAllocationSize(uint64_t allocationSize, Bytes* out) {
    return Encode(MetadataType_AllocationSize, allocationSize, out);
}

status_t decodeAllocationSize(const Bytes& in, uint64_t* out) {
    return Decode(MetadataType_AllocationSize, in, out);
}

status_t encodePlaneLayouts(const std::vector<PlaneLayout>& planeLayouts, Bytes* out) {
    return Encode(MetadataType_PlaneLayouts, planeLayouts, out);
}

status_t decodePlaneLayouts(const Bytes& in, std::vector<PlaneLayout>* out) {
    return Decode(MetadataType_PlaneLayouts, in, out);
}

status_t encodeBufferDescriptorInfo(const details::BufferDescriptorInfo& info, Bytes* out) {
    if (out == nullptr) return BAD_VALUE;
    ByteWriter writer;
    writer.Put(std::string(info.name));
    writer.Put(info.width);
    writer.Put(info.height);
    writer.Put(info.layerCount);
    writer.Put(info.format);
    writer.Put(info.usage);
    writer.Put(info.reservedSize);
    *out = writer.Written();
    return NO_ERROR;
}

status_t decodeBufferDescriptorInfo(const Bytes& in, details::BufferDescriptorInfo* out) {
    if (out == nullptr) return BAD_VALUE;
    ByteReader reader(in);
    std::string name;
    details::BufferDescriptorInfo info{};
    if (!reader.Get(&name) || !reader.Get(&info.width) || !reader.Get(&info.height) ||
        !reader.Get(&info.layerCount) || !reader.Get(&info.format) || !reader.Get(&info.usage) ||
        !reader.Get(&info.reservedSize)) {
        return BAD_VALUE;
    }
    info.name = name;
    *out = std::move(info);
    return reader.AtEnd() ? NO_ERROR : BAD_VALUE;
}

bool isStandardMetadataType(const MetadataType& type) {
    return type.name == GRALLOC4_STANDARD_METADATA_TYPE;
}

bool isStandardPlaneLayoutComponentType(const details::ExtendableType& type) {
    return type.name == GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE;
}

}  // namespace android::gralloc4
