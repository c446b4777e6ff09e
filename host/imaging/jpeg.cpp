// NV12 to JPEG in strips that threads encode independently of each other.
//
// A JPEG scan may be cut by restart markers, after which nothing refers to what came before. Each
// strip becomes a small JPEG file; its coded data are one restart interval of the large file:
//   header of the first strip, with the large file's height, its orientation and restart interval
//   data of strip 0, marker RST0, data of strip 1, marker RST1, .., data of the last strip
//   end marker
// The cuts depend on the picture's size only, so the file never depends on threads.
#include <imaging/jpeg.h>
#include <turbojpeg.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "parallel.h"
#include "plane_checks.h"

namespace imaging {

namespace {

constexpr uint32_t kMaxSide = 65500;  // as libjpeg counts
constexpr uint32_t kMcuSide = 16;     // luma pixels of a minimum coded unit at 4:2:0
constexpr uint32_t kStripMcuRows = 16;
constexpr uint32_t kRowsOfStrip = kStripMcuRows * kMcuSide;
static_assert((kMaxSide + kMcuSide - 1) / kMcuSide * kStripMcuRows <= 0xffff,
              "a restart interval has 16 bits");

constexpr uint8_t kMarker = 0xff;
constexpr uint8_t kStartOfFrame = 0xc0;  // baseline
constexpr uint8_t kRestart = 0xd0;       // the first of eight, which take turns
constexpr uint8_t kStartOfScan = 0xda;
constexpr size_t kMarkerBytes = 2;

// A strip's JPEG file and the places in it that joining needs.
struct Strip {
    std::unique_ptr<uint8_t, void (*)(uint8_t*)> file = {nullptr, tjFree};
    unsigned long size = 0;
    size_t height = 0;  // of the frame
    size_t scan = 0;    // the marker of the scan's header
    size_t data = 0;    // where the coded data begin, which go on to the end marker
};

// Finds the places; false for a header without a frame and a scan.
bool FindParts(Strip* strip) {
    const uint8_t* const file = strip->file.get();
    size_t at = kMarkerBytes;  // past the start marker
    while (at + kMarkerBytes + 2 <= strip->size && file[at] == kMarker) {
        // A segment's length counts its own two bytes and what follows.
        const size_t length = static_cast<size_t>(file[at + 2]) << 8 | file[at + 3];
        if (file[at + 1] == kStartOfFrame) strip->height = at + kMarkerBytes + 3;
        strip->scan = at;
        at += kMarkerBytes + length;
        strip->data = at;
        if (file[strip->scan + 1] == kStartOfScan) return strip->height != 0;
    }
    return false;
}

Result<Strip> EncodeStrip(const Nv12View& picture, int quality) {
    const uint32_t half = picture.width / 2;
    std::vector<uint8_t> chroma(size_t{half} * picture.height);  // Cb, then Cr
    uint8_t* const cb = chroma.data();
    uint8_t* const cr = cb + chroma.size() / 2;
    for (uint32_t y = 0; y < picture.height / 2; ++y) {
        const uint8_t* const pairs = picture.uv + y * picture.strideBytes;
        for (uint32_t x = 0; x < half; ++x) {
            cb[y * half + x] = pairs[2 * x];
            cr[y * half + x] = pairs[2 * x + 1];
        }
    }
    const uint8_t* planes[] = {picture.y, cb, cr};
    const int strides[] = {static_cast<int>(picture.strideBytes), static_cast<int>(half),
                           static_cast<int>(half)};
    const std::unique_ptr<void, int (*)(tjhandle)> encoder(tjInitCompress(), tjDestroy);
    Strip strip;
    uint8_t* file = nullptr;
    const int status =
            tjCompressFromYUVPlanes(encoder.get(), planes, static_cast<int>(picture.width), strides,
                                    static_cast<int>(picture.height), TJSAMP_420, &file,
                                    &strip.size, quality, TJFLAG_ACCURATEDCT);
    strip.file.reset(file);
    if (status != 0) return Failure{tjGetErrorStr2(encoder.get())};
    if (!FindParts(&strip)) return Failure{"libjpeg wrote a file without a scan"};
    return strip;
}

Result<Done> Check(const Nv12View& picture, const JpegSettings& settings) {
    if (picture.width > kMaxSide || picture.height > kMaxSide) {
        return Failure{"picture of " + Size(picture.width, picture.height) +
                       ": a JPEG side has at most " + std::to_string(kMaxSide) + " pixels"};
    }
    if (ExifOrientation(settings.orientationDegrees) == 0) {
        return Failure{"orientation of " + std::to_string(settings.orientationDegrees) +
                       " degrees: 0, 90, 180 and 270 are possible"};
    }
    if (settings.quality < 1 || settings.quality > 100) {
        return Failure{"JPEG quality " + std::to_string(settings.quality) +
                       ": 1 to 100 are possible"};
    }
    return CheckNv12(picture, "picture");
}

// The header of the whole file, from the first strip's.
std::vector<uint8_t> Header(const Strip& first, const Nv12View& picture, uint8_t orientation) {
    // APP1: a little-endian TIFF structure with the orientation as its one entry.
    const uint8_t exif[] = {
            kMarker, 0xe1, 0,   34,                                     // marker, length
            'E',     'x',  'i', 'f', 0, 0,                              // identifier
            'I',     'I',  42,  0,   8, 0, 0, 0,                        // directory at 8
            1,       0,                                                 // entries
            0x12,    0x01, 3,   0,   1, 0, 0, 0, orientation, 0, 0, 0,  // SHORT, one value
            0,       0,    0,   0,                                      // no other directory
    };
    const auto high = [](uint32_t number) { return static_cast<uint8_t>(number >> 8); };
    const auto low = [](uint32_t number) { return static_cast<uint8_t>(number & 0xff); };
    const uint32_t interval = (picture.width + kMcuSide - 1) / kMcuSide * kStripMcuRows;
    const uint8_t restart[] = {kMarker, 0xdd, 0, 4, high(interval), low(interval)};
    const uint8_t* const file = first.file.get();
    constexpr size_t kApp0End = kMarkerBytes + 18;  // JFIF's own segment has to be the first
    std::vector<uint8_t> header(file, file + first.data);
    header[first.height] = high(picture.height);
    header[first.height + 1] = low(picture.height);
    header.insert(header.begin() + static_cast<ptrdiff_t>(first.scan), restart,
                  restart + sizeof(restart));
    header.insert(header.begin() + kApp0End, exif, exif + sizeof(exif));
    return header;
}

}  // namespace

uint16_t ExifOrientation(int32_t degrees) {
    constexpr uint16_t kOrientations[] = {1, 6, 3, 8};
    return degrees % 90 == 0 && degrees >= 0 && degrees < 360 ? kOrientations[degrees / 90] : 0;
}

Result<size_t> EncodeJpeg(const Nv12View& picture, const JpegSettings& settings, uint8_t* out,
                          size_t capacity, const Execution& execution) {
    const Result<Done> checked = Check(picture, settings);
    if (!checked.Ok()) return checked.GetFailure();

    const uint32_t count = (picture.height + kRowsOfStrip - 1) / kRowsOfStrip;
    std::vector<Result<Strip>> strips;
    for (uint32_t i = 0; i < count; ++i) strips.emplace_back(Strip());
    ParallelFor(count, execution.threads, [&](uint32_t i, uint32_t) {
        const size_t top = size_t{i} * kRowsOfStrip;
        Nv12View part = picture;
        part.y += top * picture.strideBytes;
        part.uv += top / 2 * picture.strideBytes;
        part.height = std::min(kRowsOfStrip, picture.height - i * kRowsOfStrip);
        strips[i] = EncodeStrip(part, settings.quality);
    });
    size_t total = 0;
    for (const Result<Strip>& strip : strips) {
        if (!strip.Ok()) return strip.GetFailure();
        total += strip.Value().size - strip.Value().data;
    }
    const std::vector<uint8_t> header =
            Header(strips[0].Value(), picture, ExifOrientation(settings.orientationDegrees));
    total += header.size();
    if (total > capacity) {
        return Failure{"the JPEG file of " + std::to_string(total) + " bytes does not fit into " +
                       std::to_string(capacity) + " bytes"};
    }
    uint8_t* to = std::copy(header.begin(), header.end(), out);
    for (uint32_t i = 0; i < count; ++i) {
        const Strip& strip = strips[i].Value();
        to = std::copy(strip.file.get() + strip.data, strip.file.get() + strip.size, to);
        // Each strip brings its end marker; between two strips a restart marker replaces it.
        if (i + 1 < count) to[-1] = static_cast<uint8_t>(kRestart + i % 8);
    }
    return total;
}

}  // namespace imaging
