// Camera metadata: a block of tagged, typed arrays that can be copied and sent as plain bytes.
#pragma once

#include <cutils/compiler.h>
#include <stddef.h>
#include <stdint.h>

#include "camera_metadata_tags.h"

#ifdef __cplusplus
extern "C" {
#endif

// Opaque. One thread at a time; readers may share it. Blocks from outside must pass
// validate_camera_metadata_structure() before any other function but get_camera_metadata_size().
struct camera_metadata;
typedef struct camera_metadata camera_metadata_t;

enum {
    TYPE_BYTE = 0,
    TYPE_INT32 = 1,
    TYPE_FLOAT = 2,
    TYPE_INT64 = 3,
    TYPE_DOUBLE = 4,
    TYPE_RATIONAL = 5,
    NUM_TYPES,
};

typedef struct camera_metadata_rational {
    int32_t numerator;
    int32_t denominator;
} camera_metadata_rational_t;

// One entry in place: `data` points into the block, `count` elements of `type`.
typedef struct camera_metadata_ro_entry {
    size_t index;
    uint32_t tag;
    uint8_t type;
    size_t count;
    union {
        const uint8_t* u8;
        const int32_t* i32;
        const float* f;
        const int64_t* i64;
        const double* d;
        const camera_metadata_rational_t* r;
    } data;
} camera_metadata_ro_entry_t;

enum {
    CAMERA_METADATA_VALIDATION_ERROR = 1,
    CAMERA_METADATA_VALIDATION_SHIFTED = 2,  // well formed, but not where it can be used in place
};

// Bytes of one element of each type.
extern const size_t camera_metadata_type_size[NUM_TYPES];

// ---- Blocks. Capacities and counts are in entries and in bytes of data.

// An empty block, to be freed with free_camera_metadata(). Null without memory, or above 4 GiB.
camera_metadata_t* allocate_camera_metadata(size_t entry_capacity, size_t data_capacity);

// Null is allowed.
void free_camera_metadata(camera_metadata_t* metadata);

// Size in bytes of the whole block, unused capacity included. 1 for null. Reads the first 4 bytes
// only and checks nothing.
size_t get_camera_metadata_size(const camera_metadata_t* metadata);

size_t get_camera_metadata_entry_count(const camera_metadata_t* metadata);

// Checks every size, offset and type of a block from outside. `expected_size` is the number of
// bytes that are there (null: trust the block's own size). 0, or CAMERA_METADATA_VALIDATION_...;
// the reason of an error is logged.
int validate_camera_metadata_structure(const camera_metadata_t* metadata,
                                       const size_t* expected_size);

// ---- Entries. 0 on success, else 1 unless another number is given.

// Adds `data_count` elements of the tag's own type. Fails for a null block, an unknown tag
// (logged), without room for the entry or its data, and for null data with a count above 0.
int add_camera_metadata_entry(camera_metadata_t* dst, uint32_t tag, const void* data,
                              size_t data_count);

// The entry at `index`, from 0.
int get_camera_metadata_ro_entry(const camera_metadata_t* src, size_t index,
                                 camera_metadata_ro_entry_t* entry);

// The first entry of `tag`; -ENOENT if there is none.
int find_camera_metadata_ro_entry(const camera_metadata_t* src, uint32_t tag,
                                  camera_metadata_ro_entry_t* entry);

#ifdef __cplusplus
}
#endif
