// Fitting a photo into a frame.
#pragma once

#include "frame_geometry.h"
#include "picture.h"

namespace offlineframes {

// Scales `photo` until it covers `size` and cuts the overhang off evenly on both sides. Separable
// triangle filter, widened when the photo shrinks so that fine detail is averaged and not aliased.
Picture fitPicture(const Picture& photo, PictureSize size);

// What fitPicture() scales by: output pixels per pixel of `photo`.
double coveringScale(const Picture& photo, PictureSize size);

// The middle `size` pixels of `picture`, on an even offset. `size` must not be larger.
Picture centreCrop(const Picture& picture, PictureSize size);

}  // namespace offlineframes
