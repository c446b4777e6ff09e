// A row of the mosaic with its even and its odd columns kept apart. Neighbours in such a half lie
// two pixels apart in the mosaic and have the same colour, so that a whole vector of them goes
// through the same formula.
#pragma once

#include <cstdint>

namespace imaging {

/** Pixel x is at [x % 2][x / 2]; the pointers are at x = 0 and x = 1. */
struct SplitRow {
    int16_t* columns[2];
};

}  // namespace imaging
