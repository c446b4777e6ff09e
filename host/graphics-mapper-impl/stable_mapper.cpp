// The stable-C mapper of host buffers.
#include <android/hardware/graphics/mapper/IMapper.h>
#include <gralloctypes/Gralloc4.h>
#include <graphics_core/imported_buffers.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <vector>

#include "mapper_log.h"
#include "metadata.h"

namespace {

using graphics::BufferError;
using graphics::BufferInfo;
using graphics::failure;
using graphics::ImportedBuffers;
using graphics::Outcome;

ImportedBuffers& buffers() {
    return ImportedBuffers::instance();
}

AIMapper_Error report(const char* operation, const Outcome& outcome) {
    return static_cast<AIMapper_Error>(graphics::logged(operation, outcome));
}

AIMapper_Error importBuffer(const native_handle_t* handle, buffer_handle_t* outBufferHandle) {
    return report("importBuffer", buffers().import(handle, outBufferHandle));
}

AIMapper_Error freeBuffer(buffer_handle_t buffer) {
    return report("freeBuffer", buffers().release(buffer));
}

AIMapper_Error getTransportSize(buffer_handle_t buffer, uint32_t* outNumFds, uint32_t* outNumInts) {
    BufferInfo info;
    const Outcome outcome = buffers().describe(buffer, &info);
    if (outcome.ok()) {
        *outNumFds = graphics::kHandleFds;
        *outNumInts = graphics::kHandleInts;
    }
    return report("getTransportSize", outcome);
}

AIMapper_Error lock(buffer_handle_t buffer, uint64_t cpuUsage, ARect accessRegion, int acquireFence,
                    void** outData) {
    const graphics::Region region = {accessRegion.left, accessRegion.top, accessRegion.right,
                                     accessRegion.bottom};
    const AIMapper_Error error =
            report("lock", buffers().lock(buffer, cpuUsage, region, acquireFence, outData));
    if (acquireFence >= 0) close(acquireFence);
    return error;
}

AIMapper_Error unlock(buffer_handle_t buffer, int* releaseFence) {
    *releaseFence = -1;
    return report("unlock", buffers().unlock(buffer));
}

// The memory is one for every process: there is nothing to write back or to fetch.
AIMapper_Error flushLockedBuffer(buffer_handle_t buffer) {
    return report("flushLockedBuffer", buffers().requireLocked(buffer));
}

AIMapper_Error rereadLockedBuffer(buffer_handle_t buffer) {
    return report("rereadLockedBuffer", buffers().requireLocked(buffer));
}

// The size of the value; it is written only where it fits whole.
int32_t copyMetadata(buffer_handle_t buffer, const graphics::MetadataType& type, void* destBuffer,
                     size_t destBufferSize) {
    BufferInfo info;
    graphics::MetadataBytes bytes;
    Outcome outcome = buffers().describe(buffer, &info);
    if (outcome.ok()) outcome = encodeMetadata(info, true, type, &bytes);
    if (!outcome.ok()) return -static_cast<int32_t>(report("getMetadata", outcome));
    if (destBuffer != nullptr && destBufferSize >= bytes.size()) {
        std::memcpy(destBuffer, bytes.data(), bytes.size());
    }
    return static_cast<int32_t>(bytes.size());
}

int32_t getMetadata(buffer_handle_t buffer, AIMapper_MetadataType metadataType, void* destBuffer,
                    size_t destBufferSize) {
    graphics::MetadataType type{};
    type.name = metadataType.name != nullptr ? metadataType.name : "";
    type.value = metadataType.value;
    return copyMetadata(buffer, type, destBuffer, destBufferSize);
}

int32_t getStandardMetadata(buffer_handle_t buffer, int64_t standardMetadataType, void* destBuffer,
                            size_t destBufferSize) {
    return copyMetadata(buffer, graphics::standardType(standardMetadataType), destBuffer,
                        destBufferSize);
}

AIMapper_Error refuseToSet(buffer_handle_t buffer) {
    BufferInfo info;
    Outcome outcome = buffers().describe(buffer, &info);
    if (outcome.ok()) {
        outcome = failure(BufferError::kUnsupported, "metadata of a buffer never changes");
    }
    return report("setMetadata", outcome);
}

AIMapper_Error setMetadata(buffer_handle_t buffer, AIMapper_MetadataType, const void*, size_t) {
    return refuseToSet(buffer);
}

AIMapper_Error setStandardMetadata(buffer_handle_t buffer, int64_t, const void*, size_t) {
    return refuseToSet(buffer);
}

AIMapper_MetadataType stableType(const graphics::MetadataKind& kind) {
    return {GRALLOC4_STANDARD_METADATA_TYPE, static_cast<int64_t>(kind.type)};
}

AIMapper_Error listSupportedMetadataTypes(
        const AIMapper_MetadataTypeDescription** outDescriptionList,
        size_t* outNumberOfDescriptions) {
    static const auto* const list = [] {
        auto* made = new std::vector<AIMapper_MetadataTypeDescription>;
        for (const graphics::MetadataKind& kind : graphics::supportedMetadata()) {
            made->push_back({stableType(kind), kind.description, true, false, {}});
        }
        return made;
    }();
    *outDescriptionList = list->data();
    *outNumberOfDescriptions = list->size();
    return AIMAPPER_ERROR_NONE;
}

void dump(const BufferInfo& info, AIMapper_DumpBufferCallback callback, void* context) {
    for (const graphics::MetadataKind& kind : graphics::supportedMetadata()) {
        graphics::MetadataBytes bytes;
        const auto type = graphics::standardType(static_cast<int64_t>(kind.type));
        if (encodeMetadata(info, true, type, &bytes).ok()) {
            callback(context, stableType(kind), bytes.data(), bytes.size());
        }
    }
}

AIMapper_Error dumpBuffer(buffer_handle_t buffer, AIMapper_DumpBufferCallback dumpBufferCallback,
                          void* context) {
    BufferInfo info;
    const Outcome outcome = buffers().describe(buffer, &info);
    if (outcome.ok()) dump(info, dumpBufferCallback, context);
    return report("dumpBuffer", outcome);
}

AIMapper_Error dumpAllBuffers(AIMapper_BeginDumpBufferCallback beginDumpCallback,
                              AIMapper_DumpBufferCallback dumpBufferCallback, void* context) {
    for (const BufferInfo& info : buffers().all()) {
        beginDumpCallback(context);
        dump(info, dumpBufferCallback, context);
    }
    return AIMAPPER_ERROR_NONE;
}

AIMapper_Error getReservedRegion(buffer_handle_t buffer, void** outReservedRegion,
                                 uint64_t* outReservedSize) {
    *outReservedRegion = nullptr;
    *outReservedSize = 0;
    BufferInfo info;
    return report("getReservedRegion", buffers().describe(buffer, &info));
}

AIMapper gMapper = {
        .version = AIMAPPER_VERSION_5,
        .v5 = {importBuffer, freeBuffer, getTransportSize, lock, unlock, flushLockedBuffer,
               rereadLockedBuffer, getMetadata, getStandardMetadata, setMetadata,
               setStandardMetadata, listSupportedMetadataTypes, dumpBuffer, dumpAllBuffers,
               getReservedRegion},
};

}  // namespace

extern "C" {

extern const uint32_t ANDROID_HAL_MAPPER_VERSION;
__attribute__((visibility("default"))) const uint32_t ANDROID_HAL_MAPPER_VERSION =
        AIMAPPER_VERSION_5;

__attribute__((visibility("default"))) AIMapper_Error AIMapper_loadIMapper(
        AIMapper** outImplementation) {
    *outImplementation = &gMapper;
    return AIMAPPER_ERROR_NONE;
}

}  // extern "C"
