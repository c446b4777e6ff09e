// Makes the source files and the metadata dump.

#include "source_set.h"

#include <system/camera_metadata.h>

#include <filesystem>
#include <optional>

#include "frame_encoder.h"

namespace offlineframes {
namespace {

namespace fs = std::filesystem;

// One packed camera metadata blob with the JPEG settings of a request; no thumbnail.
Bytes MakeMetadataDump() {
    const int32_t orientation = 0;
    const uint8_t quality = 95;
    const uint8_t thumbnailQuality = 90;
    const int32_t thumbnailSize[2] = {0, 0};
    camera_metadata_t* const metadata = allocate_camera_metadata(4, 8);
    add_camera_metadata_entry(metadata, ANDROID_JPEG_ORIENTATION, &orientation, 1);
    add_camera_metadata_entry(metadata, ANDROID_JPEG_QUALITY, &quality, 1);
    add_camera_metadata_entry(metadata, ANDROID_JPEG_THUMBNAIL_QUALITY, &thumbnailQuality, 1);
    add_camera_metadata_entry(metadata, ANDROID_JPEG_THUMBNAIL_SIZE, thumbnailSize, 2);
    const auto* const first = reinterpret_cast<const uint8_t*>(metadata);
    const Bytes bytes(first, first + get_camera_metadata_size(metadata));
    free_camera_metadata(metadata);
    return bytes;
}

// Makes one file unless it is there. Gives the line that says so.
template <class Make>
Result<std::string> MakeFile(const std::string& path, Make make) {
    std::error_code unknown;
    if (fs::exists(fs::symlink_status(path, unknown))) return path + ": exists, kept\n";
    const Bytes bytes = make();
    const Result<Done> written = WriteFile(path, bytes);
    if (!written.Ok()) return written.GetFailure();
    return path + ": made, " + std::to_string(bytes.size()) + " bytes\n";
}

}  // namespace

Result<std::string> MakeSources(const std::string& folder, const Picture* photo) {
    const std::string frames = folder + "/offlinecameratest";
    const std::string metadata = folder + "/metadata";
    for (const std::string& path : {folder, frames, metadata}) {
        std::error_code error;
        fs::create_directory(path, error);  // an existing folder is fine
        if (error) return Failure{path + ": cannot make the folder: " + error.message()};
    }
    const PictureSize sensor = DefaultSize(FrameFormat::kRaw10);
    const PictureSize developed = DefaultSize(FrameFormat::kNv12);
    std::optional<Picture> scene;  // the photo as both large frames show it, once one needs it
    std::string lines;
    for (const SourceFile& file : kSourceFiles) {
        const auto line = MakeFile(frames + "/" + file.name, [&] {
            const FrameGeometry geometry = AllocatorGeometry(file.format, file.size);
            const bool isLarge = file.size == sensor || file.size == developed;
            if (!photo || !isLarge) return MakeFrame(photo, geometry, {});
            if (!scene) scene = FitPicture(*photo, sensor);
            const Picture cut = CentreCrop(*scene, file.size);
            return MakeFrame(&cut, geometry, {});
        });
        if (!line.Ok()) return line;
        lines += line.Value();
    }
    const auto line = MakeFile(metadata + "/original_dump.bin", MakeMetadataDump);
    if (!line.Ok()) return line;
    return lines + line.Value();
}

}  // namespace offlineframes
