// Pictures in files: PNG, JPEG and PPM read by content, PNG written; and photos fitted into frames.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "file_io.h"
#include "picture.h"

namespace offlineframes {

enum class PictureType { kPng, kJpeg, kPpm };

// Tells the type by the first bytes. Fails, naming `name`, when it is none of the three.
base::Result<PictureType> TypeOf(const Bytes& bytes, const std::string& name);

// Reads a picture, turned upright by its EXIF orientation, as 8-bit RGB over black. A damaged or
// too large one is an error.
base::Result<Picture> ReadPicture(const std::string& path);
// The same for the bytes of the file `path`, already read.
base::Result<Picture> DecodePicture(const Bytes& bytes, const std::string& path);

// Bytes after the JPEG's end marker are ignored; a damaged stream or one that ends before its end
// marker is an error. `name` is for messages.
struct JpegPicture {
    Picture picture;       // as stored: orientation not yet applied
    PictureSize fullSize;  // of the picture when it is not reduced
    int orientation = 1;   // EXIF 1 to 8
    size_t jpegBytes = 0;  // up to and with the end marker
};
// With `leastWidth`, `picture` is reduced in eighths while it stays at least that wide; that costs
// a fraction of the time.
base::Result<JpegPicture> DecodeJpeg(const Bytes& bytes, const std::string& name,
                                     uint32_t leastWidth = 0);

// Turns and mirrors a picture stored with this EXIF orientation upright.
Picture MakeUpright(Picture picture, int orientation);

// What FitPicture() scales by: output pixels per pixel of `photo`.
double CoveringScale(const Picture& photo, PictureSize size);

// Scales `photo` until it covers `size` and cuts the overhang off evenly on both sides. A photo
// that shrinks is averaged over areas, so that fine detail does not alias.
Picture FitPicture(const Picture& photo, PictureSize size);

// Writes the RGB bytes of row `y`; called for each row once, from the top.
using RowSource = std::function<void(uint32_t y, uint8_t* rgb)>;
RowSource RowsOf(Picture picture);

Bytes EncodePng(PictureSize size, const RowSource& rows);

}  // namespace offlineframes
