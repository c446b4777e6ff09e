// Box-averages planes and mosaics, then goes the way of a full frame: develop, encode.

#include "thumbnail.h"

#include <imaging/b2y.h>
#include <imaging/jpeg.h>
#include <imaging/raw10.h>
#include <offlineframes/frame_encoder.h>
#include <offlineframes/picture_file.h>
#include <offlineframes/resample.h>

#include <algorithm>
#include <functional>

namespace runreport {

namespace {

using offlineframes::Bytes;
using offlineframes::FrameFormat;
using offlineframes::FrameGeometry;

constexpr int kQuality = 85;
constexpr size_t kJpegHeadRoom = 64 * 1024;
constexpr char kTooSmall[] = "no reduced picture: the frame is too small";
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

// Averages factor x factor samples of each of `channels` interleaved ones to `width` x `height`,
// rows back to back; `load` copies a row of the plane.
std::vector<uint16_t> Average(uint32_t factor, uint32_t width, uint32_t height, uint32_t channels,
                              const std::function<void(uint32_t row, uint16_t* out)>& load,
                              size_t samplesOfRow) {
    std::vector<uint16_t> row(samplesOfRow), out;
    std::vector<uint32_t> sums(size_t{width} * factor * channels);
    out.reserve(size_t{width} * height * channels);
    const uint32_t area = factor * factor;
    for (uint32_t y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        for (uint32_t i = 0; i < factor; ++i) {
            load(y * factor + i, row.data());
            for (size_t x = 0; x < sums.size(); ++x) sums[x] += row[x];
        }
        for (size_t x = 0; x < size_t{width} * channels; ++x) {
            uint32_t sum = area / 2;
            const uint32_t* const first = &sums[x / channels * factor * channels + x % channels];
            for (uint32_t i = 0; i < factor; ++i) sum += first[size_t{i} * channels];
            out.push_back(static_cast<uint16_t>(sum / area));
        }
    }
    return out;
}

void ReduceNv12(const Bytes& bytes, const FrameGeometry& geometry, Frame* frame) {
    const uint32_t factor = (geometry.size.width + kThumbnailWidth - 1) / kThumbnailWidth;
    const uint32_t width = geometry.size.width / factor & ~1u;
    const uint32_t height = geometry.size.height / factor & ~1u;
    if (width == 0 || height == 0) {
        frame->note = kTooSmall;
        return;
    }
    const auto plane = [&](size_t start, uint32_t columns, uint32_t rows, uint32_t channels) {
        const auto load = [&](uint32_t row, uint16_t* out) {
            const uint8_t* const source = &bytes[start + size_t{row} * geometry.stride];
            std::copy(source, source + geometry.size.width, out);
        };
        const auto samples = Average(factor, columns, rows, channels, load, geometry.size.width);
        return Bytes(samples.begin(), samples.end());
    };
    const Bytes y = plane(0, width, height, 1);
    const Bytes uv = plane(size_t{geometry.stride} * geometry.scanlines, width / 2, height / 2, 2);
    Encode({y.data(), uv.data(), width, height, width}, frame);
}

void ReduceRaw10(const Bytes& bytes, const FrameGeometry& geometry, Frame* frame) {
    const uint32_t factor = (geometry.size.width + kThumbnailWidth - 1) / kThumbnailWidth;
    const uint32_t width = geometry.size.width / 2 / factor * 2 & ~3u;
    const uint32_t height = geometry.size.height / 2 / factor * 2;
    if (width == 0 || height == 0) {
        frame->note = kTooSmall;
        return;
    }
    const size_t rowBytes = imaging::Raw10RowBytes(width);
    Bytes mosaic(rowBytes * height);
    for (const uint32_t parity : {0, 1}) {  // a row of cells has two colours in each of two rows
        const auto load = [&](uint32_t row, uint16_t* out) {
            const size_t start = (size_t{row} * 2 + parity) * geometry.stride;
            imaging::UnpackRaw10Row(&bytes[start], geometry.size.width, out);
        };
        const auto samples = Average(factor, width / 2, height / 2, 2, load, geometry.size.width);
        for (uint32_t row = 0; row < height / 2; ++row) {
            imaging::PackRaw10Row(&samples[size_t{row} * width], width,
                                  &mosaic[(size_t{row} * 2 + parity) * rowBytes]);
        }
    }
    Bytes nv12(size_t{width} * height * 3 / 2);
    const imaging::MutableNv12View developed = {nv12.data(), &nv12[size_t{width} * height], width,
                                                height, width};
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
    if (geometry.format == FrameFormat::kNv12) {
        ReduceNv12(bytes, geometry, frame);
    } else {
        ReduceRaw10(bytes, geometry, frame);
    }
}

void PictureOfJpeg(const Bytes& file, Frame* frame) {
    const auto jpeg = offlineframes::decodeJpeg(file, frame->path, kThumbnailWidth);
    if (!jpeg.ok()) {
        frame->note = jpeg.error();
        return;
    }
    frame->width = jpeg.value().width;
    frame->height = jpeg.value().height;
    const offlineframes::Picture& picture = jpeg.value().picture;
    const uint32_t width = picture.width & ~1u;
    const uint32_t height = picture.height & ~1u;
    if (width == 0 || height == 0) {
        frame->note = kTooSmall;
        return;
    }
    const Bytes nv12 =
            offlineframes::encodeNv12(offlineframes::centreCrop(picture, {width, height}),
                                      {FrameFormat::kNv12, {width, height}, width, height}, {});
    Encode({nv12.data(), &nv12[size_t{width} * height], width, height, width}, frame);
    if (!frame->picture.empty()) {
        frame->note = "shown as stored: viewers turn the JPEG as its EXIF says";
    }
}

}  // namespace runreport
