// Recognises files, resolves the geometry of frames and decodes them.

#include "frame_view.h"

#include <imaging/b2y.h>
#include <imaging/raw10.h>

#include <algorithm>
#include <utility>

#include "picture_file.h"

namespace offlineframes {
namespace {

// Some allocators round a frame up to whole pages.
constexpr uint64_t kPageBytes = 4096;

bool IsExpectedSize(uint64_t found, uint64_t expected) {
    return found == expected || found == (expected + kPageBytes - 1) / kPageBytes * kPageBytes;
}

bool EndsWith(const std::string& text, const std::string& ending) {
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

// The stride and scan lines that request and name tell; 0 where they do not.
FrameGeometry KnownPadding(const std::string& path, FrameFormat format,
                           const KnownGeometry& request) {
    FrameGeometry known;
    known.format = format;
    const std::optional<FrameGeometry> source = sourceFileGeometry(path);
    if (const std::optional<DumpName> dump = parseDumpName(path)) {
        known.stride = dump->stride.value_or(0);
        known.scanlines = dump->scanlines.value_or(0);
    } else if (source && (!request.size || *request.size == source->size)) {
        // With a size of the caller's own the fixed name says nothing any more.
        known = {format, {}, source->stride, source->scanlines};
    }
    if (request.stride) known.stride = static_cast<uint32_t>(*request.stride);
    if (request.scanlines) known.scanlines = static_cast<uint32_t>(*request.scanlines);
    return known;
}

// The number that with `known` makes up the file: scan lines from a stride or the reverse; 0 when
// there is none.
uint32_t FromFileSize(FrameFormat format, uint32_t known, uint64_t bytes) {
    const uint64_t halves = format == FrameFormat::kRaw10 ? 2 : 3;  // planes, in halves of luma
    const uint64_t other = bytes * 2 / (known * halves);
    const bool fits = bytes * 2 % (known * halves) == 0 && other <= UINT32_MAX;
    return fits ? static_cast<uint32_t>(other) : 0;
}

// What a file of this size probably is, for messages.
std::string Likely(const FrameGeometry& padding, uint64_t bytes) {
    const FrameFormat other =
            padding.format == FrameFormat::kRaw10 ? FrameFormat::kNv12 : FrameFormat::kRaw10;
    for (const FrameFormat candidate : {padding.format, other}) {
        if (const auto known = geometryOfFileSize(candidate, bytes)) {
            return "; the size fits " + describe(*known);
        }
    }
    const uint32_t rows =
            padding.stride == 0 ? 0 : FromFileSize(padding.format, padding.stride, bytes);
    if (rows == 0) return "; no known geometry has that size, is the file cut short?";
    return "; the size fits " + std::to_string(rows) + " scan lines of that stride";
}

// A RAW10 mosaic developed in colour by the reference camera's own pipeline, not cropped.
Result<Picture> DevelopRaw10(const Bytes& bytes, const FrameGeometry& geometry) {
    const auto [width, height] = geometry.size;
    const FrameGeometry developed = {FrameFormat::kNv12, geometry.size, width, height};
    const Result<size_t> nv12Bytes = frameBytes(developed);
    if (!nv12Bytes.Ok()) return nv12Bytes.GetFailure();
    Bytes nv12(nv12Bytes.Value());
    const std::string problem = imaging::RawToNv12(
            {bytes.data(), width, height, geometry.stride},
            {nv12.data(), nv12.data() + size_t{width} * height, width, height, width});
    if (!problem.empty()) return Failure{"cannot develop " + describe(geometry) + ": " + problem};
    return showNv12(nv12, developed);
}

// The mosaic as it is: each pixel's upper eight bits as grey.
Picture ShowMosaic(const Bytes& bytes, const FrameGeometry& geometry) {
    Picture picture(geometry.size.width, geometry.size.height);
    std::vector<uint16_t> row(picture.width);
    for (uint32_t y = 0; y < picture.height; ++y) {
        imaging::UnpackRaw10Row(&bytes[size_t{y} * geometry.stride], picture.width, row.data());
        for (uint32_t x = 0; x < picture.width; ++x) {
            std::fill_n(picture.pixel(x, y), 3, static_cast<uint8_t>(row[x] >> 2));
        }
    }
    return picture;
}

Result<View> ViewFrame(const std::string& path, FrameFormat format, const ViewRequest& request,
                       const Bytes& bytes) {
    if (request.asStored) return Failure{path + ": --as-stored is only for JPEG files"};
    if (request.mosaic && format != FrameFormat::kRaw10) {
        return Failure{path + ": --mosaic is only for raw10 frames"};
    }
    const Result<FrameGeometry> geometry = resolveGeometry(path, format, request, bytes.size());
    if (!geometry.Ok()) return geometry.GetFailure();
    const std::string what = describe(geometry.Value());
    if (format == FrameFormat::kNv12) return View{showNv12(bytes, geometry.Value()), what};
    if (request.mosaic) return View{ShowMosaic(bytes, geometry.Value()), what + ", mosaic"};
    Result<Picture> developed = DevelopRaw10(bytes, geometry.Value());
    if (!developed.Ok()) return Failure{path + ": " + developed.Error()};
    return View{std::move(developed).Value(), what + ", developed"};
}

Result<View> ViewJpeg(const std::string& path, const ViewRequest& request, const Bytes& bytes) {
    Result<JpegPicture> jpeg = decodeJpeg(bytes, path);
    if (!jpeg.Ok()) return jpeg.GetFailure();
    const PictureSize size = jpeg.Value().fullSize;
    View view;
    view.description = "jpeg " + describe(size) + ", orientation " +
                       std::to_string(jpeg.Value().orientation) + ", " +
                       std::to_string(jpeg.Value().jpegBytes) + " of the file's " +
                       std::to_string(bytes.size()) + " bytes";
    const std::optional<DumpName> dump = parseDumpName(path);
    if (dump && dump->width && dump->height) {
        const PictureSize named = {*dump->width, *dump->height};
        if (!(named == size)) view.description += "; the name says " + describe(named);
    }
    const int orientation = request.asStored ? 1 : jpeg.Value().orientation;
    view.picture = makeUpright(std::move(jpeg).Value().picture, orientation);
    return view;
}

Result<View> ViewPicture(const std::string& path, const ViewRequest& request, PictureType type,
                         const Bytes& bytes) {
    if (request.size || request.stride || request.scanlines || request.mosaic) {
        return Failure{path +
                       ": is a picture; --size, --stride, --scanlines and --mosaic are for "
                       "raw10 and nv12 frames"};
    }
    if (type == PictureType::kJpeg) return ViewJpeg(path, request, bytes);
    if (request.asStored) return Failure{path + ": --as-stored is only for JPEG files"};
    Result<Picture> picture = decodePicture(bytes, path);
    if (!picture.Ok()) return picture.GetFailure();
    const PictureSize size = {picture.Value().width, picture.Value().height};
    return View{std::move(picture).Value(), "picture " + describe(size)};
}

}  // namespace

Picture showNv12(const Bytes& bytes, const FrameGeometry& geometry) {
    const size_t lumaBytes = size_t{geometry.stride} * geometry.scanlines;
    Picture picture(geometry.size.width, geometry.size.height);
    for (uint32_t y = 0; y < picture.height; ++y) {
        const uint8_t* const luma = &bytes[size_t{y} * geometry.stride];
        const uint8_t* const chroma = &bytes[lumaBytes + size_t{y / 2} * geometry.stride];
        uint8_t* out = picture.pixel(0, y);
        for (uint32_t x = 0; x < picture.width; x += 2) {
            const int cb = chroma[x] - 128;
            const int cr = chroma[x + 1] - 128;
            // In 1/65536, and a half to round: 1.402; 0.344136, 0.714136; 1.772.
            const int add[3] = {91881 * cr + 32768, -22553 * cb - 46802 * cr + 32768,
                                116130 * cb + 32768};
            for (uint32_t i = 0; i < 2; ++i) {
                for (const int share : add) {
                    const int value = (luma[x + i] * 65536 + share) >> 16;
                    *out++ = static_cast<uint8_t>(std::clamp(value, 0, 255));
                }
            }
        }
    }
    return picture;
}

Result<FrameGeometry> resolveGeometry(const std::string& path, FrameFormat format,
                                      const KnownGeometry& request, uint64_t bytes) {
    const FrameGeometry padding = KnownPadding(path, format, request);
    FrameGeometry geometry = padding;
    const FrameGeometry allocated =
            request.size ? allocatorGeometry(format, *request.size) : FrameGeometry{};
    if (geometry.stride == 0) geometry.stride = allocated.stride;
    if (geometry.stride != 0 && geometry.scanlines == 0) {
        geometry.scanlines = FromFileSize(format, geometry.stride, bytes);
        if (geometry.scanlines == 0) geometry.scanlines = allocated.scanlines;
    } else if (geometry.stride == 0 && geometry.scanlines != 0) {
        geometry.stride = FromFileSize(format, geometry.scanlines, bytes);
    } else if (geometry.stride == 0) {
        if (const auto known = geometryOfFileSize(format, bytes)) geometry = *known;
    }
    if (geometry.stride == 0 || geometry.scanlines == 0) {
        return Failure{path + ": cannot tell the geometry of " + std::to_string(bytes) +
                       " bytes of " + formatName(format) + Likely(padding, bytes) +
                       "; give --size, --stride and --scanlines"};
    }
    geometry.size = request.size ? *request.size
                                 : pictureInPadding(format, geometry.stride, geometry.scanlines);
    const Result<size_t> expected = frameBytes(geometry);
    if (!expected.Ok()) return Failure{path + ": " + expected.Error()};
    if (!IsExpectedSize(bytes, expected.Value())) {
        return Failure{path + ": expected " + std::to_string(expected.Value()) + " bytes for " +
                       describe(geometry) + ", found " + std::to_string(bytes) +
                       Likely(padding, bytes)};
    }
    return geometry;
}

Result<View> viewFile(const std::string& path, const ViewRequest& request) {
    const Result<Bytes> bytes = readFile(path);
    if (!bytes.Ok()) return bytes.GetFailure();
    if (request.format) return ViewFrame(path, *request.format, request, bytes.Value());
    const Result<PictureType> type = pictureType(bytes.Value(), path);
    if (type.Ok()) return ViewPicture(path, request, type.Value(), bytes.Value());
    if (EndsWith(path, ".raw")) {
        return ViewFrame(path, FrameFormat::kRaw10, request, bytes.Value());
    }
    if (EndsWith(path, ".yuv")) return ViewFrame(path, FrameFormat::kNv12, request, bytes.Value());
    if (EndsWith(path, ".jpg")) {
        return Failure{path + ": expected a JPEG, but it does not start with ff d8 ff"};
    }
    return Failure{type.Error() + ", and its name is not that of a frame; give --format"};
}

}  // namespace offlineframes
