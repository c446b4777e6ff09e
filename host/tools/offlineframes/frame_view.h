// Any dump, source file or picture as a picture: finds out what the file is and checks its size.
#pragma once

#include <optional>
#include <string>

#include "frame_geometry.h"

namespace offlineframes {

struct ViewRequest {
    std::optional<FrameFormat> format;  // what the file holds, whatever its name says
    FrameGeometry known;                // of a frame; what is 0 is not known
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
