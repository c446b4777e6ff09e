// A rectangle in pixels; right and bottom are not part of it.
#pragma once

#include <stdint.h>

typedef struct ARect {
#ifdef __cplusplus
    typedef int32_t value_type;
#endif
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
} ARect;
