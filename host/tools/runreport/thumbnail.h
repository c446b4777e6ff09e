// Reduced pictures of frames, small enough to be part of a page.
#pragma once

#include <offlineframes/file_io.h>
#include <offlineframes/frame_geometry.h>

#include "report.h"

namespace runreport {

// Pictures are at most about this wide; frames are reduced by whole factors.
inline constexpr uint32_t kThumbnailWidth = 800;

// Sets the frame's picture, or a note that says why it has none. `bytes` are those of a frame of
// this geometry. A mosaic's cells are averaged colour by colour, then developed like a full frame.
void PictureOfFrame(const offlineframes::Bytes& bytes, const offlineframes::FrameGeometry& geometry,
                    Frame* frame);

// The same for a JPEG file, as it is stored: not turned by its orientation. Sets its size, too.
void PictureOfJpeg(const offlineframes::Bytes& file, Frame* frame);

}  // namespace runreport
