// Checks of what is in the output buffers.
#include <cstring>

#include "device.h"

namespace conformance {

namespace {

constexpr int32_t kJpegId = 0xff;

// Looks at the pictures of all modes, up to the first finding.
Run Pictures(Verdict (*look)(const Picture&, const std::string& mode)) {
    const auto lookAtPicture = [look](const PlainRun& run) -> std::optional<Verdict> {
        if (!run.Works()) return std::nullopt;
        return look(run.picture, run.Mode());
    };
    return OnPlainRuns(lookAtPicture, "no picture came: see process.result");
}

Verdict WritesAll(const Picture& picture, const std::string& mode) {
    return Require(picture.unwritten.empty(), "all of " + mode + "'s picture written",
                   "as before the request: " + picture.unwritten);
}

Verdict WritesNoMore(const Picture& picture, const std::string& mode) {
    return Require(picture.outside.empty(), "nothing but " + mode + "'s picture written",
                   "beside it changed: " + picture.outside);
}

Verdict FollowsTheInput(const Picture& picture, const std::string& mode) {
    return Require(!picture.sameForOtherInput, "another picture of " + mode + " for another input",
                   "the same bytes for a dark and a bright frame");
}

Verdict IsDone(const Picture& picture, const std::string& mode) {
    return Require(!picture.changedLater, "no writing to " + mode + "'s output after the result",
                   "bytes that changed until the session was closed");
}

// A JPEG file in a buffer, and what the buffer's last 8 bytes say.
struct Jpeg {
    const Stream& stream;
    int32_t id = 0, size = 0;
    int32_t width = 0, height = 0;
    std::string problem = {};  // why it is none
};

// Reads the markers up to the scan, and looks for the end right at the file's size.
void Parse(const std::vector<uint8_t>& bytes, Jpeg* jpeg) {
    const auto size = static_cast<size_t>(jpeg->size);
    const auto big = [&](size_t place) { return bytes[place] << 8 | bytes[place + 1]; };
    size_t place = 2;
    for (uint8_t marker = 0; marker != 0xda;) {  // the scan
        const bool room = place + 9 < size && big(0) == 0xffd8;
        if (!room || bytes[place] != 0xff)
            jpeg->problem = Say("no marker at byte ", room ? place : 0);
        if (!jpeg->problem.empty()) return;
        marker = bytes[place + 1];
        const bool table = marker == 0xc4 || marker == 0xc8 || marker == 0xcc;
        if (marker >= 0xc0 && marker <= 0xcf && !table) {
            jpeg->height = big(place + 5);
            jpeg->width = big(place + 7);
        }
        place += 2 + static_cast<size_t>(big(place + 2));
    }
    // In a scan, ff is followed by 00 or a restart marker.
    while (place + 2 <= size && big(place) != 0xffd9) ++place;
    if (place + 2 != size) jpeg->problem = Say("FF D9 not at its end but at byte ", place);
}

Run Files(Verdict (*look)(const Jpeg&)) {
    return [look](Device& device) {
        const PlainRun& run = device.Plain(kY2J);
        if (!run.Works()) return Skip("no file came of Y2J");
        Jpeg jpeg = {run.info.streams.back()};
        const uint8_t* const end = run.picture.bytes.data() + jpeg.stream.bufferSize;
        memcpy(&jpeg.id, end - 8, sizeof(jpeg.id));
        memcpy(&jpeg.size, end - 4, sizeof(jpeg.size));
        if (jpeg.size < 4 || jpeg.size > jpeg.stream.bufferSize - 8) jpeg.problem = "no size";
        if (jpeg.problem.empty()) Parse(run.picture.bytes, &jpeg);
        return look(jpeg);
    };
}

Verdict NamesTheBlob(const Jpeg& jpeg) {
    return Require(jpeg.id == kJpegId, "blob id 255, 8 bytes before the stream's buffer size",
                   Say(jpeg.id));
}

Verdict SizesTheBlob(const Jpeg& jpeg) {
    return Require(jpeg.problem != "no size", "the file's size, 4 bytes before the buffer size",
                   Say(jpeg.size));
}

Verdict IsAFile(const Jpeg& jpeg) {
    if (jpeg.problem == "no size") return Skip("see content.trailer-size");
    return Require(jpeg.problem.empty(), Say("a JPEG file of ", jpeg.size, " bytes"), jpeg.problem);
}

Verdict ShowsAll(const Jpeg& jpeg) {
    if (!jpeg.problem.empty()) return Skip("see content.jpeg");
    const int32_t width = jpeg.stream.width, height = jpeg.stream.height;
    const bool upright = jpeg.width == width && jpeg.height == height;
    return Require(upright || (jpeg.width == height && jpeg.height == width),
                   Say(width, " x ", height, ", or turned"), Say(jpeg.width, " x ", jpeg.height));
}

// What the reference service makes of frames that are raw code 512 everywhere, on average: red 247,
// green 182 and blue 218 after white balance and tone curve.
constexpr int kFlat = 512, kLuma = 206, kBlue = 135, kRed = 158;

Verdict IsTheReferences(Device& device, Session& session, const Configuration& info) {
    for (size_t f = 0; f < FramesOf(info.opMode); ++f) {
        const int code = kFlat + (f == 1 ? 4 : f == 2 ? -4 : 0);  // whose two low bits are 0
        Buffer& input = device.pool.Get(info.streams[0], f);
        input.Access([&](uint8_t* bytes) {
            for (uint64_t i = 0; i < input.Size(); ++i) bytes[i] = i % 5 < 4 ? code / 4 : 0;
        });
    }
    Verdict verdict = session.Exchange(info, "a picture");
    Buffer& output = device.pool.Get(info.streams.back());
    output.Access([&](const uint8_t* bytes) {
        for (const Plane& plane : output.Planes()) {
            for (uint64_t i = 0; verdict.Good() && i < plane.rows * plane.rowBytes; ++i) {
                const uint64_t row = i / plane.rowBytes, x = i % plane.rowBytes;
                const int value = bytes[plane.offset + row * plane.stride + x];
                const int expected = plane.offset == 0 ? kLuma : x % 2 == 0 ? kBlue : kRed;
                if (value == expected) continue;
                verdict = Fail(Say(expected, " in each pixel"),
                               Say(value, " at byte ", x, " of row ", row));
            }
        }
    });
    return verdict;
}

}  // namespace

Checks ContentChecks() {
    return {{"content.whole-picture", "Every byte of the picture is written, in each plane.",
             Pictures(WritesAll)},
            {"content.nothing-else", "No byte beside the picture is written.",
             Pictures(WritesNoMore)},
            {"content.follows-input", "Another input makes another picture.",
             Pictures(FollowsTheInput)},
            {"content.done", "After the result the output is not written any more.",
             Pictures(IsDone)},
            {"content.trailer-id", "A BLOB buffer ends with blob id 255 and file size.",
             Files(NamesTheBlob)},
            {"content.trailer-size", "The size in the trailer fits into the buffer.",
             Files(SizesTheBlob)},
            {"content.jpeg", "The file is a JPEG file and ends with its size.", Files(IsAFile)},
            {"content.jpeg-size", "The JPEG file has the stream's width and height.",
             Files(ShowsAll)}};
}

Checks PhysicsChecks() {
    return {{"physics.b2y", "B2Y makes the reference service's picture of a flat frame.",
             OnStreams(IsTheReferences, ConfigurationOf(kB2Y))},
            {"physics.mmf", "MMF makes the reference service's picture of three flat frames.",
             OnStreams(IsTheReferences, ConfigurationOf(kMMF))}};
}

}  // namespace conformance
