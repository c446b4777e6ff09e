// Recognises files, resolves the geometry of frames and decodes them.

#include "frame_view.h"

#include <imaging/b2y.h>
#include <imaging/raw10.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>
namespace offlineframes {
namespace {

// Some allocators round a frame up to whole pages.
constexpr uint64_t kPageBytes = 4096;

bool IsExpectedSize(uint64_t found, uint64_t expected) {
    return found == expected || found == (expected + kPageBytes - 1) / kPageBytes * kPageBytes;
}

// The stride and scan lines that request and name tell; 0 where they do not.
FrameGeometry KnownPadding(const std::string& path, FrameFormat format,
                           const KnownGeometry& request) {
    FrameGeometry known;
    known.format = format;
    const std::optional<FrameGeometry> source = SourceFileGeometry(path);
    if (const std::optional<DumpName> dump = ParseDumpName(path)) {
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
        if (const auto known = GeometryOfFileSize(candidate, bytes)) {
            return "; the size fits " + Describe(*known);
        }
    }
    const uint32_t rows =
            padding.stride == 0 ? 0 : FromFileSize(padding.format, padding.stride, bytes);
    if (rows == 0) return "; no known geometry has that size, is the file cut short?";
    return "; the size fits " + std::to_string(rows) + " scan lines of that stride";
}

// Samples from -256 to 511, 256 places further on, as they fit into a byte.
constexpr auto kClamped = [] {
    std::array<uint8_t, 768> table = {};
    for (int i = 256; i < 768; ++i) table[i] = static_cast<uint8_t>(std::min(i - 256, 255));
    return table;
}();

// BT.601 full-range NV12 as RGB; each chroma pair serves its 2 x 2 pixels. A table is faster than
// std::clamp for the 36 million samples of a frame, as is writing two pixels at once.
RowSource RowsOfNv12(Bytes&& frame, const FrameGeometry& geometry) {
    return [bytes = std::move(frame), geometry](uint32_t y, uint8_t* rgb) {
        const uint8_t* luma = &bytes[size_t{y} * geometry.stride];
        const uint8_t* chroma = &bytes[(size_t{geometry.scanlines} + y / 2) * geometry.stride];
        const uint8_t* const end = luma + geometry.size.width;
        for (; luma < end; luma += 2, chroma += 2, rgb += 6) {
            const int cb = chroma[0] - 128;
            const int cr = chroma[1] - 128;
            // In 1/65536, and a half to round: 1.402; 0.344136, 0.714136; 1.772.
            const uint8_t* const red = &kClamped[256 + ((91881 * cr + 32768) >> 16)];
            const uint8_t* const green =
                    &kClamped[256 + ((-22553 * cb - 46802 * cr + 32768) >> 16)];
            const uint8_t* const blue = &kClamped[256 + ((116130 * cb + 32768) >> 16)];
            const uint8_t pixels[6] = {red[luma[0]], green[luma[0]], blue[luma[0]],
                                       red[luma[1]], green[luma[1]], blue[luma[1]]};
            memcpy(rgb, pixels, sizeof pixels);
        }
    };
}

// A RAW10 mosaic developed in colour by the reference camera's own pipeline, not cropped.
base::Result<RowSource> DevelopRaw10(const Bytes& bytes, const FrameGeometry& geometry) {
    const auto [width, height] = geometry.size;
    const FrameGeometry developed = {FrameFormat::kNv12, geometry.size, width, height};
    const base::Result<size_t> nv12Bytes = FrameBytes(developed);
    if (!nv12Bytes.Ok()) return nv12Bytes.GetFailure();
    Bytes nv12(nv12Bytes.Value());
    const std::string problem = imaging::RawToNv12(
            {bytes.data(), width, height, geometry.stride},
            {nv12.data(), nv12.data() + size_t{width} * height, width, height, width});
    if (!problem.empty())
        return base::Failure{"cannot develop " + Describe(geometry) + ": " + problem};
    return RowsOfNv12(std::move(nv12), developed);
}

// The mosaic as it is: each pixel's upper eight bits as grey.
RowSource RowsOfMosaic(Bytes&& frame, const FrameGeometry& geometry) {
    return [bytes = std::move(frame), geometry](uint32_t y, uint8_t* rgb) {
        std::vector<uint16_t> row(geometry.size.width);
        imaging::UnpackRaw10Row(&bytes[size_t{y} * geometry.stride], geometry.size.width,
                                row.data());
        for (const uint16_t level : row) {
            rgb = std::fill_n(rgb, 3, static_cast<uint8_t>(level >> 2));
        }
    };
}

base::Result<View> ViewFrame(const std::string& path, FrameFormat format,
                             const ViewRequest& request, Bytes&& bytes) {
    if (request.asStored) return base::Failure{path + ": --as-stored is only for JPEG files"};
    if (request.mosaic && format != FrameFormat::kRaw10) {
        return base::Failure{path + ": --mosaic is only for raw10 frames"};
    }
    const base::Result<FrameGeometry> resolved =
            ResolveGeometry(path, format, request, bytes.size());
    if (!resolved.Ok()) return resolved.GetFailure();
    const FrameGeometry& geometry = resolved.Value();
    const std::string what = Describe(geometry);
    if (format == FrameFormat::kNv12) {
        return View{geometry.size, RowsOfNv12(std::move(bytes), geometry), what};
    }
    if (request.mosaic) {
        return View{geometry.size, RowsOfMosaic(std::move(bytes), geometry), what + ", mosaic"};
    }
    base::Result<RowSource> developed = DevelopRaw10(bytes, geometry);
    if (!developed.Ok()) return base::Failure{path + ": " + developed.Error()};
    return View{geometry.size, std::move(developed).Value(), what + ", developed"};
}

View ViewOf(Picture picture, const std::string& description) {
    const PictureSize size = {picture.width, picture.height};
    return {size, RowsOf(std::move(picture)), description};
}

base::Result<View> ViewJpeg(const std::string& path, const ViewRequest& request,
                            const Bytes& bytes) {
    base::Result<JpegPicture> jpeg = DecodeJpeg(bytes, path);
    if (!jpeg.Ok()) return jpeg.GetFailure();
    const PictureSize size = jpeg.Value().fullSize;
    std::string description = "jpeg " + Describe(size) + ", orientation " +
                              std::to_string(jpeg.Value().orientation) + ", " +
                              std::to_string(jpeg.Value().jpegBytes) + " of the file's " +
                              std::to_string(bytes.size()) + " bytes";
    const std::optional<DumpName> dump = ParseDumpName(path);
    if (dump && dump->width && dump->height) {
        const PictureSize named = {*dump->width, *dump->height};
        if (!(named == size)) description += "; the name says " + Describe(named);
    }
    const int orientation = request.asStored ? 1 : jpeg.Value().orientation;
    return ViewOf(MakeUpright(std::move(jpeg).Value().picture, orientation), description);
}

base::Result<View> ViewPicture(const std::string& path, const ViewRequest& request,
                               PictureType type, const Bytes& bytes) {
    if (request.size || request.stride || request.scanlines || request.mosaic) {
        return base::Failure{path +
                             ": is a picture; --size, --stride, --scanlines and --mosaic are for "
                             "raw10 and nv12 frames"};
    }
    if (type == PictureType::kJpeg) return ViewJpeg(path, request, bytes);
    if (request.asStored) return base::Failure{path + ": --as-stored is only for JPEG files"};
    base::Result<Picture> picture = DecodePicture(bytes, path);
    if (!picture.Ok()) return picture.GetFailure();
    const PictureSize size = {picture.Value().width, picture.Value().height};
    return ViewOf(std::move(picture).Value(), "picture " + Describe(size));
}

}  // namespace

Picture View::WholePicture() const {
    Picture picture(size.width, size.height);
    for (uint32_t y = 0; y < size.height; ++y) rows(y, picture.Pixel(0, y));
    return picture;
}

base::Result<FrameGeometry> ResolveGeometry(const std::string& path, FrameFormat format,
                                            const KnownGeometry& request, uint64_t bytes) {
    const FrameGeometry padding = KnownPadding(path, format, request);
    FrameGeometry geometry = padding;
    const FrameGeometry allocated =
            request.size ? AllocatorGeometry(format, *request.size) : FrameGeometry{};
    if (geometry.stride == 0) geometry.stride = allocated.stride;
    if (geometry.stride != 0 && geometry.scanlines == 0) {
        geometry.scanlines = FromFileSize(format, geometry.stride, bytes);
        if (geometry.scanlines == 0) geometry.scanlines = allocated.scanlines;
    } else if (geometry.stride == 0 && geometry.scanlines != 0) {
        geometry.stride = FromFileSize(format, geometry.scanlines, bytes);
    } else if (geometry.stride == 0) {
        if (const auto known = GeometryOfFileSize(format, bytes)) geometry = *known;
    }
    if (geometry.stride == 0 || geometry.scanlines == 0) {
        return base::Failure{path + ": cannot tell the geometry of " + std::to_string(bytes) +
                             " bytes of " + FormatName(format) + Likely(padding, bytes) +
                             "; give --size, --stride and --scanlines"};
    }
    geometry.size = request.size ? *request.size
                                 : PictureInPadding(format, geometry.stride, geometry.scanlines);
    const base::Result<size_t> expected = FrameBytes(geometry);
    if (!expected.Ok()) return base::Failure{path + ": " + expected.Error()};
    if (!IsExpectedSize(bytes, expected.Value())) {
        return base::Failure{path + ": expected " + std::to_string(expected.Value()) +
                             " bytes for " + Describe(geometry) + ", found " +
                             std::to_string(bytes) + Likely(padding, bytes)};
    }
    return geometry;
}

base::Result<View> ViewFile(const std::string& path, const ViewRequest& request) {
    base::Result<Bytes> bytes = ReadFile(path);
    if (!bytes.Ok()) return bytes.GetFailure();
    const base::Result<PictureType> type = TypeOf(bytes.Value(), path);
    if (!request.format && type.Ok()) {
        return ViewPicture(path, request, type.Value(), bytes.Value());
    }
    const auto format = request.format ? request.format : FormatOfName(path);
    if (format) return ViewFrame(path, *format, request, std::move(bytes).Value());
    if (std::filesystem::path(path).extension() == ".jpg") {
        return base::Failure{path + ": expected a JPEG, but it does not start with ff d8 ff"};
    }
    return base::Failure{type.Error() + ", and its name is not that of a frame; give --format"};
}

}  // namespace offlineframes
