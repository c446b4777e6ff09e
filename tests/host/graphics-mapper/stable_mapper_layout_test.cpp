// The binary layout that a mapper library and its caller must agree on.
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <android/hardware/graphics/mapper/IMapper.h>

#include <cstddef>
#include <type_traits>

namespace {

using ::android::hardware::graphics::mapper::V4_0::IMapper;

// The stable-C table, called through offsets.
static_assert(alignof(AIMapper) == 16 && sizeof(AIMapper) == 128);
static_assert(offsetof(AIMapper, version) == 0 && offsetof(AIMapper, v5) == 8);
static_assert(sizeof(AIMapper_MetadataTypeDescription) == 64);
static_assert(offsetof(AIMapperV5, lock) == 3 * 8);
static_assert(offsetof(AIMapperV5, getStandardMetadata) == 8 * 8);
static_assert(offsetof(AIMapperV5, getReservedRegion) == 14 * 8);
static_assert(sizeof(ARect) == 16 && std::is_same_v<ARect::value_type, int32_t>);

// The records of mapper 4.0.
static_assert(sizeof(IMapper::BufferDescriptorInfo) == 48);
static_assert(offsetof(IMapper::BufferDescriptorInfo, format) == 28);
static_assert(offsetof(IMapper::BufferDescriptorInfo, usage) == 32);
static_assert(sizeof(IMapper::MetadataType) == 24 &&
              sizeof(IMapper::MetadataTypeDescription) == 48);
static_assert(sizeof(IMapper::MetadataDump) == 40 && sizeof(IMapper::BufferDump) == 16);

// Clients read both mappers' errors with one table.
using ::android::hardware::graphics::mapper::V4_0::Error;
static_assert(AIMAPPER_ERROR_BAD_BUFFER == static_cast<int32_t>(Error::BAD_BUFFER) &&
              AIMAPPER_ERROR_UNSUPPORTED == static_cast<int32_t>(Error::UNSUPPORTED));

}  // namespace
