// NV12 to JPEG in strips that threads encode independently of each other.
//
// A JPEG scan may be cut by restart markers, after which nothing refers to what came before. Each
// strip becomes a small JPEG file; its coded data are one restart interval of the large file:
//   header of the first strip, with the large file's height
//   data of strip 0, marker RST0, data of strip 1, marker RST1, .., data of the last strip
//   end marker
// Where the cuts lie depends on the picture's size only, so that the file never depends on threads.
#include <imaging/jpeg.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "jpeg_strip.h"
#include "parallel.h"
#include "plane_checks.h"

namespace imaging {

namespace {

constexpr uint32_t kMaxSide = 65500;  // as libjpeg counts
constexpr uint32_t kStripMcuRows = 16;
constexpr uint32_t kRowsOfStrip = kStripMcuRows * kMcuSide;
static_assert((kMaxSide + kMcuSide - 1) / kMcuSide * kStripMcuRows <= 0xffff,
              "a restart interval has 16 bits");

constexpr uint8_t kMarker = 0xff;
constexpr uint8_t kStartOfFrame = 0xc0;  // baseline
constexpr uint8_t kRestart = 0xd0;       // the first of eight, which take turns
constexpr uint8_t kStartOfScan = 0xda;
constexpr size_t kMarkerBytes = 2;

// Parts of a JPEG file with one scan.
struct JpegParts {
    size_t height = 0;  // of the frame's height
    size_t data = 0;    // where the coded data begin, which go on to the end marker
};

// Returns false for a header without a frame and a scan.
bool FindParts(const FileBytes& file, JpegParts* parts) {
    size_t at = kMarkerBytes;  // behind the start marker
    while (at + kMarkerBytes + 2 <= file.size && file[at] == kMarker) {
        const uint8_t marker = file[at + 1];
        // A segment's length counts its own two bytes and what follows.
        const size_t length = static_cast<size_t>(file[at + 2]) << 8 | file[at + 3];
        if (marker == kStartOfFrame) parts->height = at + kMarkerBytes + 3;
        at += kMarkerBytes + length;
        if (marker != kStartOfScan) continue;
        parts->data = at;
        return parts->height != 0 && parts->data + kMarkerBytes <= file.size;
    }
    return false;
}

std::string Check(const Nv12View& picture, const JpegSettings& settings) {
    std::string problem = CheckNv12(picture, "picture");
    if (problem.empty() && (picture.width > kMaxSide || picture.height > kMaxSide)) {
        problem = "picture of " + Size(picture.width, picture.height) +
                  ": a JPEG side has at most " + std::to_string(kMaxSide) + " pixels";
    }
    if (problem.empty() && ExifOrientation(settings.orientationDegrees) == 0) {
        problem = "orientation of " + std::to_string(settings.orientationDegrees) +
                  " degrees: 0, 90, 180 and 270 are possible";
    }
    if (problem.empty() && (settings.quality < 1 || settings.quality > 100)) {
        problem = "JPEG quality " + std::to_string(settings.quality) + ": 1 to 100 are possible";
    }
    return problem;
}

// A little-endian TIFF structure with the orientation (1..8) as its one entry.
std::array<uint8_t, kExifSegmentBytes> MakeExifSegment(uint16_t orientation) {
    const auto low = static_cast<uint8_t>(orientation & 0xff);
    const auto high = static_cast<uint8_t>(orientation >> 8);
    return {
            'E',  'x',  'i', 'f', 0, 0,                         // identifier
            'I',  'I',  42,  0,   8, 0, 0, 0,                   // little endian, directory at 8
            1,    0,                                            // entries
            0x12, 0x01, 3,   0,   1, 0, 0, 0, low, high, 0, 0,  // orientation, SHORT, one value
            0,    0,    0,   0,                                 // no further directory
    };
}

// Joins the strips' files. @return empty, or what is wrong
std::string Join(std::vector<FileBytes>& strips, uint32_t height, uint8_t* out, size_t capacity,
                 size_t* size) {
    std::vector<JpegParts> parts(strips.size());
    size_t total = 0;
    for (size_t i = 0; i < strips.size(); ++i) {
        if (!FindParts(strips[i], &parts[i])) return "libjpeg wrote a file without a scan";
        total += strips[i].size - (i == 0 ? 0 : parts[i].data);
    }
    if (total > capacity) {
        return "the JPEG file of " + std::to_string(total) + " bytes does not fit into " +
               std::to_string(capacity) + " bytes";
    }
    strips[0][parts[0].height] = static_cast<uint8_t>(height >> 8);
    strips[0][parts[0].height + 1] = static_cast<uint8_t>(height & 0xff);
    uint8_t* to = out;
    for (size_t i = 0; i < strips.size(); ++i) {
        // With the end marker, in whose place a restart marker stands between two strips.
        const size_t begin = i == 0 ? 0 : parts[i].data;
        memcpy(to, &strips[i][begin], strips[i].size - begin);
        to += strips[i].size - begin;
        if (i + 1 < strips.size()) to[-1] = static_cast<uint8_t>(kRestart + i % 8);
    }
    *size = total;
    return {};
}

}  // namespace

uint16_t ExifOrientation(int32_t degrees) {
    constexpr uint16_t kOrientations[] = {1, 6, 3, 8};
    return degrees % 90 == 0 && degrees >= 0 && degrees < 360 ? kOrientations[degrees / 90] : 0;
}

std::string EncodeJpeg(const Nv12View& picture, const JpegSettings& settings, uint8_t* out,
                       size_t capacity, size_t* size, const Execution& execution) {
    if (std::string problem = Check(picture, settings); !problem.empty()) return problem;

    const JpegStripSettings stripSettings = {
            settings.quality, (picture.width + kMcuSide - 1) / kMcuSide * kStripMcuRows,
            MakeExifSegment(ExifOrientation(settings.orientationDegrees))};
    const uint32_t count = (picture.height + kRowsOfStrip - 1) / kRowsOfStrip;
    std::vector<FileBytes> strips(count);
    std::vector<std::string> problems(count);
    ParallelFor(count, execution.threads, [&](uint32_t i, uint32_t) {
        const size_t top = size_t{i} * kRowsOfStrip;
        Nv12View strip = picture;
        strip.y += top * picture.strideBytes;
        strip.uv += top / 2 * picture.strideBytes;
        strip.height = std::min(kRowsOfStrip, picture.height - i * kRowsOfStrip);
        problems[i] = EncodeJpegStrip(strip, stripSettings, &strips[i]);
    });
    for (const std::string& problem : problems) {
        if (!problem.empty()) return problem;
    }
    return Join(strips, picture.height, out, capacity, size);
}

}  // namespace imaging
