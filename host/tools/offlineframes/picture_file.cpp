// Pictures in files, and scaled. gdk-pixbuf reads PNG and PPM and scales. JPEG is TurboJPEG's:
// gdk-pixbuf takes one that is damaged or cut short for a good one. PNG is packed by ISA-L, strip
// by strip and ten times as fast as gdk-pixbuf does it.

#include "picture_file.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <imaging/camera_physics.h>
#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>
#include <libexif/exif-data.h>
#include <stdlib.h>
#include <string.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace offlineframes {
namespace {

using Pixbuf = std::unique_ptr<GdkPixbuf, void (*)(gpointer)>;

// The pixels of `picture`, which outlives it; written only where it is a target.
Pixbuf PixbufOn(const Picture& picture) {
    const int width = static_cast<int>(picture.width);
    return {gdk_pixbuf_new_from_data(const_cast<uint8_t*>(picture.rgb.data()), GDK_COLORSPACE_RGB,
                                     FALSE, 8, width, static_cast<int>(picture.height), width * 3,
                                     nullptr, nullptr),
            g_object_unref};
}

// A copy, over white where it is transparent.
Picture PictureOf(const Pixbuf& pixbuf) {
    const int width = gdk_pixbuf_get_width(pixbuf.get());
    const int height = gdk_pixbuf_get_height(pixbuf.get());
    Picture picture({static_cast<uint32_t>(width), static_cast<uint32_t>(height)});
    constexpr uint32_t kWhite = 0xffffff;
    const int size = std::max(width, height);  // of the fields of a chessboard: one
    gdk_pixbuf_composite_color(pixbuf.get(), PixbufOn(picture).get(), 0, 0, width, height, 0, 0, 1,
                               1, GDK_INTERP_NEAREST, 255, 0, 0, size, kWhite, kWhite);
    return picture;
}

const std::string kPngMagic = "\x89PNG\r\n\x1a\n";

Result<Done> CheckSize(const std::string& path, const std::string& type, PictureSize size) {
    if (IsUsableSize(size.width, size.height)) return Done{};
    return Failure{path + ": a " + type + " of " + Describe(size) +
                   " is too large: scale it down to at most " + std::to_string(kMaxPixels) +
                   " pixels and " + std::to_string(kMaxSide) + " a side"};
}

// That a library did not decode a picture, and why.
Failure NotDecoded(const std::string& path, const std::string& type, bool forMemory,
                   const std::string& reason) {
    return Failure{path + (forMemory ? ": out of memory for this " : ": damaged ") + type + ": " +
                   reason};
}

// The orientation in EXIF data or in a JPEG file that has some; 1 where it is missing or damaged.
int OrientationOf(const uint8_t* data, size_t size) {
    const std::unique_ptr<ExifData, void (*)(ExifData*)> exif(
            exif_data_new_from_data(data, static_cast<unsigned>(size)), exif_data_unref);
    if (!exif) return 1;
    const ExifEntry* const entry =
            exif_content_get_entry(exif->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->size < 2) return 1;
    const int value = exif_get_short(entry->data, exif_data_get_byte_order(exif.get()));
    return value >= 1 && value <= 8 ? value : 1;
}

// The same for a PNG file, whose eXIf chunk gdk-pixbuf does not read.
int PngOrientation(const Bytes& png) {
    const std::string_view chunk = "eXIf";
    const auto found = std::search(png.begin(), png.end(), chunk.begin(), chunk.end());
    if (found == png.end()) return 1;
    Bytes exif = {'E', 'x', 'i', 'f', 0, 0};  // how a JPEG introduces the same data
    exif.insert(exif.end(), found + 4, png.end());
    return OrientationOf(exif.data(), exif.size());
}

// The bytes of an intact JPEG up to and with its end marker.
size_t JpegBytes(const Bytes& jpeg) {
    size_t at = 2;
    while (at + 1 < jpeg.size()) {
        const uint8_t marker = jpeg[at + 1];
        const bool restart = marker >= 0xD0 && marker <= 0xD7;
        if (jpeg[at] != 0xFF || marker == 0x00 || marker == 0xFF || restart) {
            ++at;  // coded data
        } else if (marker == 0xD9 || at + 3 >= jpeg.size()) {
            break;
        } else {
            at += 2 + (size_t{jpeg[at + 2]} << 8 | jpeg[at + 3]);
        }
    }
    return std::min(at + 2, jpeg.size());
}

// Ink to light. As programs that write such files do, 255 is no ink.
void RgbFromCmyk(const Bytes& cmyk, Picture* picture) {
    for (size_t pixel = 0; pixel < cmyk.size() / 4; ++pixel) {
        for (size_t c = 0; c < 3; ++c) {
            picture->rgb[pixel * 3 + c] =
                    static_cast<uint8_t>(cmyk[pixel * 4 + c] * cmyk[pixel * 4 + 3] / 255);
        }
    }
}

Result<StoredPicture> DecodeJpeg(const Bytes& bytes, const std::string& path, uint32_t leastWidth) {
    const std::unique_ptr<void, int (*)(tjhandle)> decoder(tjInitDecompress(), tjDestroy);
    const auto failed = [&] {
        const std::string reason = tjGetErrorStr2(decoder.get());
        return NotDecoded(path, "JPEG", reason.find("memory") != reason.npos, reason);
    };
    int width = 0, height = 0, subsampling = 0, colours = 0;
    const bool read = tjDecompressHeader3(decoder.get(), bytes.data(), bytes.size(), &width,
                                          &height, &subsampling, &colours) == 0;
    // A rare subsampling is an error here, but can be decoded; then the size is known.
    if (width <= 0 || height <= 0) {
        return read ? NotDecoded(path, "JPEG", false, "it holds no picture") : failed();
    }
    StoredPicture jpeg;
    jpeg.fullSize = {static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
    const Result<Done> usable = CheckSize(path, "JPEG", jpeg.fullSize);
    if (!usable.Ok()) return usable.GetFailure();
    jpeg.orientation = OrientationOf(bytes.data(), bytes.size());
    jpeg.jpegBytes = JpegBytes(bytes);
    tjscalingfactor scale = {8, 8};
    while (leastWidth != 0 && scale.num > 1 &&
           uint64_t{jpeg.fullSize.width} * (scale.num - 1) >= uint64_t{leastWidth} * 8) {
        --scale.num;
    }
    width = TJSCALED(width, scale);
    height = TJSCALED(height, scale);
    jpeg.picture = Picture({static_cast<uint32_t>(width), static_cast<uint32_t>(height)});
    const bool inks = colours == TJCS_CMYK || colours == TJCS_YCCK;
    Bytes cmyk(inks ? jpeg.picture.rgb.size() / 3 * 4 : 0);
    // A warning means damaged data: the decoder would go on with invented pixels.
    if (tjDecompress2(decoder.get(), bytes.data(), bytes.size(),
                      inks ? cmyk.data() : jpeg.picture.rgb.data(), width, 0, height,
                      inks ? TJPF_CMYK : TJPF_RGB, TJFLAG_STOPONWARNING) != 0) {
        return failed();
    }
    RgbFromCmyk(cmyk, &jpeg.picture);
    return jpeg;
}

// A PNG or a PPM.
Result<StoredPicture> DecodeOther(const std::string& type, const Bytes& bytes,
                                  const std::string& path) {
    // gdk-pixbuf tells types by the system's MIME database, which a session's setting may hide.
    setenv("XDG_DATA_DIRS", "/usr/local/share:/usr/share", 1);
    int width = 0, height = 0;
    const bool known = gdk_pixbuf_get_file_info(path.c_str(), &width, &height) != nullptr;
    const PictureSize size = {static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
    const Result<Done> usable = known ? CheckSize(path, type, size) : Done{};
    if (!usable.Ok()) return usable.GetFailure();
    // From the file: in memory gdk-pixbuf does not notice that a picture is cut short.
    GError* error = nullptr;
    const Pixbuf pixbuf = {gdk_pixbuf_new_from_file(path.c_str(), &error), g_object_unref};
    if (!pixbuf) {
        const bool forMemory =
                g_error_matches(error, GDK_PIXBUF_ERROR, GDK_PIXBUF_ERROR_INSUFFICIENT_MEMORY);
        const Failure failure = NotDecoded(path, type, forMemory, error->message);
        g_error_free(error);
        return failure;
    }
    return StoredPicture{PictureOf(pixbuf), size, type == "PNG" ? PngOrientation(bytes) : 1};
}

void AppendNumber(size_t number, Bytes* bytes) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes->push_back(static_cast<uint8_t>(number >> shift));
    }
}

void AppendPngChunk(const char* type, const uint8_t* data, size_t size, Bytes* png) {
    AppendNumber(size, png);
    png->insert(png->end(), type, type + 4);
    png->insert(png->end(), data, data + size);
    AppendNumber(crc32_gzip_refl(0, &png->back() + 1 - size - 4, size + 4), png);
}

double PsnrOf(double squares, double samples) {
    return squares == 0 ? INFINITY : 10 * std::log10(255.0 * 255.0 * samples / squares);
}

}  // namespace

