// Sources by the tool's log; geometry by the readers of frames.

#include "frames.h"

#include <offlineframes/file_io.h>
#include <offlineframes/frame_view.h>
#include <stdio.h>
#include <sys/stat.h>

#include <algorithm>
#include <thread>

#include "base64.h"
#include "thumbnail.h"

namespace runreport {

namespace {

using offlineframes::Bytes;
using offlineframes::FrameFormat;
using offlineframes::FrameGeometry;
using offlineframes::Result;

const std::string kDeviceFolder = "/data/vendor/camera/";

// The host's path of a file that the tool named; empty when it is not below the device's folder, or
// when it is not known which folder that was.
std::string hostPath(const std::string& path, const std::string& dataFolder) {
    if (path.compare(0, kDeviceFolder.size(), kDeviceFolder) != 0) return "";
    if (dataFolder.empty() || path.find("/../") != std::string::npos) return "";
    return dataFolder + "/" + path.substr(kDeviceFolder.size());
}

bool endsWith(const std::string& text, const std::string& ending) {
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

void setPicture(const Result<Thumbnail>& thumbnail, Frame* frame) {
    if (!thumbnail.Ok()) {
        frame->note = thumbnail.Error();
        return;
    }
    frame->picture = "data:image/jpeg;base64," + base64(thumbnail.Value().jpeg);
    frame->pictureWidth = thumbnail.Value().width;
    frame->pictureHeight = thumbnail.Value().height;
}

void examineRaster(FrameFormat format, Frame* frame, const Bytes& bytes) {
    const Result<FrameGeometry> geometry =
            offlineframes::resolveGeometry(frame->path, format, {}, bytes.size());
    if (!geometry.Ok()) {
        frame->note = geometry.Error();
        return;
    }
    frame->width = geometry.Value().size.width;
    frame->height = geometry.Value().size.height;
    frame->stride = geometry.Value().stride;
    frame->scanlines = geometry.Value().scanlines;
    setPicture(thumbnailOfFrame(bytes, geometry.Value()), frame);
}

void examineJpeg(Frame* frame, const Bytes& bytes) {
    offlineframes::PictureSize size;
    setPicture(thumbnailOfJpeg(bytes, frame->path, &size), frame);
    frame->width = size.width;
    frame->height = size.height;
    if (!frame->picture.empty()) {
        frame->note = "shown as stored: viewers turn the JPEG as its EXIF says";
    }
}

void examine(Frame* frame) {
    const bool raw = endsWith(frame->path, ".raw");
    const bool yuv = endsWith(frame->path, ".yuv");
    const bool jpeg = endsWith(frame->path, ".jpg");
    frame->format = raw ? "RAW10" : yuv ? "NV12" : jpeg ? "JPEG" : "";
    struct stat info = {};
    if (stat(frame->path.c_str(), &info) == 0) frame->bytes = static_cast<uint64_t>(info.st_size);
    if (frame->format.empty()) return;  // not a picture: its name and size are all there is
    const Result<Bytes> bytes = offlineframes::readFile(frame->path);
    if (!bytes.Ok()) {
        frame->note = bytes.Error();
    } else if (jpeg) {
        examineJpeg(frame, bytes.Value());
    } else {
        examineRaster(raw ? FrameFormat::kRaw10 : FrameFormat::kNv12, frame, bytes.Value());
    }
}

}  // namespace

std::vector<Frame> findSources(const std::vector<LogLine>& log, const std::string& dataFolder) {
    const std::string opens = ": open input file ";
    std::vector<Frame> sources;
    Frame* last = nullptr;
    for (const LogLine& line : log) {
        if (line.ofDevice) continue;
        const size_t at = line.message.find(opens);
        unsigned rows = 1;
        if (at != std::string::npos) {
            const std::string path = hostPath(line.message.substr(at + opens.size()), dataFolder);
            if (path.empty()) continue;
            auto found = std::find_if(sources.begin(), sources.end(),
                                      [&](const Frame& known) { return known.path == path; });
            if (found == sources.end()) {
                sources.emplace_back().path = path;
                found = sources.end() - 1;
            }
            last = &*found;
            ++last->timesOpened;
        } else if (last != nullptr &&
                   sscanf(line.message.c_str(), "%*[A-Za-z]: f_wxf_h %*ux%9u", &rows) == 1) {
            last->leftUnread = rows == 0;
        }
    }
    return sources;
}

void examineFrames(std::vector<Frame*> frames) {
    std::vector<std::thread> threads;
    for (Frame* const frame : frames) threads.emplace_back(examine, frame);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace runreport
