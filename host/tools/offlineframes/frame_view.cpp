// Recognises files and decodes frames, row by row.

#include "frame_view.h"

#include <imaging/b2y.h>
#include <imaging/raw10.h>
#include <imaging/rgb.h>

#include <algorithm>
#include <filesystem>

namespace offlineframes {
namespace {

constexpr const char* kAsStoredRefusal = ": --as-stored is only for JPEG files";

RowSource RowsOfNv12(Bytes&& frame, const FrameGeometry& geometry) {
    return [bytes = std::move(frame), geometry](uint32_t y, uint8_t* rgb) {
        const uint8_t* const chroma = &bytes[size_t{geometry.stride} * geometry.scanlines];
        const auto [width, height] = geometry.size;
        imaging::RgbFromNv12({bytes.data(), chroma, width, height, geometry.stride}, y, rgb);
    };
}

// A RAW10 mosaic developed in colour by the reference camera's own pipeline, not cropped.
RowSource DevelopRaw10(const Bytes& bytes, const FrameGeometry& geometry) {
    const auto [width, height] = geometry.size;
    Bytes nv12(size_t{width} * height * 3 / 2);
    const auto developed = imaging::RawToNv12(
            {bytes.data(), width, height, geometry.stride},
            {nv12.data(), nv12.data() + size_t{width} * height, width, height, width});
    static_cast<void>(developed);  // the geometry has passed FrameBytes()
    return RowsOfNv12(std::move(nv12), {FrameFormat::kNv12, geometry.size, width, height});
}

// The mosaic as it is: each pixel's upper eight bits as grey.
RowSource RowsOfMosaic(Bytes&& frame, const FrameGeometry& geometry) {
    return [bytes = std::move(frame), geometry](uint32_t y, uint8_t* rgb) {
        std::vector<uint16_t> row(geometry.size.width);
        imaging::UnpackRaw10Row(&bytes[size_t{y} * geometry.stride], geometry.size.width,
                                row.data());
        for (const uint16_t level : row) rgb = std::fill_n(rgb, 3, uint8_t(level >> 2));
    };
}

View ViewOf(Picture picture, const std::string& description) {
    const PictureSize size = picture;
    return {size, RowsOf(std::move(picture)), description};
}

Result<View> ViewFrame(const std::string& path, FrameFormat format, const ViewRequest& request,
                       Bytes&& bytes) {
    if (request.asStored) return Failure{path + kAsStoredRefusal};
    if (request.mosaic && format != FrameFormat::kRaw10) {
        return Failure{path + ": --mosaic is only for raw10 frames"};
    }
    FrameGeometry known = request.known;
    known.format = format;
    const Result<FrameGeometry> resolved = ResolveGeometry(path, known, bytes.size());
    if (!resolved.Ok()) return resolved.GetFailure();
    const FrameGeometry& geometry = resolved.Value();
    const std::string what = Describe(geometry);
    if (geometry.format == FrameFormat::kNv12) {
        return View{geometry.size, RowsOfNv12(std::move(bytes), geometry), what};
    }
    if (request.mosaic) {
        return View{geometry.size, RowsOfMosaic(std::move(bytes), geometry), what + ", mosaic"};
    }
    return View{geometry.size, DevelopRaw10(bytes, geometry), what + ", developed"};
}

Result<View> ViewPicture(const std::string& path, const ViewRequest& request, const Bytes& bytes) {
    const FrameGeometry& known = request.known;
    if (known.size.width != 0 || known.stride != 0 || known.scanlines != 0 || request.mosaic) {
        return Failure{path +
                       ": is a picture; --size, --stride, --scanlines and --mosaic are for "
                       "raw10 and nv12 frames"};
    }
    if (PictureType(bytes) != "JPEG") {
        if (request.asStored) return Failure{path + kAsStoredRefusal};
        Result<Picture> picture = DecodePicture(bytes, path);
        if (!picture.Ok()) return picture.GetFailure();
        const std::string description = "picture " + Describe(picture.Value());
        return ViewOf(std::move(picture).Value(), description);
    }
    Result<JpegPicture> decoded = DecodeJpeg(bytes, path);
    if (!decoded.Ok()) return decoded.GetFailure();
    JpegPicture& jpeg = decoded.Value();
    std::string description = "jpeg " + Describe(jpeg.fullSize) + ", orientation " +
                              std::to_string(jpeg.orientation) + ", " +
                              std::to_string(jpeg.jpegBytes) + " of the file's " +
                              std::to_string(bytes.size()) + " bytes";
    const PictureSize named = {NumberInDumpName(path, "Width").value_or(0),
                               NumberInDumpName(path, "Height").value_or(0)};
    if (named.width != 0 && named.height != 0 && !(named == jpeg.fullSize)) {
        description += "; the name says " + Describe(named);
    }
    return ViewOf(MakeUpright(std::move(jpeg.picture), request.asStored ? 1 : jpeg.orientation),
                  description);
}

}  // namespace

Picture View::WholePicture() const {
    Picture picture(size);
    for (uint32_t y = 0; y < size.height; ++y) rows(y, picture.Pixel(0, y));
    return picture;
}

Result<View> ViewFile(const std::string& path, const ViewRequest& request) {
    Result<Bytes> bytes = ReadFile(path);
    if (!bytes.Ok()) return bytes.GetFailure();
    const bool isPicture = !PictureType(bytes.Value()).empty();
    if (!request.format && isPicture) return ViewPicture(path, request, bytes.Value());
    const auto format = request.format ? request.format : FormatOfName(path);
    if (format) return ViewFrame(path, *format, request, std::move(bytes).Value());
    if (std::filesystem::path(path).extension() == ".jpg") {
        return Failure{path + ": expected a JPEG, but it does not start with ff d8 ff"};
    }
    return Failure{path +
                   ": is not a PNG, JPEG or binary PPM picture, and its name is not that of a "
                   "frame; give --format"};
}

}  // namespace offlineframes
