// Frames from and to what a screen shows: 8-bit RGB display values, three bytes a pixel.
#pragma once

#include <imaging/planes.h>

namespace imaging {

// Makes row `y` of a picture: BT.601 full range, each chroma pair for its 2 x 2 pixels.
void RgbFromNv12(const Nv12View& picture, uint32_t y, uint8_t* rgb);

// Step 5 of camera_physics.h. The rows of `rgb` follow each other without padding.
void Nv12FromRgb(const uint8_t* rgb, const MutableNv12View& out);

}  // namespace imaging
