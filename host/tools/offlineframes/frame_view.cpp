// Recognises files and resolves the geometry of frames.

#include "frame_view.h"

#include <utility>

#include "exif_orientation.h"
#include "file_io.h"
#include "frame_decoder.h"
#include "picture_file.h"

namespace offlineframes {
namespace {

// Some allocators round a frame up to whole pages.
constexpr uint64_t kPageBytes = 4096;

bool isExpectedSize(uint64_t found, uint64_t expected) {
    return found == expected || found == (expected + kPageBytes - 1) / kPageBytes * kPageBytes;
}

struct Padding {
    std::optional<uint32_t> stride;
    std::optional<uint32_t> scanlines;
};

Padding knownPadding(const std::string& path, const ViewRequest& request) {
    Padding padding = {request.stride, request.scanlines};
    if (const std::optional<DumpName> dump = parseDumpName(path)) {
        if (!padding.stride) padding.stride = dump->stride;
        if (!padding.scanlines) padding.scanlines = dump->scanlines;
    } else if (const std::optional<FrameGeometry> source = sourceFileGeometry(path)) {
        // With a size of the caller's own the fixed name says nothing any more.
        if (!request.size || *request.size == source->size) {
            if (!padding.stride) padding.stride = source->stride;
            if (!padding.scanlines) padding.scanlines = source->scanlines;
        }
    }
    return padding;
}

// The number that with `known` makes up the file: scan lines from a stride or the reverse.
std::optional<uint32_t> fromFileSize(FrameFormat format, uint32_t known, uint64_t bytes) {
    const uint64_t halves = format == FrameFormat::kRaw10 ? 2 : 3;  // planes, in halves of luma
    if (bytes * 2 % (known * halves) != 0) return std::nullopt;
    const uint64_t other = bytes * 2 / (known * halves);
    if (other == 0 || other > UINT32_MAX) return std::nullopt;
    return static_cast<uint32_t>(other);
}

// What a file of this size probably is, for messages.
std::string likely(FrameFormat format, const Padding& padding, uint64_t bytes) {
    const FrameFormat other =
            format == FrameFormat::kRaw10 ? FrameFormat::kNv12 : FrameFormat::kRaw10;
    for (const FrameFormat candidate : {format, other}) {
        if (const auto known = geometryOfFileSize(candidate, bytes)) {
            return "; the size fits " + describe(*known);
        }
    }
    if (padding.stride) {
        if (const auto rows = fromFileSize(format, *padding.stride, bytes)) {
            return "; the size fits " + std::to_string(*rows) + " scan lines of that stride";
        }
    }
    return "; no known geometry has that size, is the file cut short?";
}

Result<View> viewFrame(const std::string& path, FrameFormat format, const ViewRequest& request,
                       const Bytes& bytes) {
    if (request.asStored) return Failure{path + ": --as-stored is only for JPEG files"};
    if (request.mosaic && format != FrameFormat::kRaw10) {
        return Failure{path + ": --mosaic is only for raw10 frames"};
    }
    const Result<FrameGeometry> geometry = resolveGeometry(path, format, request, bytes.size());
    if (!geometry.ok()) return geometry.failure();
    const std::string what = describe(geometry.value());
    if (format == FrameFormat::kNv12) return View{showNv12(bytes, geometry.value()), what};
    if (request.mosaic) return View{showMosaic(bytes, geometry.value()), what + ", mosaic"};
    Result<Picture> developed = developRaw10(bytes, geometry.value());
    if (!developed.ok()) return Failure{path + ": " + developed.error()};
    return View{std::move(developed).value(), what + ", developed"};
}

Result<View> viewJpeg(const std::string& path, const ViewRequest& request, const Bytes& bytes) {
    Result<JpegPicture> jpeg = decodeJpeg(bytes, path);
    if (!jpeg.ok()) return jpeg.failure();
    const uint32_t width = jpeg.value().picture.width;
    const uint32_t height = jpeg.value().picture.height;
    const int orientation = request.asStored ? 1 : jpeg.value().orientation;
    View view;
    view.description = "jpeg " + std::to_string(width) + "x" + std::to_string(height) +
                       ", orientation " + std::to_string(jpeg.value().orientation) + ", " +
                       std::to_string(jpeg.value().jpegBytes) + " of the file's " +
                       std::to_string(bytes.size()) + " bytes";
    const std::optional<DumpName> dump = parseDumpName(path);
    if (dump && dump->width && dump->height && (*dump->width != width || *dump->height != height)) {
        view.description += "; the name says " + std::to_string(*dump->width) + "x" +
                            std::to_string(*dump->height);
    }
    view.picture = makeUpright(std::move(jpeg).value().picture, orientation);
    return view;
}

Result<View> viewPicture(const std::string& path, const ViewRequest& request, PictureType type,
                         const Bytes& bytes) {
    if (request.size || request.stride || request.scanlines || request.mosaic) {
        return Failure{path +
                       ": is a picture; --size, --stride, --scanlines and --mosaic are for "
                       "raw10 and nv12 frames"};
    }
    if (type == PictureType::kJpeg) return viewJpeg(path, request, bytes);
    if (request.asStored) return Failure{path + ": --as-stored is only for JPEG files"};
    Result<Picture> picture = decodePicture(bytes, path);
    if (!picture.ok()) return picture.failure();
    const std::string size =
            std::to_string(picture.value().width) + "x" + std::to_string(picture.value().height);
    return View{std::move(picture).value(), "picture " + size};
}

bool endsWith(const std::string& text, const std::string& ending) {
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

}  // namespace

Result<FrameGeometry> resolveGeometry(const std::string& path, FrameFormat format,
                                      const ViewRequest& request, uint64_t bytes) {
    const Padding padding = knownPadding(path, request);
    FrameGeometry geometry = {
            format, {}, padding.stride.value_or(0), padding.scanlines.value_or(0)};
    if (request.size && !padding.stride) {
        geometry.stride = allocatorGeometry(format, *request.size).stride;
    }
    if (geometry.stride != 0 && geometry.scanlines == 0) {
        const std::optional<uint32_t> rows = fromFileSize(format, geometry.stride, bytes);
        geometry.scanlines = rows           ? *rows
                             : request.size ? allocatorGeometry(format, *request.size).scanlines
                                            : 0;
    } else if (geometry.stride == 0 && geometry.scanlines != 0) {
        geometry.stride = fromFileSize(format, geometry.scanlines, bytes).value_or(0);
    } else if (geometry.stride == 0) {
        if (const auto known = geometryOfFileSize(format, bytes)) geometry = *known;
    }
    if (geometry.stride == 0 || geometry.scanlines == 0) {
        return Failure{path + ": cannot tell the geometry of " + std::to_string(bytes) +
                       " bytes of " + formatName(format) + likely(format, padding, bytes) +
                       "; give --size, --stride and --scanlines"};
    }
    geometry.size = request.size ? *request.size
                                 : pictureInPadding(format, geometry.stride, geometry.scanlines);
    const Result<size_t> expected = frameBytes(geometry);
    if (!expected.ok()) return Failure{path + ": " + expected.error()};
    if (!isExpectedSize(bytes, expected.value())) {
        return Failure{path + ": expected " + std::to_string(expected.value()) + " bytes for " +
                       describe(geometry) + ", found " + std::to_string(bytes) +
                       likely(format, padding, bytes)};
    }
    return geometry;
}

Result<View> viewFile(const std::string& path, const ViewRequest& request) {
    const Result<Bytes> bytes = readFile(path);
    if (!bytes.ok()) return bytes.failure();
    if (request.format) return viewFrame(path, *request.format, request, bytes.value());
    const Result<PictureType> type = pictureType(bytes.value(), path);
    if (type.ok()) return viewPicture(path, request, type.value(), bytes.value());
    if (endsWith(path, ".raw")) {
        return viewFrame(path, FrameFormat::kRaw10, request, bytes.value());
    }
    if (endsWith(path, ".yuv")) return viewFrame(path, FrameFormat::kNv12, request, bytes.value());
    if (endsWith(path, ".jpg")) {
        return Failure{path + ": expected a JPEG, but it does not start with ff d8 ff"};
    }
    return Failure{type.error() + ", and its name is not that of a frame; give --format"};
}

}  // namespace offlineframes
