// The stable-C mapper, version 5: a table of functions from the library mapper.<suffix>.so.
#pragma once

#include <android/rect.h>
#include <cutils/native_handle.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/cdefs.h>

__BEGIN_DECLS

enum AIMapper_Version : uint32_t {
    AIMAPPER_VERSION_5 = 5,
};

enum AIMapper_Error : int32_t {
    AIMAPPER_ERROR_NONE = 0,
    AIMAPPER_ERROR_BAD_DESCRIPTOR = 1,
    AIMAPPER_ERROR_BAD_BUFFER = 2,
    AIMAPPER_ERROR_BAD_VALUE = 3,
    AIMAPPER_ERROR_NO_RESOURCES = 5,
    AIMAPPER_ERROR_UNSUPPORTED = 7,
};

typedef struct AIMapper_MetadataType {
    const char* _Nonnull name;
    int64_t value;
} AIMapper_MetadataType;

typedef struct AIMapper_MetadataTypeDescription {
    AIMapper_MetadataType metadataType;
    const char* _Nullable description;
    bool isGettable;
    bool isSettable;
    uint8_t reserved[32];
} AIMapper_MetadataTypeDescription;

typedef void (*AIMapper_DumpBufferCallback)(void* _Null_unspecified context,
                                            AIMapper_MetadataType metadataType,
                                            const void* _Nonnull value, size_t valueSize);

// Called before the first dump callback of each buffer.
typedef void (*AIMapper_BeginDumpBufferCallback)(void* _Null_unspecified context);

typedef struct AIMapperV5 {
    // `handle` stays the caller's; the result is independent of it, until freeBuffer.
    AIMapper_Error (*_Nonnull importBuffer)(const native_handle_t* _Nonnull handle,
                                            buffer_handle_t _Nullable* _Nonnull outBufferHandle);
    AIMapper_Error (*_Nonnull freeBuffer)(buffer_handle_t _Nonnull buffer);
    AIMapper_Error (*_Nonnull getTransportSize)(buffer_handle_t _Nonnull buffer,
                                                uint32_t* _Nonnull outNumFds,
                                                uint32_t* _Nonnull outNumInts);
    // Takes ownership of `acquireFence` (-1: none). *outData is the buffer's first byte.
    AIMapper_Error (*_Nonnull lock)(buffer_handle_t _Nonnull buffer, uint64_t cpuUsage,
                                    ARect accessRegion, int acquireFence,
                                    void* _Nullable* _Nonnull outData);
    // *releaseFence is the caller's (-1: none).
    AIMapper_Error (*_Nonnull unlock)(buffer_handle_t _Nonnull buffer, int* _Nonnull releaseFence);
    AIMapper_Error (*_Nonnull flushLockedBuffer)(buffer_handle_t _Nonnull buffer);
    AIMapper_Error (*_Nonnull rereadLockedBuffer)(buffer_handle_t _Nonnull buffer);
    // Both return the size in bytes that the value needs, or a negated AIMapper_Error.
    int32_t (*_Nonnull getMetadata)(buffer_handle_t _Nonnull buffer,
                                    AIMapper_MetadataType metadataType, void* _Nullable destBuffer,
                                    size_t destBufferSize);
    int32_t (*_Nonnull getStandardMetadata)(buffer_handle_t _Nonnull buffer,
                                            int64_t standardMetadataType,
                                            void* _Nullable destBuffer, size_t destBufferSize);
    AIMapper_Error (*_Nonnull setMetadata)(buffer_handle_t _Nonnull buffer,
                                           AIMapper_MetadataType metadataType,
                                           const void* _Nonnull metadata, size_t metadataSize);
    AIMapper_Error (*_Nonnull setStandardMetadata)(buffer_handle_t _Nonnull buffer,
                                                   int64_t standardMetadataType,
                                                   const void* _Nonnull metadata,
                                                   size_t metadataSize);
    // The list belongs to the mapper and stays valid.
    AIMapper_Error (*_Nonnull listSupportedMetadataTypes)(
            const AIMapper_MetadataTypeDescription* _Nullable* _Nonnull outDescriptionList,
            size_t* _Nonnull outNumberOfDescriptions);
    AIMapper_Error (*_Nonnull dumpBuffer)(buffer_handle_t _Nonnull buffer,
                                          AIMapper_DumpBufferCallback _Nonnull dumpBufferCallback,
                                          void* _Null_unspecified context);
    AIMapper_Error (*_Nonnull dumpAllBuffers)(
            AIMapper_BeginDumpBufferCallback _Nonnull beginDumpCallback,
            AIMapper_DumpBufferCallback _Nonnull dumpBufferCallback,
            void* _Null_unspecified context);
    AIMapper_Error (*_Nonnull getReservedRegion)(buffer_handle_t _Nonnull buffer,
                                                 void* _Nullable* _Nonnull outReservedRegion,
                                                 uint64_t* _Nonnull outReservedSize);
} AIMapperV5;

// Later versions are larger: only ever used through a pointer.
typedef struct AIMapper {
    alignas(alignof(max_align_t)) AIMapper_Version version;
    AIMapperV5 v5;
} AIMapper;

// Exported by the implementation library. *outImplementation stays the library's.
AIMapper_Error AIMapper_loadIMapper(AIMapper* _Nullable* _Nonnull outImplementation);

__END_DECLS
