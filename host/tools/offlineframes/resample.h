// Fitting a photo into a frame.
#pragma once

#include "picture.h"

namespace offlineframes {

// Scales `photo` until it covers `size` and cuts the overhang off evenly on both sides. A photo
// that shrinks is averaged over areas, so that fine detail does not alias.
Picture FitPicture(const Picture& photo, PictureSize size);

// What FitPicture() scales by: output pixels per pixel of `photo`.
double CoveringScale(const Picture& photo, PictureSize size);

// The middle `size` pixels of `picture`, on an even offset. `size` must not be larger.
Picture CentreCrop(const Picture& picture, PictureSize size);

}  // namespace offlineframes
