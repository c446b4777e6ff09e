// Which types are the standard ones, and what they are called.
#include <gralloctypes/Gralloc4.h>

namespace android {
namespace gralloc4 {

namespace {

std::string describe(const details::ExtendableType& type) {
    return type.name + " " + std::to_string(type.value);
}

}  // namespace

bool isStandardMetadataType(const details::MetadataType& type) {
    return type.name == GRALLOC4_STANDARD_METADATA_TYPE;
}

details::StandardMetadataType getStandardMetadataTypeValue(const details::MetadataType& type) {
    return static_cast<details::StandardMetadataType>(type.value);
}

// The three functions of one standard extendable type.
#define STANDARD_EXTENDABLE_TYPE(Type, TypeName)                                                   \
    bool isStandard##Type(const details::ExtendableType& type) {                                   \
        return type.name == TypeName;                                                              \
    }                                                                                              \
    details::Type getStandard##Type##Value(const details::ExtendableType& type) {                  \
        return static_cast<details::Type>(type.value);                                             \
    }                                                                                              \
    std::string get##Type##Name(const details::ExtendableType& type) {                             \
        return isStandard##Type(type) ? toString(getStandard##Type##Value(type)) : describe(type); \
    }

STANDARD_EXTENDABLE_TYPE(Compression, GRALLOC4_STANDARD_COMPRESSION)
STANDARD_EXTENDABLE_TYPE(Interlaced, GRALLOC4_STANDARD_INTERLACED)
STANDARD_EXTENDABLE_TYPE(ChromaSiting, GRALLOC4_STANDARD_CHROMA_SITING)
STANDARD_EXTENDABLE_TYPE(PlaneLayoutComponentType, GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE)

#undef STANDARD_EXTENDABLE_TYPE

}  // namespace gralloc4
}  // namespace android
