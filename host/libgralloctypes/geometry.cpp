// Plane layouts and crop rectangles.
#include "metadata_codec.h"

namespace android {
namespace gralloc4 {

namespace {

// The least bytes an element takes: a string or a list takes 8 for its length.
constexpr size_t kLeastComponentSize = 8 + 3 * sizeof(int64_t);
constexpr size_t kLeastPlaneSize = 8 + 8 * sizeof(int64_t);
constexpr size_t kRectSize = 4 * sizeof(int32_t);

void putComponent(ByteWriter& writer, const details::PlaneLayoutComponent& component) {
    putValue(writer, component.type);
    writer.put(component.offsetInBits);
    writer.put(component.sizeInBits);
}

bool getComponent(ByteReader& reader, details::PlaneLayoutComponent* component) {
    return getValue(reader, &component->type) && reader.get(&component->offsetInBits) &&
           reader.get(&component->sizeInBits);
}

void putPlane(ByteWriter& writer, const details::PlaneLayout& plane) {
    writer.put(static_cast<int64_t>(plane.components.size()));
    for (const details::PlaneLayoutComponent& component : plane.components) {
        putComponent(writer, component);
    }
    writer.put(plane.offsetInBytes);
    writer.put(plane.sampleIncrementInBits);
    writer.put(plane.strideInBytes);
    writer.put(plane.widthInSamples);
    writer.put(plane.heightInSamples);
    writer.put(plane.totalSizeInBytes);
    writer.put(plane.horizontalSubsampling);
    writer.put(plane.verticalSubsampling);
}

bool getPlane(ByteReader& reader, details::PlaneLayout* plane) {
    size_t count = 0;
    if (!reader.getCount(kLeastComponentSize, &count)) return false;
    plane->components.resize(count);
    for (details::PlaneLayoutComponent& component : plane->components) {
        if (!getComponent(reader, &component)) return false;
    }
    return reader.get(&plane->offsetInBytes) && reader.get(&plane->sampleIncrementInBits) &&
           reader.get(&plane->strideInBytes) && reader.get(&plane->widthInSamples) &&
           reader.get(&plane->heightInSamples) && reader.get(&plane->totalSizeInBytes) &&
           reader.get(&plane->horizontalSubsampling) && reader.get(&plane->verticalSubsampling);
}

}  // namespace

// In this namespace itself, where the templates of the codec find them.

static void putValue(ByteWriter& writer, const std::vector<details::PlaneLayout>& planes) {
    writer.put(static_cast<int64_t>(planes.size()));
    for (const details::PlaneLayout& plane : planes) putPlane(writer, plane);
}

static bool getValue(ByteReader& reader, std::vector<details::PlaneLayout>* planes) {
    size_t count = 0;
    if (!reader.getCount(kLeastPlaneSize, &count)) return false;
    planes->resize(count);
    for (details::PlaneLayout& plane : *planes) {
        if (!getPlane(reader, &plane)) return false;
    }
    return true;
}

static void putValue(ByteWriter& writer, const std::vector<details::Rect>& crop) {
    writer.put(static_cast<int64_t>(crop.size()));
    for (const details::Rect& rect : crop) {
        writer.put(rect.left);
        writer.put(rect.top);
        writer.put(rect.right);
        writer.put(rect.bottom);
    }
}

static bool getValue(ByteReader& reader, std::vector<details::Rect>* crop) {
    size_t count = 0;
    if (!reader.getCount(kRectSize, &count)) return false;
    crop->resize(count);
    for (details::Rect& rect : *crop) {
        if (!reader.get(&rect.left) || !reader.get(&rect.top) || !reader.get(&rect.right) ||
            !reader.get(&rect.bottom)) {
            return false;
        }
    }
    return true;
}

status_t encodePlaneLayouts(const std::vector<details::PlaneLayout>& planeLayouts,
                            details::Bytes* out) {
    return encodeMetadata(MetadataType_PlaneLayouts, planeLayouts, out);
}

status_t decodePlaneLayouts(const details::Bytes& in, std::vector<details::PlaneLayout>* out) {
    return decodeMetadata(MetadataType_PlaneLayouts, in, out);
}

status_t encodeCrop(const std::vector<details::Rect>& crop, details::Bytes* out) {
    return encodeMetadata(MetadataType_Crop, crop, out);
}

status_t decodeCrop(const details::Bytes& in, std::vector<details::Rect>* out) {
    return decodeMetadata(MetadataType_Crop, in, out);
}

}  // namespace gralloc4
}  // namespace android
