// Box-averages planes and mosaics, then goes the way of a full frame: develop, encode.

#include <imaging/b2y.h>
#include <imaging/jpeg.h>
#include <imaging/raw10.h>
#include <offlineframes/frame_encoder.h>
#include <offlineframes/picture_file.h>

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
    const auto size =
            imaging::EncodeJpeg(picture, {kQuality, 0}, jpeg.data(), jpeg.size(), kOneThread);
    if (!size.Ok()) {
        frame->note = "no reduced picture: " + size.Error();
        return;
    }
    jpeg.resize(size.Value());
    frame->picture = "data:image/jpeg;base64," + Base64(jpeg);
    frame->pictureWidth = picture.width;
    frame->pictureHeight = picture.height;
}

// Averages factor x factor samples of each interleaved channel to width x height cells, rows back
// to back. `row(y)` gives the samples of a row, until it is called again.
template <class Row>
std::vector<uint16_t> Average(uint32_t width, uint32_t height, uint32_t channels, uint32_t factor,
                              Row row) {
    std::vector<uint16_t> out;
    out.reserve(size_t{width} * height * channels);
    std::vector<uint32_t> sums(size_t{width} * channels);
    const uint32_t area = factor * factor;
    for (uint32_t y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), area / 2);
        for (uint32_t i = 0; i < factor; ++i) {
            const auto* sample = row(y * factor + i);
            for (size_t cell = 0; cell < sums.size(); cell += channels) {
                for (uint32_t k = 0; k < factor; ++k) {
                    for (uint32_t c = 0; c < channels; ++c) sums[cell + c] += *sample++;
                }
            }
        }
        for (const uint32_t sum : sums) out.push_back(static_cast<uint16_t>(sum / area));
    }
    return out;
}

void ReduceNv12(const Bytes& bytes, const FrameGeometry& geometry, uint32_t factor, Frame* frame) {
    const auto rowsFrom = [&](size_t first) {
        return [&, first](uint32_t y) { return &bytes[(first + y) * geometry.stride]; };
    };
    const uint32_t cellsWide = geometry.size.width / factor / 2;
    const uint32_t cellsHigh = geometry.size.height / factor / 2;
    const auto luma = Average(cellsWide * 2, cellsHigh * 2, 1, factor, rowsFrom(0));
    const auto colour = Average(cellsWide, cellsHigh, 2, factor, rowsFrom(geometry.scanlines));
    const Bytes y(luma.begin(), luma.end()), uv(colour.begin(), colour.end());
    Encode({y.data(), uv.data(), cellsWide * 2, cellsHigh * 2, cellsWide * 2}, frame);
}

void ReduceRaw10(const Bytes& bytes, const FrameGeometry& geometry, uint32_t factor, Frame* frame) {
    const uint32_t width = geometry.size.width / 2 / factor * 2 & ~3u;
    const uint32_t height = geometry.size.height / 2 / factor * 2;
    const size_t rowBytes = imaging::Raw10RowBytes(width);
    Bytes mosaic(rowBytes * height);
    std::vector<uint16_t> unpacked(geometry.size.width);
    for (const uint32_t parity : {0, 1}) {  // two rows of a mosaic's cells have two colours each
        const auto samples = Average(width / 2, height / 2, 2, factor, [&](uint32_t y) {
            imaging::UnpackRaw10Row(&bytes[(size_t{y} * 2 + parity) * geometry.stride],
                                    geometry.size.width, unpacked.data());
            return unpacked.data();
        });
        for (uint32_t row = 0; row < height / 2; ++row) {
            imaging::PackRaw10Row(&samples[size_t{row} * width], width,
                                  &mosaic[(size_t{row} * 2 + parity) * rowBytes]);
        }
    }
    Bytes nv12(size_t{width} * height * 3 / 2);
    const imaging::MutableNv12View developed = {nv12.data(), nv12.data() + size_t{width} * height,
                                                width, height, width};
    const auto done =
            imaging::RawToNv12({mosaic.data(), width, height, rowBytes}, developed, kOneThread);
    if (done.Ok()) {
        Encode(developed, frame);
    } else {
        frame->note = "no reduced picture: " + done.Error();
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
