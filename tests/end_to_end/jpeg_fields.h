// What a JPEG file says about itself, read marker by marker from the formats' definitions (ITU-T
// T.81 annex B, JFIF 1.02, EXIF's TIFF directory) and with no JPEG library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace end_to_end {

struct JpegFields {
    std::string problem = {};  // why the file is not one well-formed JPEG; empty if it is
    int jfifMajor = 0;         // 0: no JFIF header right after the file's first marker
    int thumbnailPixels = 0;   // of the JFIF header
    int orientation = 0;       // of the EXIF block; 0: none
    int width = 0;             // of the frame header
    int height = 0;
    std::vector<int> samplings = {};  // per component: 0x22 is 2 x 2
};

JpegFields readJpegFields(const std::string& file);

}  // namespace end_to_end
