// Reduces a picture by averaging whole blocks of pixels, so that nothing aliases.

#include <glib.h>
#include <imaging/jpeg.h>
#include <offlineframes/frame_encoder.h>

#include "frames.h"

namespace runreport {

namespace {

using offlineframes::Bytes;
using offlineframes::Picture;

constexpr uint32_t kThumbnailWidth = 800;  // at most about this; reduced by whole factors
constexpr int kQuality = 85;
constexpr size_t kJpegHeadRoom = 64 * 1024;

// To an even size.
Picture Reduce(offlineframes::PictureSize size, const offlineframes::RowSource& rows) {
    const uint32_t factor = (size.width + kThumbnailWidth - 1) / kThumbnailWidth;
    Picture picture(size.width / factor & ~1u, size.height / factor & ~1u);
    std::vector<uint8_t> row(size_t{size.width} * 3);
    std::vector<uint16_t> columns(row.size());  // which vector code adds up
    for (uint32_t y = 0; y < picture.height; ++y) {
        std::fill(columns.begin(), columns.end(), 0);
        for (uint32_t i = 0; i < factor; ++i) {
            rows(y * factor + i, row.data());
            for (size_t x = 0; x < row.size(); ++x) columns[x] += row[x];
        }
        for (uint32_t x = 0; x < picture.width * 3; ++x) {
            uint32_t sum = factor * factor / 2;
            for (uint32_t k = 0; k < factor; ++k) sum += columns[(x / 3 * factor + k) * 3 + x % 3];
            picture.Pixel(0, y)[x] = static_cast<uint8_t>(sum / (factor * factor));
        }
    }
    return picture;
}

}  // namespace

void SetPicture(offlineframes::PictureSize size, const offlineframes::RowSource& rows,
                Frame* frame) {
    const Picture picture = Reduce(size, rows);
    const auto [width, height] = std::pair(picture.width, picture.height);
    const Bytes nv12 = offlineframes::EncodeNv12(
            picture, {offlineframes::FrameFormat::kNv12, {width, height}, width, height}, {});
    Bytes jpeg(nv12.size() * 2 + kJpegHeadRoom);
    size_t bytes = 0;
    const std::string problem = imaging::EncodeJpeg(
            {nv12.data(), nv12.data() + size_t{width} * height, width, height, width},
            {kQuality, 0}, jpeg.data(), jpeg.size(), &bytes);
    if (!problem.empty()) {
        frame->note = "no reduced picture: " + problem;
        return;
    }
    gchar* const text = g_base64_encode(jpeg.data(), bytes);
    frame->picture = std::string("data:image/jpeg;base64,") + text;
    g_free(text);
}

}  // namespace runreport
