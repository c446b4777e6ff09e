// Separable resampling and cropping of pictures.

#include "resample.h"

#include <string.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace offlineframes {
namespace {

// Which source samples make one output sample, and how much of each.
struct Taps {
    uint32_t first = 0;
    std::vector<float> weights;  // sum 1
};

// Taps of `outCount` samples that cover [start, start + outCount * step) of `inCount` samples.
std::vector<Taps> makeTaps(uint32_t inCount, uint32_t outCount, double start, double step) {
    const double reach = std::max(1.0, step);
    std::vector<Taps> all(outCount);
    for (uint32_t i = 0; i < outCount; ++i) {
        const double centre = start + (i + 0.5) * step - 0.5;
        const int last = static_cast<int>(inCount) - 1;
        const int from = std::clamp(static_cast<int>(std::ceil(centre - reach)), 0, last);
        const int to = std::clamp(static_cast<int>(std::floor(centre + reach)), from, last);
        all[i].first = static_cast<uint32_t>(from);
        float sum = 0;
        for (int s = from; s <= to; ++s) {
            const double weight = std::max(0.0, 1.0 - std::abs(s - centre) / reach);
            all[i].weights.push_back(static_cast<float>(weight));
            sum += static_cast<float>(weight);
        }
        if (sum <= 0) all[i].weights.assign(1, sum = 1);
        for (float& weight : all[i].weights) weight /= sum;
    }
    return all;
}

uint8_t toByte(float value) {
    return static_cast<uint8_t>(std::clamp(value + 0.5f, 0.0f, 255.0f));
}

Picture scaleRows(const Picture& in, const std::vector<Taps>& columns) {
    Picture out(static_cast<uint32_t>(columns.size()), in.height);
    for (uint32_t y = 0; y < in.height; ++y) {
        for (uint32_t x = 0; x < out.width; ++x) {
            float sum[3] = {};
            const uint8_t* source = in.pixel(columns[x].first, y);
            for (const float weight : columns[x].weights) {
                for (float& channel : sum) channel += weight * *source++;
            }
            for (int c = 0; c < 3; ++c) out.pixel(x, y)[c] = toByte(sum[c]);
        }
    }
    return out;
}

Picture scaleColumns(const Picture& in, const std::vector<Taps>& rows) {
    Picture out(in.width, static_cast<uint32_t>(rows.size()));
    const size_t rowBytes = size_t{in.width} * 3;
    std::vector<float> sum(rowBytes);
    for (uint32_t y = 0; y < out.height; ++y) {
        std::fill(sum.begin(), sum.end(), 0.0f);
        uint32_t sourceRow = rows[y].first;
        for (const float weight : rows[y].weights) {
            const uint8_t* source = in.pixel(0, sourceRow++);
            for (size_t i = 0; i < rowBytes; ++i) sum[i] += weight * source[i];
        }
        uint8_t* const target = out.pixel(0, y);
        for (size_t i = 0; i < rowBytes; ++i) target[i] = toByte(sum[i]);
    }
    return out;
}

}  // namespace

double coveringScale(const Picture& photo, PictureSize size) {
    return std::max(double(size.width) / photo.width, double(size.height) / photo.height);
}

Picture fitPicture(const Picture& photo, PictureSize size) {
    const double step = 1 / coveringScale(photo, size);  // source pixels per output pixel
    const double startX = (photo.width - size.width * step) / 2;
    const double startY = (photo.height - size.height * step) / 2;
    return scaleColumns(scaleRows(photo, makeTaps(photo.width, size.width, startX, step)),
                        makeTaps(photo.height, size.height, startY, step));
}

Picture centreCrop(const Picture& picture, PictureSize size) {
    const uint32_t left = (picture.width - size.width) / 2 & ~1u;
    const uint32_t top = (picture.height - size.height) / 2 & ~1u;
    Picture out(size.width, size.height);
    for (uint32_t y = 0; y < size.height; ++y) {
        memcpy(out.pixel(0, y), picture.pixel(left, top + y), size_t{size.width} * 3);
    }
    return out;
}

}  // namespace offlineframes
