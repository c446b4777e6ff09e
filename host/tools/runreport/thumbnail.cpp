// Box-averages planes and mosaics, then goes the way of a full frame: develop, encode.

#include <imaging/b2y.h>
#include <imaging/jpeg.h>
#include <imaging/raw10.h>
#include <offlineframes/frame_encoder.h>
#include <offlineframes/picture_file.h>
#include <offlineframes/resample.h>

#include <algorithm>

#include "frames.h"

namespace runreport {

namespace {

using offlineframes::Bytes;
using offlineframes::FrameFormat;
using offlineframes::FrameGeometry;

// Pictures are at most about this wide; frames are reduced by whole factors.
constexpr uint32_t kThumbnailWidth = 800;
constexpr int kQuality = 85;
constexpr size_t kJpegHeadRoom = 64 * 1024;
// One processor each: frames are reduced at the same time.
constexpr imaging::Execution kOneThread = {1, imaging::InstructionSet::kBaseline};

// RFC 4648, section 4.
std::string Base64(const Bytes& bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t count = std::min<size_t>(bytes.size() - i, 3);
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k) group = group << 8 | (k < count ? bytes[i + k] : 0u);
        for (size_t k = 0; k < 4; ++k) {
            text += k <= count ? kDigits[group >> (18 - 6 * k) & 63] : '=';
        }
    }
    return text;
}

void Encode(const imaging::Nv12View& picture, Frame* frame) {
    Bytes jpeg(size_t{picture.width} * picture.height * 3 + kJpegHeadRoom);
    size_t size = 0;
    const std::string problem = imaging::EncodeJpeg(picture, {kQuality, 0}, jpeg.data(),
                                                    jpeg.size(), &size, kOneThread);
    if (!problem.empty()) {
        frame->note = "no reduced picture: " + problem;
        return;
    }
    jpeg.resize(size);
    frame->picture = "data:image/jpeg;base64," + Base64(jpeg);
    frame->pictureWidth = picture.width;
    frame->pictureHeight = picture.height;
}

// Rows of 8-bit samples, or of packed RAW10.
struct Plane {
    const uint8_t* data;
    size_t stride;      // bytes
    uint32_t width;     // samples
    uint32_t channels;  // interleaved
    bool isRaw10;
};

// Averages factor x factor samples of each channel to `width` x `height`, rows back to back.
std::vector<uint16_t> Average(const Plane& plane, uint32_t factor, uint32_t width,
                              uint32_t height) {
    std::vector<uint16_t> row(plane.width), out;
    std::vector<uint32_t> sums(size_t{width} * factor * plane.channels);
    const uint32_t area = factor * factor;
    out.reserve(size_t{width} * height * plane.channels);
    for (uint32_t y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        for (uint32_t i = 0; i < factor; ++i) {
            const uint8_t* const source = plane.data + (size_t{y} * factor + i) * plane.stride;
            if (plane.isRaw10) {
                imaging::UnpackRaw10Row(source, plane.width, row.data());
            } else {
                std::copy(source, source + plane.width, row.begin());
            }
            for (size_t x = 0; x < sums.size(); ++x) sums[x] += row[x];
        }
        for (size_t x = 0; x < size_t{width} * plane.channels; ++x) {
            const size_t first = x / plane.channels * plane.channels * factor + x % plane.channels;
            uint32_t sum = area / 2;
            for (uint32_t i = 0; i < factor; ++i) sum += sums[first + size_t{i} * plane.channels];
            out.push_back(static_cast<uint16_t>(sum / area));
        }
    }
    return out;
}

void ReduceNv12(const Bytes& bytes, const FrameGeometry& geometry, uint32_t factor, Frame* frame) {
    const auto [width, height] = geometry.size;
    const uint32_t stride = geometry.stride;
    const uint8_t* const chroma = bytes.data() + size_t{stride} * geometry.scanlines;
    const uint32_t cellsWide = width / factor / 2, cellsHigh = height / factor / 2;
    const auto luma =
            Average({bytes.data(), stride, width, 1, false}, factor, cellsWide * 2, cellsHigh * 2);
    const auto colour = Average({chroma, stride, width, 2, false}, factor, cellsWide, cellsHigh);
    const Bytes y(luma.begin(), luma.end()), uv(colour.begin(), colour.end());
    Encode({y.data(), uv.data(), cellsWide * 2, cellsHigh * 2, cellsWide * 2}, frame);
}

void ReduceRaw10(const Bytes& bytes, const FrameGeometry& geometry, uint32_t factor, Frame* frame) {
    const uint32_t width = geometry.size.width / 2 / factor * 2 & ~3u;
    const uint32_t height = geometry.size.height / 2 / factor * 2;
    const size_t rowBytes = imaging::Raw10RowBytes(width);
    Bytes mosaic(rowBytes * height);
    for (const uint32_t parity : {0, 1}) {  // two rows of a mosaic's cells have two colours each
        const Plane rows = {&bytes[size_t{parity} * geometry.stride], size_t{geometry.stride} * 2,
                            geometry.size.width, 2, true};
        const auto samples = Average(rows, factor, width / 2, height / 2);
        for (uint32_t row = 0; row < height / 2; ++row) {
            imaging::PackRaw10Row(&samples[size_t{row} * width], width,
                                  &mosaic[(size_t{row} * 2 + parity) * rowBytes]);
        }
    }
    Bytes nv12(size_t{width} * height * 3 / 2);
    const imaging::MutableNv12View developed = {nv12.data(), nv12.data() + size_t{width} * height,
                                                width, height, width};
    const std::string problem =
            imaging::RawToNv12({mosaic.data(), width, height, rowBytes}, developed, kOneThread);
    if (problem.empty()) {
        Encode(developed, frame);
    } else {
        frame->note = "no reduced picture: " + problem;
    }
}

}  // namespace

void PictureOfFrame(const Bytes& bytes, const FrameGeometry& geometry, Frame* frame) {
    const uint32_t factor = (geometry.size.width + kThumbnailWidth - 1) / kThumbnailWidth;
    const bool isNv12 = geometry.format == FrameFormat::kNv12;
    (isNv12 ? ReduceNv12 : ReduceRaw10)(bytes, geometry, factor, frame);
}

void PictureOfJpeg(const Bytes& file, Frame* frame) {
    const auto jpeg = offlineframes::DecodeJpeg(file, frame->path, kThumbnailWidth);
    if (!jpeg.Ok()) {
        frame->note = jpeg.Error();
        return;
    }
    frame->width = jpeg.Value().fullSize.width;
    frame->height = jpeg.Value().fullSize.height;
    const offlineframes::Picture& picture = jpeg.Value().picture;
    const uint32_t width = picture.width & ~1u;
    const uint32_t height = picture.height & ~1u;
    const Bytes nv12 =
            offlineframes::EncodeNv12(offlineframes::CentreCrop(picture, {width, height}),
                                      {FrameFormat::kNv12, {width, height}, width, height}, {});
    Encode({nv12.data(), nv12.data() + size_t{width} * height, width, height, width}, frame);
    if (!frame->picture.empty()) {
        frame->note = "shown as stored: viewers turn the JPEG as its EXIF says";
    }
}

}  // namespace runreport
