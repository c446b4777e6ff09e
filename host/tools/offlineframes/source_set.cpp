// Makes the source files and the metadata dump.

#include "source_set.h"

#include <system/camera_metadata.h>

#include <filesystem>
#include <functional>
#include <system_error>

#include "frame_encoder.h"
#include "picture_file.h"

namespace offlineframes {
namespace {

namespace fs = std::filesystem;

// One packed camera metadata blob with the JPEG settings of a request; no thumbnail.
base::Result<Bytes> MakeMetadataDump() {
    const int32_t orientation = 0;
    const uint8_t quality = 95;
    const uint8_t thumbnailQuality = 90;
    const int32_t thumbnailSize[2] = {0, 0};
    camera_metadata_t* const metadata = allocate_camera_metadata(4, 8);
    if (!metadata) return base::Failure{"no memory for the camera metadata"};
    const int errors =
            add_camera_metadata_entry(metadata, ANDROID_JPEG_ORIENTATION, &orientation, 1) +
            add_camera_metadata_entry(metadata, ANDROID_JPEG_QUALITY, &quality, 1) +
            add_camera_metadata_entry(metadata, ANDROID_JPEG_THUMBNAIL_QUALITY, &thumbnailQuality,
                                      1) +
            add_camera_metadata_entry(metadata, ANDROID_JPEG_THUMBNAIL_SIZE, thumbnailSize, 2);
    const auto* const first = reinterpret_cast<const uint8_t*>(metadata);
    Bytes bytes(first, first + get_camera_metadata_size(metadata));
    free_camera_metadata(metadata);
    if (errors != 0) return base::Failure{"the camera metadata library refused an entry"};
    return bytes;
}

// Makes one file unless it is there. Gives the line that says so.
base::Result<std::string> MakeFile(const std::string& path,
                                   const std::function<base::Result<Bytes>()>& make) {
    std::error_code unknown;
    if (fs::exists(fs::symlink_status(path, unknown))) return path + ": exists, kept\n";
    const base::Result<Bytes> bytes = make();
    if (!bytes.Ok()) return bytes.GetFailure();
    const base::Result<base::Done> written = WriteFile(path, bytes.Value(), Existing::kKeep);
    if (!written.Ok()) return written.GetFailure();
    return path + ": made, " + std::to_string(bytes.Value().size()) + " bytes\n";
}

}  // namespace

base::Result<std::string> MakeSources(const std::string& folder,
                                      const std::optional<Picture>& photo) {
    const std::string frames = folder + "/offlinecameratest";
    const std::string metadata = folder + "/metadata";
    for (const std::string& path : {folder, frames, metadata}) {
        std::error_code error;
        fs::create_directory(path, error);  // an existing folder is fine
        if (error) return base::Failure{path + ": cannot make the folder: " + error.message()};
    }
    std::optional<Picture> developed;  // what development cuts from the mosaic
    if (photo) {
        developed = CentreCrop(FitPicture(*photo, DefaultSize(FrameFormat::kRaw10)),
                               DefaultSize(FrameFormat::kNv12));
    }
    std::string lines;
    for (const SourceFile& file : kSourceFiles) {
        const auto& scene = file.size == DefaultSize(FrameFormat::kNv12) ? developed : photo;
        const base::Result<std::string> line = MakeFile(frames + "/" + file.name, [&] {
            return MakeFrame(scene, AllocatorGeometry(file.format, file.size), {});
        });
        if (!line.Ok()) return line;
        lines += line.Value();
    }
    const auto line = MakeFile(metadata + "/original_dump.bin", MakeMetadataDump);
    if (!line.Ok()) return line;
    return lines + line.Value();
}

}  // namespace offlineframes
