// Reduces a picture by averaging whole blocks of pixels, so that nothing aliases.

#include <glib.h>
#include <imaging/jpeg.h>

#include "frames.h"

namespace runreport {

namespace {

using offlineframes::Bytes;

constexpr uint32_t kThumbnailWidth = 800;  // at most about this; reduced by whole factors
constexpr int kQuality = 85;
constexpr size_t kJpegHeadRoom = 64 * 1024;

// Averages factor x factor samples of each interleaved channel to width x height cells, rows back
// to back.
Bytes Average(const uint8_t* plane, size_t strideBytes, uint32_t width, uint32_t height,
              uint32_t channels, uint32_t factor) {
    Bytes cells;
    std::vector<uint16_t> columns(size_t{width} * factor * channels);  // which vector code adds up
    for (uint32_t y = 0; y < height; ++y) {
        std::fill(columns.begin(), columns.end(), 0);
        for (uint32_t i = 0; i < factor; ++i, plane += strideBytes) {
            for (size_t x = 0; x < columns.size(); ++x) columns[x] += plane[x];
        }
        for (size_t x = 0; x < size_t{width} * channels; ++x) {
            uint32_t sum = factor * factor / 2;
            const size_t first = x / channels * factor * channels + x % channels;
            for (uint32_t k = 0; k < factor; ++k) sum += columns[first + k * channels];
            cells.push_back(static_cast<uint8_t>(sum / (factor * factor)));
        }
    }
    return cells;
}

}  // namespace

void SetPicture(const imaging::Nv12View& picture, Frame* frame) {
    const uint32_t factor = (picture.width + kThumbnailWidth - 1) / kThumbnailWidth;
    const uint32_t width = picture.width / factor & ~1u;
    const uint32_t height = picture.height / factor & ~1u;
    const Bytes y = Average(picture.y, picture.strideBytes, width, height, 1, factor);
    const Bytes uv = Average(picture.uv, picture.strideBytes, width / 2, height / 2, 2, factor);
    Bytes jpeg(y.size() * 3 + kJpegHeadRoom);
    size_t bytes = 0;
    const std::string problem =
            imaging::EncodeJpeg({y.data(), uv.data(), width, height, width}, {kQuality, 0},
                                jpeg.data(), jpeg.size(), &bytes);
    if (!problem.empty()) {
        frame->note = "no reduced picture: " + problem;
        return;
    }
    gchar* const text = g_base64_encode(jpeg.data(), bytes);
    frame->picture = std::string("data:image/jpeg;base64,") + text;
    g_free(text);
}

}  // namespace runreport
