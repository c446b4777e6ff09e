// Makes the source files and the metadata dump.

#include "source_set.h"

#include <errno.h>
#include <string.h>
#include <sys/stat.h>

#include "chart.h"
#include "file_io.h"
#include "frame_encoder.h"
#include "metadata_dump.h"
#include "resample.h"

namespace offlineframes {
namespace {

constexpr PictureSize kYuvSize = {4000, 3000};
constexpr PictureSize kFaceSize = {640, 480};

// The two large frames share one picture, drawn when the first of them is needed.
class Scene {
  public:
    explicit Scene(const std::optional<Picture>& photo) : mPhoto(photo) {}

    Bytes raw() {
        const FrameGeometry geometry = allocatorGeometry(FrameFormat::kRaw10, kSensorSize);
        if (mPhoto) return encodeRaw10(sensor(), geometry, {}, std::nullopt);
        return encodeRaw10(sensor(), geometry, {}, chartOnSensor(kSensorSize));
    }
    Bytes yuv() {
        return encodeNv12(centreCrop(sensor(), kYuvSize),
                          allocatorGeometry(FrameFormat::kNv12, kYuvSize), {});
    }
    Bytes face() {
        const Picture picture = mPhoto ? fitPicture(*mPhoto, kFaceSize)
                                       : drawVisibleChart(chartOfVisible(kFaceSize));
        return encodeNv12(picture, allocatorGeometry(FrameFormat::kNv12, kFaceSize), {});
    }

  private:
    const Picture& sensor() {
        if (mSensor.rgb.empty()) {
            mSensor = mPhoto ? fitPicture(*mPhoto, kSensorSize)
                             : drawSensorChart(chartOnSensor(kSensorSize));
        }
        return mSensor;
    }

    const std::optional<Picture>& mPhoto;
    Picture mSensor;
};

// Makes one folder; its parent must exist. An existing folder is fine.
Result<Done> makeFolder(const std::string& path) {
    if (mkdir(path.c_str(), 0777) == 0) return Done{};
    const int reason = errno;
    struct stat info = {};
    if (reason == EEXIST && stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) return Done{};
    return Failure{path + ": cannot make the folder: " + strerror(reason)};
}

bool exists(const std::string& path) {
    struct stat info = {};
    return lstat(path.c_str(), &info) == 0;
}

// Makes one file unless it is there; adds what was done to `lines`.
template <class Maker>
Result<Done> makeFile(const std::string& path, std::string* lines, Maker make) {
    if (exists(path)) {
        *lines += path + ": exists, kept\n";
        return Done{};
    }
    Result<Bytes> bytes = make();
    if (!bytes.ok()) return bytes.failure();
    const Result<Done> written = writeFile(path, bytes.value(), Existing::kKeep);
    if (!written.ok()) return written;
    *lines += path + ": made, " + std::to_string(bytes.value().size()) + " bytes\n";
    return Done{};
}

}  // namespace

Result<std::string> makeSources(const std::string& folder, const std::optional<Picture>& photo) {
    const std::string frames = folder + "/offlinecameratest";
    const std::string metadata = folder + "/metadata";
    for (const std::string& path : {folder, frames, metadata}) {
        const Result<Done> made = makeFolder(path);
        if (!made.ok()) return made.failure();
    }
    Scene scene(photo);
    std::string lines;
    const auto raw = [&]() -> Result<Bytes> { return scene.raw(); };
    const auto yuv = [&]() -> Result<Bytes> { return scene.yuv(); };
    const auto face = [&]() -> Result<Bytes> { return scene.face(); };
    Result<Done> step = makeFile(frames + "/4096_3072_RAW10.raw", &lines, raw);
    if (step.ok()) step = makeFile(frames + "/4000_3000_NV12.yuv", &lines, yuv);
    if (step.ok()) step = makeFile(frames + "/mmf_fd.yuv", &lines, face);
    if (step.ok()) step = makeFile(metadata + "/original_dump.bin", &lines, makeMetadataDump);
    if (!step.ok()) return step.failure();
    return lines;
}

}  // namespace offlineframes