std::string Describe(PictureSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string PictureType(const Bytes& bytes) {
    const std::string start(bytes.begin(), bytes.begin() + std::min<ptrdiff_t>(bytes.size(), 8));
    if (start == kPngMagic) return "PNG";
    if (start.rfind("\xff\xd8\xff", 0) == 0) return "JPEG";
    return start.rfind("P6", 0) == 0 ? "PPM" : "";
}

Result<StoredPicture> DecodePicture(const Bytes& bytes, const std::string& path,
                                    uint32_t leastWidth) {
    const std::string type = PictureType(bytes);
    if (type.empty()) return Failure{path + ": is not a PNG, JPEG or binary PPM picture"};
    return type == "JPEG" ? DecodeJpeg(bytes, path, leastWidth) : DecodeOther(type, bytes, path);
}

Result<Picture> ReadPicture(const std::string& path) {
    const Result<Bytes> bytes = ReadFile(path);
    if (!bytes.Ok()) return bytes.GetFailure();
    Result<StoredPicture> stored = DecodePicture(bytes.Value(), path);
    if (!stored.Ok()) return stored.GetFailure();
    return MakeUpright(std::move(stored.Value().picture), stored.Value().orientation);
}

Picture MakeUpright(Picture picture, int orientation) {
    if (orientation == 1) return picture;
    const bool turned = orientation >= 5;  // its rows are stored as columns
    constexpr bool kFromRight[] = {false, false, true, true, false, false, false, true, true};
    constexpr bool kFromBottom[] = {false, false, false, true, true, false, true, true, false};
    Picture upright(turned ? PictureSize{picture.height, picture.width} : picture);
    for (uint32_t y = 0; y < upright.height; ++y) {
        for (uint32_t x = 0; x < upright.width; ++x) {
            uint32_t column = turned ? y : x, row = turned ? x : y;
            if (kFromRight[orientation]) column = picture.width - 1 - column;
            if (kFromBottom[orientation]) row = picture.height - 1 - row;
            memcpy(upright.Pixel(x, y), picture.Pixel(column, row), 3);
        }
    }
    return upright;
}

double CoveringScale(PictureSize photo, PictureSize size) {
    return std::max(double(size.width) / photo.width, double(size.height) / photo.height);
}

Picture FitPicture(const Picture& photo, PictureSize size) {
    if (photo == size) return photo;
    // The scaler's table of weights grows with the square of the factor: several small steps.
    constexpr uint32_t kStep = 16;
    if (CoveringScale(photo, size) * 2 * kStep < 1) {
        return FitPicture(FitPicture(photo, {(photo.width + kStep - 1) / kStep,
                                             (photo.height + kStep - 1) / kStep}),
                          size);
    }
    const double scale = CoveringScale(photo, size);
    const int width = static_cast<int>(size.width);
    const int height = static_cast<int>(size.height);
    Picture fitted(size);
    gdk_pixbuf_scale(PixbufOn(photo).get(), PixbufOn(fitted).get(), 0, 0, width, height,
                     (width - photo.width * scale) / 2, (height - photo.height * scale) / 2, scale,
                     scale, GDK_INTERP_BILINEAR);
    return fitted;
}

RowSource RowsOf(Picture picture) {
    return [picture = std::move(picture)](uint32_t y, uint8_t* rgb) {
        memcpy(rgb, picture.Pixel(0, y), size_t{picture.width} * 3);
    };
}

Bytes EncodePng(PictureSize size, const RowSource& rows) {
    constexpr uint32_t kStripRows = 16;  // stay in the processor's cache
    const size_t rowBytes = size_t{size.width} * 3 + 1;
    Bytes header;
    AppendNumber(size.width, &header);
    AppendNumber(size.height, &header);
    header.insert(header.end(), {8, 2, 0, 0, 0});  // 8-bit RGB
    Bytes png(kPngMagic.begin(), kPngMagic.end());
    AppendPngChunk("IHDR", header.data(), header.size(), &png);
    const auto packer = std::make_unique<isal_zstream>();
    isal_deflate_init(packer.get());
    Bytes levelBuffer(ISAL_DEF_LVL1_DEFAULT);
    packer->level = 1;  // a dump is looked at once: speed before size
    packer->level_buf = levelBuffer.data();
    packer->level_buf_size = static_cast<uint32_t>(levelBuffer.size());
    packer->gzip_flag = IGZIP_ZLIB;
    // A row begins with its filter, 0 for none: the fastest to pack.
    Bytes strip(rowBytes * kStripRows), packed(rowBytes * kStripRows);
    for (uint32_t y = 0; y < size.height; ++y) {
        const uint32_t row = y % kStripRows;
        rows(y, &strip[row * rowBytes + 1]);
        packer->end_of_stream = y + 1 == size.height;
        if (row + 1 < kStripRows && !packer->end_of_stream) continue;
        packer->next_in = strip.data();
        packer->avail_in = static_cast<uint32_t>((row + 1) * rowBytes);
        do {
            packer->next_out = packed.data();
            packer->avail_out = static_cast<uint32_t>(packed.size());
            isal_deflate(packer.get());
            AppendPngChunk("IDAT", packed.data(), packed.size() - packer->avail_out, &png);
        } while (packer->avail_out == 0);
    }
    AppendPngChunk("IEND", nullptr, 0, &png);
    return png;
}

Picture CentreCrop(const Picture& picture, PictureSize size) {
    const uint32_t left = imaging::CropOffset(picture.width, size.width);
    const uint32_t top = imaging::CropOffset(picture.height, size.height);
    Picture out(size);
    for (uint32_t y = 0; y < size.height; ++y) {
        memcpy(out.Pixel(0, y), picture.Pixel(left, top + y), size_t{size.width} * 3);
    }
    return out;
}

Result<Comparison> ComparePictures(const Picture& a, const Picture& b) {
    if (!(a == b)) {
        return Failure{"the pictures differ in size: " + Describe(a) + " and " + Describe(b)};
    }
    Comparison result = {};
    double squares[3] = {};  // whole numbers, below 2^53
    for (size_t i = 0; i < a.rgb.size(); ++i) {
        const int difference = std::abs(a.rgb[i] - b.rgb[i]);
        squares[i % 3] += difference * difference;
        if (difference <= result.largest) continue;
        result.largest = difference;
        result.x = static_cast<uint32_t>(i / 3 % a.width);
        result.y = static_cast<uint32_t>(i / 3 / a.width);
        result.channel = static_cast<int>(i % 3);
    }
    const double pixels = double(a.width) * a.height;
    for (size_t i = 0; i < 3; ++i) result.channelPsnr[i] = PsnrOf(squares[i], pixels);
    result.psnr = PsnrOf(squares[0] + squares[1] + squares[2], pixels * 3);
    return result;
}

}  // namespace offlineframes
