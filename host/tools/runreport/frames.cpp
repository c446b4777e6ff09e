// Geometry by the readers of frames, several files at a time; and pictures that are reduced by
// averaging whole blocks of pixels, so that nothing aliases.

#include <glib.h>
#include <imaging/jpeg.h>
#include <offlineframes/frame_encoder.h>
#include <offlineframes/frame_view.h>
#include <offlineframes/picture_file.h>

#include <filesystem>
#include <thread>

#include "report.h"

namespace runreport {

namespace {

using offlineframes::Bytes;
using offlineframes::FrameFormat;

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

// Averages factor x factor samples of each interleaved channel to width x height cells, rows back
// to back.
Bytes Average(const uint8_t* plane, size_t strideBytes, uint32_t width, uint32_t height,
              uint32_t channels, uint32_t factor) {
    Bytes cells;
    cells.reserve(size_t{width} * height * channels);
    std::vector<uint16_t> columns(size_t{width} * factor * channels);  // sums; the loop vectorises
    for (uint32_t y = 0; y < height; ++y) {
        std::fill(columns.begin(), columns.end(), 0);
        for (uint32_t i = 0; i < factor; ++i, plane += strideBytes) {
            for (size_t x = 0; x < columns.size(); ++x) columns[x] += plane[x];
        }
        for (const uint16_t* cell = columns.data(); cell != columns.data() + columns.size();
             cell += size_t{factor} * channels) {
            for (uint32_t c = 0; c < channels; ++c) {
                uint32_t sum = factor * factor / 2;
                for (uint32_t k = 0; k < factor; ++k) sum += cell[k * channels + c];
                cells.push_back(static_cast<uint8_t>(sum / (factor * factor)));
            }
        }
    }
    return cells;
}

// Sets the frame's reduced picture, or a note that says why it has none.
void SetPicture(const offlineframes::Nv12Frame& nv12, Frame* frame) {
    const imaging::Nv12View picture = nv12.View();
    const uint32_t factor = (picture.width + kThumbnailWidth - 1) / kThumbnailWidth;
    const uint32_t width = picture.width / factor & ~1u;
    const uint32_t height = picture.height / factor & ~1u;
    const Bytes y = Average(picture.y, picture.strideBytes, width, height, 1, factor);
    const Bytes uv = Average(picture.uv, picture.strideBytes, width / 2, height / 2, 2, factor);
    Bytes jpeg(y.size() * 3 + kJpegHeadRoom);
    const auto bytes = imaging::EncodeJpeg({y.data(), uv.data(), width, height, width},
                                           {kQuality, 0}, jpeg.data(), jpeg.size());
    if (!bytes.Ok()) {
        frame->note = "no reduced picture: " + bytes.Error();
        return;
    }
    gchar* const text = g_base64_encode(jpeg.data(), bytes.Value());
    frame->picture = std::string("data:image/jpeg;base64,") + text;
    g_free(text);
}

void ExamineRaster(Bytes bytes, FrameFormat format, Frame* frame) {
    const auto resolved =
            offlineframes::ResolveGeometry(frame->path, {format, {}, 0, 0}, bytes.size());
    if (!resolved.Ok()) {
        frame->note = resolved.Error();
        return;
    }
    const offlineframes::FrameGeometry& geometry = resolved.Value();
    frame->width = geometry.size.width;
    frame->height = geometry.size.height;
    frame->stride = geometry.stride;
    frame->scanlines = geometry.scanlines;
    if (offlineframes::NumberInDumpName(frame->path, "Scanline") == 0u) {
        frame->note = "scan lines as the file's size tells: its name does not";
    }
    SetPicture(offlineframes::AsNv12(std::move(bytes), geometry), frame);
}

// As it is stored: not turned by its orientation.
void ExamineJpeg(const Bytes& bytes, Pictures pictures, Frame* frame) {
    const auto jpeg = offlineframes::DecodePicture(bytes, frame->path, kThumbnailWidth);
    if (!jpeg.Ok()) {
        frame->note = jpeg.Error();
        return;
    }
    frame->width = jpeg.Value().fullSize.width;
    frame->height = jpeg.Value().fullSize.height;
    frame->pictureBytes = jpeg.Value().jpegBytes;
    frame->note = "shown as stored: viewers turn the JPEG as its EXIF says";
    if (pictures != Pictures::kReduced) return;
    const offlineframes::Picture& picture = jpeg.Value().picture;
    const uint32_t width = picture.width & ~1u, height = picture.height & ~1u;
    const offlineframes::FrameGeometry even = {FrameFormat::kNv12, {width, height}, width, height};
    SetPicture({offlineframes::EncodeNv12(CentreCrop(picture, even.size), even, {}), even}, frame);
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
    if (!isJpeg && pictures != Pictures::kReduced) return;
    auto bytes = offlineframes::ReadFile(frame->path);
    if (!bytes.Ok()) {
        frame->note = bytes.Error();
    } else if (isJpeg) {
        ExamineJpeg(bytes.Value(), pictures, frame);
    } else {
        ExamineRaster(std::move(bytes).Value(), *format, frame);
    }
}

// A folder from elsewhere may have dumps of other modes, too.
bool MayBeOfRun(const std::string& path, const Report& report) {
    const std::string& mode = report.facts.mode;
    return report.run.place != Place::kImported || mode.empty() ||
           path.find("_" + mode + "_") != path.npos;
}

}  // namespace

void ReadFrames(const Inputs& inputs, Pictures pictures, Report* report) {
    for (const runlog::Source& source : report->facts.sources) {
        Frame frame;
        frame.path = HostPath(source.path, inputs.dataFolder);
        if (report->run.place == Place::kImported && !std::filesystem::exists(frame.path)) {
            const size_t name = source.path.rfind('/') + 1;
            frame.path = inputs.dataFolder + "/" + source.path.substr(name);
        }
        frame.timesOpened = source.timesOpened;
        frame.leftUnread = source.leftUnread;
        if (!frame.path.empty()) report->sources.push_back(std::move(frame));
    }
    for (const std::string& path : inputs.dumps) {
        if (MayBeOfRun(path, *report)) report->dumps.emplace_back().path = path;
    }
    std::vector<std::thread> threads;
    for (Frame& frame : report->sources) threads.emplace_back(Examine, pictures, &frame);
    for (Frame& frame : report->dumps) threads.emplace_back(Examine, pictures, &frame);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace runreport
