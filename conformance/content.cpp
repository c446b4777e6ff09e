// Checks of what is in the output buffers.
#include <cstring>

#include "device.h"

namespace conformance {

namespace {

struct Jpeg {
    int32_t width = 0, height = 0;
    std::string problem;  // why it is none
};

// Reads the markers up to the scan, and looks for the end right at the file's size.
Jpeg Parse(const std::vector<uint8_t>& bytes, size_t size) {
    Jpeg jpeg;
    const auto big = [&](size_t place) { return bytes[place] << 8 | bytes[place + 1]; };
    size_t place = 2;
    for (uint8_t marker = 0; marker != 0xda;) {  // the scan
        const bool room = place + 9 < size && big(0) == 0xffd8;
        if (!room || bytes[place] != 0xff)
            jpeg.problem = Say("no marker at byte ", room ? place : 0);
        if (!jpeg.problem.empty()) return jpeg;
        marker = bytes[place + 1];
        const bool table = marker == 0xc4 || marker == 0xc8 || marker == 0xcc;
        if (marker >= 0xc0 && marker <= 0xcf && !table) {
            jpeg.height = big(place + 5);
            jpeg.width = big(place + 7);
        }
        place += 2 + static_cast<size_t>(big(place + 2));
    }
    // In a scan, ff is followed by 00 or a restart marker.
    while (place + 2 <= size && big(place) != 0xffd9) ++place;
    if (place + 2 != size) jpeg.problem = Say("FF D9 not at its end but at byte ", place);
    return jpeg;
}

// What the reference service makes of frames that are raw code 341 everywhere, on average: red 200,
// green 146 and blue 176 after white balance and tone curve.
constexpr uint8_t kFlat[] = {0x55, 0xaa, 0x00};  // codes 341, 682, 0
constexpr int kLuma = 166, kBlue = 134, kRed = 153;

Verdict IsTheReferences(Session& session) {
    for (size_t f = 0; f < FramesOf(session.info.opMode); ++f) {
        session.device.pool.Get(session.info.streams[0], f).Fill(kFlat[f]);
    }
    Verdict verdict = session.Exchange("a picture");
    Buffer& output = session.device.pool.Get(session.info.streams.back());
    output.Access([&](const uint8_t* bytes) {
        for (const Plane& plane : output.Planes()) {
            const int64_t width = RowBytes(plane), size = width * plane.heightInSamples;
            for (int64_t i = 0; verdict.Good() && i < size; ++i) {
                const int64_t row = i / width, x = i % width;
                const int value = bytes[plane.offsetInBytes + row * plane.strideInBytes + x];
                const int expected = plane.offsetInBytes == 0 ? kLuma : x % 2 == 0 ? kBlue : kRed;
                if (value == expected) continue;
                verdict = Fail(Say(expected, " in each pixel"),
                               Say(value, " at byte ", x, " of row ", row));
            }
        }
    });
    return verdict;
}

constexpr char kNoPicture[] = "no picture came: see process.result";
constexpr char kNoFile[] = "no file of Y2J to look at";

}  // namespace

void JudgeFile(PlainRun* run) {
    const Stream& stream = run->info.streams.back();
    const uint8_t* const end = run->picture.data() + stream.bufferSize;
    int32_t id = 0, size = 0;
    memcpy(&id, end - 8, sizeof(id));
    memcpy(&size, end - 4, sizeof(size));
    run->Expect("trailer-id", id == 255, "blob id 255, 8 bytes before the stream's buffer size",
                Say(id));
    const bool fits = size >= 4 && size <= stream.bufferSize - 8;
    run->Expect("trailer-size", fits, "the file's size, 4 bytes before the buffer size", Say(size));
    if (!fits) return;
    const Jpeg jpeg = Parse(run->picture, static_cast<size_t>(size));
    run->Expect("jpeg", jpeg.problem.empty(), Say("a JPEG file of ", size, " bytes"), jpeg.problem);
    if (!jpeg.problem.empty()) return;
    const bool upright = jpeg.width == stream.width && jpeg.height == stream.height;
    const bool turned = jpeg.width == stream.height && jpeg.height == stream.width;
    run->Expect("jpeg-size", upright || turned,
                Say(stream.width, " x ", stream.height, ", or turned"),
                Say(jpeg.width, " x ", jpeg.height));
}

const Checks kContentChecks = {
        Noted("whole-picture", "Every byte of the picture is written, in each plane.", kNoPicture),
        Noted("nothing-else", "No byte beside the picture is written.", kNoPicture),
        Noted("follows-input", "Another input makes another picture.", kNoPicture),
        Noted("done", "After the result the output is not written any more.", kNoPicture),
        Noted("trailer-id", "A BLOB buffer ends with blob id 255 and file size.", kNoFile),
        Noted("trailer-size", "The size in the trailer fits into the buffer.", kNoFile),
        Noted("jpeg", "The file is a JPEG file and ends with its size.", kNoFile),
        Noted("jpeg-size", "The JPEG file has the stream's width and height.", kNoFile),
};

const Checks kPhysicsChecks = {
        {"b2y", "B2Y makes the reference service's picture of a flat frame.",
         OnStreams(IsTheReferences, kB2Y)},
        {"mmf", "MMF makes the reference service's picture of three flat frames.",
         OnStreams(IsTheReferences, kMMF)},
};

}  // namespace conformance
