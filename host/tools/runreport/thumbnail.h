// Reduced pictures of frames, small enough to be part of a page.
#pragma once

#include <offlineframes/file_io.h>
#include <offlineframes/frame_geometry.h>
#include <offlineframes/result.h>

#include <cstdint>
#include <string>

namespace runreport {

// Pictures are at most about this wide; frames are reduced by whole factors.
inline constexpr uint32_t kThumbnailWidth = 800;

struct Thumbnail {
    offlineframes::Bytes jpeg;
    uint32_t width = 0;  // pixels
    uint32_t height = 0;
};

// `frame` has the bytes that frameBytes(geometry) tells. A mosaic's cells are averaged colour by
// colour, then developed like a full frame.
offlineframes::Result<Thumbnail> thumbnailOfFrame(const offlineframes::Bytes& frame,
                                                  const offlineframes::FrameGeometry& geometry);

// A JPEG as it is stored, not turned by its orientation; `name` stands in messages. Its full size
// is set.
offlineframes::Result<Thumbnail> thumbnailOfJpeg(const offlineframes::Bytes& file,
                                                 const std::string& name,
                                                 offlineframes::PictureSize* fullSize);

}  // namespace runreport
