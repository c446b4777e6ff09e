// The chart's lettering: glyphs as straight strokes on a grid 4 wide and 6 high.
#pragma once

#include <cstdint>
#include <vector>

namespace offlineframes {

struct GlyphLine {
    uint8_t x0, y0, x1, y1;  // grid steps from the glyph's top left corner
};

// The strokes of a capital, digit or one of "-./"; none for anything else.
std::vector<GlyphLine> glyphLines(char letter);

}  // namespace offlineframes
