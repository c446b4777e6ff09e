// Recognises files and decodes frames, row by row.

#include "frame_view.h"

#include <imaging/b2y.h>
#include <imaging/raw10.h>
#include <imaging/rgb.h>

#include <algorithm>
#include <filesystem>

namespace offlineframes {
namespace {

RowSource RowsOfNv12(Nv12Frame frame) {
    return [frame = std::move(frame)](uint32_t y, uint8_t* rgb) {
        imaging::RgbFromNv12(frame.View(), y, rgb);
    };
}

// The mosaic as it is: each pixel's upper eight bits as grey.
RowSource RowsOfMosaic(Bytes frame, const FrameGeometry& geometry) {
    return [bytes = std::move(frame), geometry](uint32_t y, uint8_t* rgb) {
        std::vector<uint16_t> row(geometry.size.width);
        imaging::UnpackRaw10Row(&bytes[size_t{y} * geometry.stride], geometry.size.width,
                                row.data());
        for (const uint16_t level : row) rgb = std::fill_n(rgb, 3, uint8_t(level >> 2));
    };
}

Result<View> ViewFrame(const std::string& path, FrameFormat format, const ViewRequest& request,
                       Bytes bytes) {
    const bool raw = format == FrameFormat::kRaw10;
    if (request.mosaic && !raw) return Failure{path + ": --mosaic is only for raw10 frames"};
    const FrameGeometry told = {format, request.size,
                                static_cast<uint32_t>(request.stride.value_or(0)),
                                static_cast<uint32_t>(request.scanlines.value_or(0))};
    const Result<FrameGeometry> resolved = ResolveGeometry(path, told, bytes.size());
    if (!resolved.Ok()) return resolved.GetFailure();
    const FrameGeometry& geometry = resolved.Value();
    return View{geometry.size,
                request.mosaic ? RowsOfMosaic(std::move(bytes), geometry)
                               : RowsOfNv12(AsNv12(std::move(bytes), geometry)),
                Describe(geometry) + (request.mosaic ? ", mosaic"
                                      : raw          ? ", developed"
                                                     : "")};
}

Result<View> ViewPicture(const std::string& path, const ViewRequest& request, const Bytes& bytes) {
    if (request.size.width != 0 || request.stride || request.scanlines || request.mosaic) {
        return Failure{path +
                       ": is a picture; --size, --stride, --scanlines and --mosaic are for "
                       "raw10 and nv12 frames"};
    }
    Result<StoredPicture> decoded = DecodePicture(bytes, path);
    if (!decoded.Ok()) return decoded.GetFailure();
    StoredPicture& stored = decoded.Value();
    Picture picture =
            MakeUpright(std::move(stored.picture), request.asStored ? 1 : stored.orientation);
    const PictureSize size = picture;
    if (stored.jpegBytes == 0) {
        return View{size, RowsOf(std::move(picture)), "picture " + Describe(size)};
    }
    std::string description = "jpeg " + Describe(stored.fullSize) + ", orientation " +
                              std::to_string(stored.orientation) + ", " +
                              std::to_string(stored.jpegBytes) + " of the file's " +
                              std::to_string(bytes.size()) + " bytes";
    const PictureSize named = {NumberInDumpName(path, "Width").value_or(0),
                               NumberInDumpName(path, "Height").value_or(0)};
    if (named.width != 0 && named.height != 0 && !(named == stored.fullSize)) {
        description += "; the name says " + Describe(named);
    }
    return View{size, RowsOf(std::move(picture)), description};
}

}  // namespace

imaging::Nv12View Nv12Frame::View() const {
    const auto [width, height] = geometry.size;
    const uint8_t* const chroma = &bytes[size_t{geometry.stride} * geometry.scanlines];
    return {bytes.data(), chroma, width, height, geometry.stride};
}

Nv12Frame AsNv12(Bytes file, const FrameGeometry& geometry) {
    if (geometry.format == FrameFormat::kNv12) return {std::move(file), geometry};
    const auto [width, height] = geometry.size;
    Bytes nv12(size_t{width} * height * 3 / 2);
    const auto developed = imaging::RawToNv12(
            {file.data(), width, height, geometry.stride},
            {nv12.data(), nv12.data() + size_t{width} * height, width, height, width});
    static_cast<void>(developed);  // it refuses only what FrameBytes() does
    return {std::move(nv12), {FrameFormat::kNv12, geometry.size, width, height}};
}

Picture View::WholePicture() const {
    Picture picture(size);
    for (uint32_t y = 0; y < size.height; ++y) rows(y, picture.Pixel(0, y));
    return picture;
}

Result<View> ViewFile(const std::string& path, const ViewRequest& request) {
    Result<Bytes> bytes = ReadFile(path);
    if (!bytes.Ok()) return bytes.GetFailure();
    const std::string type = request.format ? "" : PictureType(bytes.Value());
    const auto format = request.format ? request.format : FormatOfName(path);
    if (request.asStored && type != "JPEG" && (format || !type.empty())) {
        return Failure{path + ": --as-stored is only for JPEG files"};
    }
    if (!type.empty()) return ViewPicture(path, request, bytes.Value());
    if (format) return ViewFrame(path, *format, request, std::move(bytes).Value());
    if (std::filesystem::path(path).extension() == ".jpg") {
        return Failure{path + ": expected a JPEG, but it does not start with ff d8 ff"};
    }
    return Failure{path +
                   ": is not a PNG, JPEG or binary PPM picture, and its name is not that of a "
                   "frame; give --format"};
}

}  // namespace offlineframes
