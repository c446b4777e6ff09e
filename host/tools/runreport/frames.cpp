// Geometry by the readers of frames, several files at a time.

#include "frames.h"

#include <offlineframes/file_io.h>
#include <offlineframes/frame_geometry.h>

#include <filesystem>
#include <thread>

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

void ExamineRaster(FrameFormat format, Frame* frame, const Bytes& bytes) {
    const auto geometry =
            offlineframes::ResolveGeometry(frame->path, {format, {}, 0, 0}, bytes.size());
    if (!geometry.Ok()) {
        frame->note = geometry.Error();
        return;
    }
    frame->width = geometry.Value().size.width;
    frame->height = geometry.Value().size.height;
    frame->stride = geometry.Value().stride;
    frame->scanlines = geometry.Value().scanlines;
    PictureOfFrame(bytes, geometry.Value(), frame);
}

void Examine(Frame* frame) {
    const std::filesystem::path path = frame->path;
    std::error_code none;
    const uintmax_t size = std::filesystem::file_size(path, none);
    if (!none) frame->bytes = size;
    const auto format = offlineframes::FormatOfName(frame->path);
    const bool isJpeg = path.extension() == ".jpg";
    if (!format && !isJpeg) return;  // not a picture: its name and size are all there is
    frame->format = isJpeg ? "JPEG" : *format == FrameFormat::kRaw10 ? "RAW10" : "NV12";
    const auto bytes = offlineframes::ReadFile(frame->path);
    if (!bytes.Ok()) {
        frame->note = bytes.Error();
    } else if (isJpeg) {
        PictureOfJpeg(bytes.Value(), frame);
    } else {
        ExamineRaster(*format, frame, bytes.Value());
    }
}

}  // namespace

void ReadFrames(const std::vector<runlog::Source>& sources, const Inputs& inputs, Report* report) {
    for (const runlog::Source& source : sources) {
        Frame frame;
        frame.path = HostPath(source.path, inputs.dataFolder);
        frame.timesOpened = source.timesOpened;
        frame.leftUnread = source.leftUnread;
        if (!frame.path.empty()) report->sources.push_back(std::move(frame));
    }
    for (const std::string& path : inputs.dumps) report->dumps.emplace_back().path = path;
    std::vector<std::thread> threads;
    for (Frame& frame : report->sources) threads.emplace_back(Examine, &frame);
    for (Frame& frame : report->dumps) threads.emplace_back(Examine, &frame);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace runreport
