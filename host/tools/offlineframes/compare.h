// How much two pictures differ.
#pragma once

#include <base/result.h>

#include <array>
#include <cstdint>

#include "picture.h"

namespace offlineframes {

struct Comparison {
    // Peak signal to noise ratio in dB, peak 255; infinity for equal channels.
    std::array<double, 3> channelPsnr;  // red, green, blue
    double psnr;                        // over all samples
    // The largest difference of one sample: the first in reading order.
    int largest = 0;
    uint32_t x = 0;
    uint32_t y = 0;
    int channel = 0;
};

// Fails, naming both sizes, when they differ.
base::Result<Comparison> ComparePictures(const Picture& a, const Picture& b);

}  // namespace offlineframes
