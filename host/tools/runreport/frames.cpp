// Geometry by the readers of frames, several files at a time; and pictures that are reduced by
// averaging whole blocks of pixels, so that nothing aliases.

#include "frames.h"

#include <glib.h>
#include <imaging/jpeg.h>
#include <offlineframes/file_io.h>
#include <offlineframes/frame_encoder.h>
#include <offlineframes/frame_view.h>
#include <offlineframes/picture_file.h>

#include <filesystem>
#include <thread>

namespace runreport {

namespace {

using offlineframes::Bytes;
using offlineframes::FrameFormat;
using offlineframes::Picture;

const std::string kDeviceFolder = "/data/vendor/camera/";

// The host's path of a file that the tool named; empty when it is not below the device's folder, or
// when it is not known which folder that was.
std::string HostPath(const std::string& path, const std::string& dataFolder) {
    if (path.compare(0, kDeviceFolder.size(), kDeviceFolder) != 0) return "";
    if (dataFolder.empty() || path.find("/../") != std::string::npos) return "";
    return dataFolder + "/" + path.substr(kDeviceFolder.size());
}

constexpr uint32_t kThumbnailWidth = 800;  // at most about this; reduced by whole factors
constexpr int kQuality = 85;
constexpr size_t kJpegHeadRoom = 64 * 1024;

// To an even size.
Picture Reduce(offlineframes::PictureSize size, const offlineframes::RowSource& rows) {
    const uint32_t factor = (size.width + kThumbnailWidth - 1) / kThumbnailWidth;
    Picture picture({size.width / factor & ~1u, size.height / factor & ~1u});
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

// Sets the frame's reduced picture, or a note that says why it has none.
void SetPicture(offlineframes::PictureSize size, const offlineframes::RowSource& rows,
                Frame* frame) {
    const Picture picture = Reduce(size, rows);
    const auto [width, height] = std::pair(picture.width, picture.height);
    const Bytes nv12 = offlineframes::EncodeNv12(
            picture, {FrameFormat::kNv12, {width, height}, width, height}, {});
    Bytes jpeg(nv12.size() * 2 + kJpegHeadRoom);
    const auto bytes = imaging::EncodeJpeg(
            {nv12.data(), nv12.data() + size_t{width} * height, width, height, width},
            {kQuality, 0}, jpeg.data(), jpeg.size());
    if (!bytes.Ok()) {
        frame->note = "no reduced picture: " + bytes.Error();
        return;
    }
    gchar* const text = g_base64_encode(jpeg.data(), bytes.Value());
    frame->picture = std::string("data:image/jpeg;base64,") + text;
    g_free(text);
}

void ExamineRaster(FrameFormat format, Frame* frame) {
    const auto geometry =
            offlineframes::ResolveGeometry(frame->path, {format, {}, 0, 0}, frame->bytes);
    const auto view = offlineframes::ViewFile(frame->path, {});
    if (!geometry.Ok() || !view.Ok()) {
        frame->note = geometry.Ok() ? view.Error() : geometry.Error();
        return;
    }
    frame->width = geometry.Value().size.width;
    frame->height = geometry.Value().size.height;
    frame->stride = geometry.Value().stride;
    frame->scanlines = geometry.Value().scanlines;
    if (offlineframes::NumberInDumpName(frame->path, "Scanline") == 0u) {
        frame->note = "scan lines as the file's size tells: its name does not";
    }
    SetPicture(view.Value().size, view.Value().rows, frame);
}

// As it is stored: not turned by its orientation.
void ExamineJpeg(Pictures pictures, Frame* frame) {
    const auto bytes = offlineframes::ReadFile(frame->path);
    if (!bytes.Ok()) {
        frame->note = bytes.Error();
        return;
    }
    auto jpeg = offlineframes::DecodeJpeg(bytes.Value(), frame->path, kThumbnailWidth);
    if (!jpeg.Ok()) {
        frame->note = jpeg.Error();
        return;
    }
    frame->width = jpeg.Value().fullSize.width;
    frame->height = jpeg.Value().fullSize.height;
    frame->pictureBytes = jpeg.Value().jpegBytes;
    frame->note = "shown as stored: viewers turn the JPEG as its EXIF says";
    Picture picture = std::move(jpeg).Value().picture;
    const offlineframes::PictureSize size = {picture.width, picture.height};
    if (pictures == Pictures::kReduced) {
        const auto rows = [&](uint32_t y, uint8_t* rgb) {
            std::copy_n(picture.Pixel(0, y), size_t{3} * size.width, rgb);
        };
        SetPicture(size, rows, frame);
    }
}

// Without pictures only a JPEG is read, which may be smaller than its file.
void Examine(Pictures pictures, Frame* frame) {
    const std::filesystem::path path = frame->path;
    std::error_code none;
    const uintmax_t size = std::filesystem::file_size(path, none);
    if (!none) frame->bytes = size;
    const auto format = offlineframes::FormatOfName(frame->path);
    const bool isJpeg = path.extension() == ".jpg";
    if (!format && !isJpeg) return;  // not a picture: its name and size are all there is
    frame->format = isJpeg ? "JPEG" : *format == FrameFormat::kRaw10 ? "RAW10" : "NV12";
    if (isJpeg) {
        ExamineJpeg(pictures, frame);
    } else if (pictures == Pictures::kReduced) {
        ExamineRaster(*format, frame);
    }
}

}  // namespace

void ReadFrames(const Inputs& inputs, Pictures pictures, Report* report) {
    for (const runlog::Source& source : report->facts.sources) {
        Frame frame;
        frame.path = HostPath(source.path, inputs.dataFolder);
        frame.timesOpened = source.timesOpened;
        frame.leftUnread = source.leftUnread;
        if (!frame.path.empty()) report->sources.push_back(std::move(frame));
    }
    for (const std::string& path : inputs.dumps) report->dumps.emplace_back().path = path;
    std::vector<std::thread> threads;
    for (Frame& frame : report->sources) threads.emplace_back(Examine, pictures, &frame);
    for (Frame& frame : report->dumps) threads.emplace_back(Examine, pictures, &frame);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace runreport
