// Geometry by the readers of frames, several files at a time.

#include "frames.h"

#include <offlineframes/file_io.h>
#include <offlineframes/frame_view.h>

#include <filesystem>
#include <thread>

namespace runreport {

namespace {

using offlineframes::FrameFormat;

const std::string kDeviceFolder = "/data/vendor/camera/";

// The host's path of a file that the tool named; empty when it is not below the device's folder, or
// when it is not known which folder that was.
std::string HostPath(const std::string& path, const std::string& dataFolder) {
    if (path.compare(0, kDeviceFolder.size(), kDeviceFolder) != 0) return "";
    if (dataFolder.empty() || path.find("/../") != std::string::npos) return "";
    return dataFolder + "/" + path.substr(kDeviceFolder.size());
}

void ExamineRaster(FrameFormat format, Frame* frame) {
    const auto geometry = offlineframes::ResolveGeometry(frame->path, format, {}, frame->bytes);
    const auto view = offlineframes::ViewFile(frame->path, {});
    if (!geometry.Ok() || !view.Ok()) {
        frame->note = geometry.Ok() ? view.Error() : geometry.Error();
        return;
    }
    frame->width = geometry.Value().size.width;
    frame->height = geometry.Value().size.height;
    frame->stride = geometry.Value().stride;
    frame->scanlines = geometry.Value().scanlines;
    const auto dump = offlineframes::ParseDumpName(frame->path);
    if (dump && !dump->scanlines) {
        frame->note = "scan lines as the file's size tells: its name does not";
    }
    SetPicture(view.Value().size, view.Value().rows, frame);
}

// As it is stored: not turned by its orientation.
void ExamineJpeg(Pictures pictures, Frame* frame) {
    constexpr uint32_t kLeastWidth = 800;  // of what it is reduced to at once
    const auto bytes = offlineframes::ReadFile(frame->path);
    if (!bytes.Ok()) {
        frame->note = bytes.Error();
        return;
    }
    auto jpeg = offlineframes::DecodeJpeg(bytes.Value(), frame->path, kLeastWidth);
    if (!jpeg.Ok()) {
        frame->note = jpeg.Error();
        return;
    }
    frame->width = jpeg.Value().fullSize.width;
    frame->height = jpeg.Value().fullSize.height;
    frame->pictureBytes = jpeg.Value().jpegBytes;
    frame->note = "shown as stored: viewers turn the JPEG as its EXIF says";
    offlineframes::Picture picture = std::move(jpeg).Value().picture;
    const offlineframes::PictureSize size = {picture.width, picture.height};
    if (pictures == Pictures::kReduced) {
        SetPicture(size, offlineframes::RowsOf(std::move(picture)), frame);
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
