// Reduces frames by averaging whole blocks of pixels, so that nothing aliases.

#include <glib.h>
#include <imaging/camera_physics.h>
#include <imaging/jpeg.h>
#include <imaging/raw10.h>
#include <offlineframes/frame_encoder.h>
#include <offlineframes/picture_file.h>

#include "frames.h"

namespace runreport {

namespace {

using offlineframes::Bytes;
using offlineframes::FrameFormat;
using offlineframes::FrameGeometry;
using offlineframes::Picture;

// Pictures are at most about this wide; frames are reduced by whole factors.
constexpr uint32_t kThumbnailWidth = 800;
constexpr int kQuality = 85;
constexpr size_t kJpegHeadRoom = 64 * 1024;
// One processor each: frames are reduced at the same time.
constexpr imaging::Execution kOneThread = {1, imaging::InstructionSet::kBaseline};

void Encode(const imaging::Nv12View& picture, Frame* frame) {
    Bytes jpeg(size_t{picture.width} * picture.height * 3 + kJpegHeadRoom);
    size_t size = 0;
    const std::string problem = imaging::EncodeJpeg(picture, {kQuality, 0}, jpeg.data(),
                                                    jpeg.size(), &size, kOneThread);
    if (!problem.empty()) {
        frame->note = "no reduced picture: " + problem;
        return;
    }
    gchar* const text = g_base64_encode(jpeg.data(), size);
    frame->picture = std::string("data:image/jpeg;base64,") + text;
    g_free(text);
    frame->pictureWidth = picture.width;
    frame->pictureHeight = picture.height;
}

// Of its even part.
void Encode(const Picture& picture, Frame* frame) {
    const uint32_t width = picture.width & ~1u, height = picture.height & ~1u;
    const Bytes nv12 =
            offlineframes::EncodeNv12(offlineframes::CentreCrop(picture, {width, height}),
                                      {FrameFormat::kNv12, {width, height}, width, height}, {});
    Encode({nv12.data(), nv12.data() + size_t{width} * height, width, height, width}, frame);
}

// Averages factor x factor samples of each interleaved channel to width x height cells.
Bytes Average(const uint8_t* plane, size_t stride, uint32_t width, uint32_t height,
              uint32_t channels, uint32_t factor) {
    Bytes out;
    std::vector<uint32_t> sums(size_t{width} * channels);
    const uint32_t area = factor * factor;
    for (uint32_t y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), area / 2);
        for (uint32_t i = 0; i < factor; ++i) {
            const uint8_t* sample = plane + (size_t{y} * factor + i) * stride;
            for (size_t cell = 0; cell < sums.size(); cell += channels) {
                for (uint32_t k = 0; k < factor; ++k) {
                    for (uint32_t c = 0; c < channels; ++c) sums[cell + c] += *sample++;
                }
            }
        }
        for (const uint32_t sum : sums) out.push_back(static_cast<uint8_t>(sum / area));
    }
    return out;
}

void ReduceNv12(const Bytes& bytes, const FrameGeometry& geometry, Frame* frame) {
    const uint32_t factor = (geometry.size.width + kThumbnailWidth - 1) / kThumbnailWidth;
    const uint32_t width = geometry.size.width / factor / 2;  // of the chroma plane
    const uint32_t height = geometry.size.height / factor / 2;
    const uint8_t* const chroma = &bytes[size_t{geometry.scanlines} * geometry.stride];
    const Bytes y = Average(bytes.data(), geometry.stride, width * 2, height * 2, 1, factor);
    const Bytes uv = Average(chroma, geometry.stride, width, height, 2, factor);
    Encode({y.data(), uv.data(), width * 2, height * 2, width * 2}, frame);
}

// Averages each colour of side x side pixels of the mosaic as linear light: no demosaicing is left
// to do.
Picture ReduceRaw10(const Bytes& bytes, const FrameGeometry& geometry) {
    const uint32_t wide = kThumbnailWidth * 2;
    const uint32_t side = (geometry.size.width + wide - 1) / wide * 2;
    const uint32_t pairs = side / 2 * (side / 2);  // of a green pixel each
    Picture picture(geometry.size.width / side, geometry.size.height / side);
    std::vector<uint16_t> row(geometry.size.width);
    std::vector<uint32_t> sums(size_t{picture.width} * 3);
    for (uint32_t y = 0; y < picture.height; ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        for (uint32_t line = y * side; line < (y + 1) * side; ++line) {
            imaging::UnpackRaw10Row(&bytes[size_t{line} * geometry.stride], geometry.size.width,
                                    row.data());
            const uint16_t* sample = row.data();
            for (size_t cell = 0; cell < sums.size(); cell += 3) {
                for (uint32_t x = 0; x < side; ++x) {
                    const imaging::Channel channel = imaging::MosaicChannel(x, line);
                    sums[cell + static_cast<size_t>(channel)] +=
                            static_cast<uint32_t>(imaging::LinearFromRaw(*sample++, channel));
                }
            }
        }
        for (size_t i = 0; i < sums.size(); ++i) {
            const uint32_t linear = sums[i] / (i % 3 == 1 ? pairs * 2 : pairs);
            picture.rgb[y * sums.size() + i] = imaging::ToneFromLinear(static_cast<int>(linear));
        }
    }
    return picture;
}

}  // namespace

void PictureOfFrame(const Bytes& bytes, const FrameGeometry& geometry, Frame* frame) {
    if (geometry.format == FrameFormat::kNv12) {
        ReduceNv12(bytes, geometry, frame);
    } else {
        Encode(ReduceRaw10(bytes, geometry), frame);
    }
}

void PictureOfJpeg(const Bytes& file, Frame* frame) {
    const auto jpeg = offlineframes::DecodeJpeg(file, frame->path, kThumbnailWidth);
    if (!jpeg.Ok()) {
        frame->note = jpeg.Error();
        return;
    }
    frame->width = jpeg.Value().fullSize.width;
    frame->height = jpeg.Value().fullSize.height;
    Encode(jpeg.Value().picture, frame);
    if (!frame->picture.empty()) {
        frame->note = "shown as stored: viewers turn the JPEG as its EXIF says";
    }
}

}  // namespace runreport
