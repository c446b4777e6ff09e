// Which types are the standard ones.
#include <gralloctypes/Gralloc4.h>

namespace android {
namespace gralloc4 {

bool isStandardMetadataType(const details::MetadataType& type) {
    return type.name == GRALLOC4_STANDARD_METADATA_TYPE;
}

bool isStandardPlaneLayoutComponentType(const details::ExtendableType& type) {
    return type.name == GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE;
}

}  // namespace gralloc4
}  // namespace android
