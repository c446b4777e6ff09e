// Any dump, source file or picture as a picture: finds out what the file is and checks its size.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "file_io.h"
#include "frame_geometry.h"
#include "picture_file.h"

namespace offlineframes {

// What the caller knows of a frame; it goes before what the file's name tells.
struct KnownGeometry {
    std::optional<FrameFormat> format;
    std::optional<PictureSize> size;
    std::optional<uint64_t> stride;  // at most kMaxFileBytes, as scanlines
    std::optional<uint64_t> scanlines;
};

struct ViewRequest : KnownGeometry {
    bool mosaic = false;    // RAW10 as grey mosaic and not developed
    bool asStored = false;  // JPEG: leave EXIF orientation alone
};

struct View {
    PictureSize size;
    RowSource rows;
    std::string description;  // what the file was taken for, one line

    Picture WholePicture() const;
};

// Fails when the file cannot be read, its kind or geometry cannot be told, its size does not match
// (the message gives the bytes expected and found, and what would match) or an option of `request`
// has no meaning for it.
base::Result<View> ViewFile(const std::string& path, const ViewRequest& request);

// The geometry of a frame file of `bytes` bytes from name, request and size, checked against it.
base::Result<FrameGeometry> ResolveGeometry(const std::string& path, FrameFormat format,
                                            const KnownGeometry& request, uint64_t bytes);

}  // namespace offlineframes
