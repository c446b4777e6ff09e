// Metadata that is one number, one name or one extendable type.
#include "metadata_codec.h"

namespace android {
namespace gralloc4 {

// The two functions of one standard metadata type.
#define STANDARD_METADATA(Name, Parameter, Value)                      \
    status_t encode##Name(Parameter value, details::Bytes* out) {      \
        return encodeMetadata<Value>(MetadataType_##Name, value, out); \
    }                                                                  \
    status_t decode##Name(const details::Bytes& in, Value* out) {      \
        return decodeMetadata<Value>(MetadataType_##Name, in, out);    \
    }

STANDARD_METADATA(BufferId, uint64_t, uint64_t)
STANDARD_METADATA(Name, const std::string&, std::string)
STANDARD_METADATA(Width, uint64_t, uint64_t)
STANDARD_METADATA(Height, uint64_t, uint64_t)
STANDARD_METADATA(LayerCount, uint64_t, uint64_t)
STANDARD_METADATA(PixelFormatRequested, const details::PixelFormat&, details::PixelFormat)
STANDARD_METADATA(PixelFormatFourCC, uint32_t, uint32_t)
STANDARD_METADATA(PixelFormatModifier, uint64_t, uint64_t)
STANDARD_METADATA(Usage, uint64_t, uint64_t)
STANDARD_METADATA(AllocationSize, uint64_t, uint64_t)
STANDARD_METADATA(ProtectedContent, uint64_t, uint64_t)
STANDARD_METADATA(Compression, const details::ExtendableType&, details::ExtendableType)
STANDARD_METADATA(Interlaced, const details::ExtendableType&, details::ExtendableType)
STANDARD_METADATA(ChromaSiting, const details::ExtendableType&, details::ExtendableType)
STANDARD_METADATA(Dataspace, const details::Dataspace&, details::Dataspace)
STANDARD_METADATA(BlendMode, const details::BlendMode&, details::BlendMode)

#undef STANDARD_METADATA

status_t encodeUint32(const details::MetadataType& type, uint32_t value, details::Bytes* out) {
    return encodeMetadata<uint32_t>(type, value, out);
}

status_t decodeUint32(const details::MetadataType& type, const details::Bytes& in, uint32_t* out) {
    return decodeMetadata<uint32_t>(type, in, out);
}

}  // namespace gralloc4
}  // namespace android
