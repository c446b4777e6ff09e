// Box-averages planes and mosaics, then goes the way of a full frame: develop, encode.

#include "thumbnail.h"

#include <imaging/b2y.h>
#include <imaging/jpeg.h>
#include <imaging/raw10.h>
#include <offlineframes/frame_encoder.h>
#include <offlineframes/picture_file.h>
#include <offlineframes/resample.h>

#include <algorithm>
#include <vector>

namespace runreport {

namespace {

using offlineframes::Bytes;
using offlineframes::Failure;
using offlineframes::FrameFormat;
using offlineframes::FrameGeometry;
using offlineframes::PictureSize;
using offlineframes::Result;

constexpr int kQuality = 85;
constexpr size_t kJpegHeadRoom = 64 * 1024;
// One processor each: frames are reduced at the same time.
constexpr imaging::Execution kOneThread() {
    return {1, imaging::InstructionSet::kBaseline};
}

// Rows of samples, `channels` interleaved; whoever makes one answers for the memory.
struct Plane {
    const uint8_t* data;
    size_t strideBytes;
    uint32_t channels;
};

// Averages factor x factor samples of each channel to `width` x `height`, rows back to back.
Bytes averagePlane(const Plane& plane, uint32_t factor, uint32_t width, uint32_t height) {
    const size_t samples = size_t{width} * factor * plane.channels;
    const uint32_t area = factor * factor;
    std::vector<uint32_t> sums(samples);
    Bytes out(size_t{width} * height * plane.channels);
    uint8_t* target = out.data();
    for (uint32_t y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        for (uint32_t row = 0; row < factor; ++row) {
            const uint8_t* const source =
                    plane.data + (size_t{y} * factor + row) * plane.strideBytes;
            for (size_t i = 0; i < samples; ++i) sums[i] += source[i];
        }
        for (uint32_t x = 0; x < width; ++x) {
            for (uint32_t channel = 0; channel < plane.channels; ++channel) {
                uint32_t sum = area / 2;
                for (uint32_t i = 0; i < factor; ++i) {
                    sum += sums[(size_t{x} * factor + i) * plane.channels + channel];
                }
                *target++ = static_cast<uint8_t>(sum / area);
            }
        }
    }
    return out;
}

Result<Thumbnail> encode(const imaging::Nv12View& picture) {
    Thumbnail thumbnail;
    thumbnail.width = picture.width;
    thumbnail.height = picture.height;
    thumbnail.jpeg.resize(size_t{picture.width} * picture.height * 3 + kJpegHeadRoom);
    size_t size = 0;
    const std::string problem = imaging::EncodeJpeg(picture, {kQuality, 0}, thumbnail.jpeg.data(),
                                                    thumbnail.jpeg.size(), &size, kOneThread());
    if (!problem.empty()) return Failure{"no reduced picture: " + problem};
    thumbnail.jpeg.resize(size);
    return thumbnail;
}

Result<Thumbnail> reduceNv12(const Bytes& frame, const FrameGeometry& geometry) {
    const uint32_t factor = (geometry.size.width + kThumbnailWidth - 1) / kThumbnailWidth;
    const uint32_t width = geometry.size.width / factor & ~1u;
    const uint32_t height = geometry.size.height / factor & ~1u;
    if (width == 0 || height == 0) return Failure{"no reduced picture: the frame is too small"};
    const uint8_t* const chroma = frame.data() + size_t{geometry.stride} * geometry.scanlines;
    const Bytes y = averagePlane({frame.data(), geometry.stride, 1}, factor, width, height);
    const Bytes uv = averagePlane({chroma, geometry.stride, 2}, factor, width / 2, height / 2);
    return encode({y.data(), uv.data(), width, height, width});
}

// One row of cells: sums of `factor` mosaic rows of one parity, halved in both directions.
void averageMosaicRow(const Bytes& frame, const FrameGeometry& geometry, uint32_t factor,
                      uint32_t y, std::vector<uint16_t>* out) {
    const uint32_t parity = y % 2;
    std::vector<uint16_t> row(geometry.size.width);
    std::vector<uint32_t> sums(out->size());
    for (uint32_t i = 0; i < factor; ++i) {
        const size_t source = (size_t{y / 2} * factor + i) * 2 + parity;
        imaging::UnpackRaw10Row(&frame[source * geometry.stride], geometry.size.width, row.data());
        for (size_t x = 0; x < sums.size(); ++x) {
            const uint16_t* cell = &row[x / 2 * factor * 2 + x % 2];
            for (uint32_t k = 0; k < factor; ++k) sums[x] += cell[size_t{k} * 2];
        }
    }
    const uint32_t area = factor * factor;
    for (size_t x = 0; x < sums.size(); ++x) {
        (*out)[x] = static_cast<uint16_t>((sums[x] + area / 2) / area);
    }
}

Result<Thumbnail> reduceRaw10(const Bytes& frame, const FrameGeometry& geometry) {
    const uint32_t factor = (geometry.size.width + kThumbnailWidth - 1) / kThumbnailWidth;
    const uint32_t width = geometry.size.width / 2 / factor * 2 & ~3u;
    const uint32_t height = geometry.size.height / 2 / factor * 2;
    if (width == 0 || height == 0) return Failure{"no reduced picture: the frame is too small"};
    const size_t rowBytes = imaging::Raw10RowBytes(width);
    Bytes mosaic(rowBytes * height);
    std::vector<uint16_t> row(width);
    for (uint32_t y = 0; y < height; ++y) {
        averageMosaicRow(frame, geometry, factor, y, &row);
        imaging::PackRaw10Row(row.data(), width, &mosaic[y * rowBytes]);
    }
    Bytes nv12(size_t{width} * height * 3 / 2);
    const imaging::MutableNv12View developed = {nv12.data(), &nv12[size_t{width} * height], width,
                                                height, width};
    const std::string problem =
            imaging::RawToNv12({mosaic.data(), width, height, rowBytes}, developed, kOneThread());
    if (!problem.empty()) return Failure{"no reduced picture: " + problem};
    return encode(developed);
}

}  // namespace

Result<Thumbnail> thumbnailOfFrame(const Bytes& frame, const FrameGeometry& geometry) {
    return geometry.format == FrameFormat::kNv12 ? reduceNv12(frame, geometry)
                                                 : reduceRaw10(frame, geometry);
}

Result<Thumbnail> thumbnailOfJpeg(const Bytes& file, const std::string& name,
                                  PictureSize* fullSize) {
    const Result<offlineframes::JpegPicture> jpeg =
            offlineframes::decodeJpeg(file, name, kThumbnailWidth);
    if (!jpeg.Ok()) return jpeg.GetFailure();
    *fullSize = jpeg.Value().fullSize;
    const offlineframes::Picture& picture = jpeg.Value().picture;
    const uint32_t width = picture.width & ~1u;
    const uint32_t height = picture.height & ~1u;
    if (width == 0 || height == 0) return Failure{"no reduced picture: it is too small"};
    const offlineframes::Picture even = offlineframes::centreCrop(picture, {width, height});
    const Bytes nv12 = offlineframes::encodeNv12(
            even, {FrameFormat::kNv12, {width, height}, width, height}, {});
    return encode({nv12.data(), &nv12[size_t{width} * height], width, height, width});
}

}  // namespace runreport
