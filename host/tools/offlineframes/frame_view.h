// Any dump, source file or picture as a picture: finds out what the file is and checks its size.
#pragma once

#include <imaging/planes.h>

#include <optional>
#include <string>

#include "frame_geometry.h"

namespace offlineframes {

// A frame as NV12.
struct Nv12Frame {
    Bytes bytes;
    FrameGeometry geometry;

    imaging::Nv12View View() const;
};

// The frame that a file holds, whose geometry has passed FrameBytes(). A RAW10 mosaic is developed
// by the reference camera's own pipeline, not cropped.
Nv12Frame AsNv12(Bytes file, const FrameGeometry& geometry);

struct ViewRequest {
    std::optional<FrameFormat> format;  // what the file holds, whatever its name says
    PictureSize size;                   // of a frame; 0: not known
    std::optional<uint64_t> stride;     // bytes per row
    std::optional<uint64_t> scanlines;  // rows of the luma or raw plane
    bool mosaic = false;                // RAW10 as grey mosaic and not developed
    bool asStored = false;              // JPEG: leave EXIF orientation alone
};

struct View {
    PictureSize size;
    RowSource rows;
    std::string description;  // what the file was taken for, one line

    Picture WholePicture() const;
};

// Fails when the file cannot be read, its kind or geometry cannot be told, its size does not match
// or an option of `request` has no meaning for it.
Result<View> ViewFile(const std::string& path, const ViewRequest& request);

}  // namespace offlineframes
