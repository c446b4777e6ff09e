// The Malvar-He-Cutler demosaic, one row at a time.
#include <imaging/camera_physics.h>
#include <imaging/demosaic.h>

#include <algorithm>

namespace imaging {

namespace {

/** The pixel at `x` of the window's middle row and its neighbours, summed by distance. */
struct Neighbourhood {
    int centre;
    int leftRight;    // E + W
    int aboveBelow;   // N + S
    int leftRight2;   // EE + WW
    int aboveBelow2;  // NN + SS
    int diagonal;
};

Neighbourhood Gather(const uint16_t* const rows[5], uint32_t x) {
    const uint16_t* above = rows[1] + x;
    const uint16_t* row = rows[2] + x;
    const uint16_t* below = rows[3] + x;
    return {row[0],           row[-1] + row[1],        above[0] + below[0],
            row[-2] + row[2], rows[0][x] + rows[4][x], above[-1] + above[1] + below[-1] + below[1]};
}

uint16_t Sixteenths(int sum) {
    return static_cast<uint16_t>(std::clamp((sum + 8) >> 4, 0, kLinearMax));
}

uint16_t GreenAtColour(const Neighbourhood& n) {
    return Sixteenths(8 * n.centre + 4 * (n.leftRight + n.aboveBelow) -
                      2 * (n.leftRight2 + n.aboveBelow2));
}

uint16_t ColourLeftRightOfGreen(const Neighbourhood& n) {
    return Sixteenths(10 * n.centre + 8 * n.leftRight - 2 * n.leftRight2 - 2 * n.diagonal +
                      n.aboveBelow2);
}

uint16_t ColourAboveBelowGreen(const Neighbourhood& n) {
    return Sixteenths(10 * n.centre + 8 * n.aboveBelow - 2 * n.aboveBelow2 - 2 * n.diagonal +
                      n.leftRight2);
}

uint16_t OppositeColour(const Neighbourhood& n) {
    return Sixteenths(12 * n.centre + 4 * n.diagonal - 3 * (n.leftRight2 + n.aboveBelow2));
}

}  // namespace

uint32_t Mirror(int64_t i, uint32_t size) {
    const int64_t period = 2 * (static_cast<int64_t>(size) - 1);
    int64_t place = i % period;
    if (place < 0) place += period;
    return static_cast<uint32_t>(place < size ? place : period - place);
}

void DemosaicRow(const uint16_t* const rows[5], uint32_t y, uint32_t begin, uint32_t end,
                 const RgbRow& out) {
    // In an even row the colour beside green is red and the one above it blue; in an odd row
    // the other way round.
    const bool redRow = (y & 1) == 0;
    uint16_t* rowColour = redRow ? out.red : out.blue;
    uint16_t* otherColour = redRow ? out.blue : out.red;
    for (uint32_t x = begin; x < end; ++x) {
        const uint32_t i = x - begin;
        const Neighbourhood n = Gather(rows, x);
        if (MosaicChannel(x, y) == Channel::kGreen) {
            out.green[i] = static_cast<uint16_t>(n.centre);
            rowColour[i] = ColourLeftRightOfGreen(n);
            otherColour[i] = ColourAboveBelowGreen(n);
        } else {
            rowColour[i] = static_cast<uint16_t>(n.centre);
            out.green[i] = GreenAtColour(n);
            otherColour[i] = OppositeColour(n);
        }
    }
}

}  // namespace imaging
