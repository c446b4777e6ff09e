// What a JPEG file says about itself, as libjpeg reads it; the EXIF block by TIFF's definition.
#pragma once

#include <string>
#include <vector>

namespace end_to_end {

struct JpegFields {
    std::string problem;  // why the file is not one whole JPEG; empty if it is
    int jfifMajor = 0;    // 0: no JFIF header
    int orientation = 0;  // of the EXIF block; 0: none
    int width = 0, height = 0;
    std::vector<int> samplings;  // per component: 0x22 is 2 x 2
};

JpegFields readJpegFields(const std::string& file);

}  // namespace end_to_end
