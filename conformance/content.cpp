// Checks of what is in the output buffers.
#include "jpeg.h"
#include "plain_run.h"

namespace conformance {

namespace {

constexpr size_t kTrailerBytes = 8;  // int32 blob id, int32 file size
constexpr int32_t kJpegId = 0xff;

// Looks at the pictures of the modes whose output has planes, up to the first finding.
Verdict EachPicture(Device& device,
                    const std::function<Verdict(const Picture&, const char*)>& look) {
    bool any = false;
    for (const Mode mode : device.Claimed()) {
        const PlainRun& run = device.Plain(mode);
        if (!run.picture.read || mode == Mode::kY2J) continue;
        any = true;
        Verdict found = look(run.picture, NameOf(mode));
        if (!found.Good()) return found;
    }
    return any ? Verdict() : Skip("no picture came of B2Y or MMF: see process.result");
}

Verdict WritesThePicture(Device& device) {
    return EachPicture(device, [](const Picture& picture, const char* mode) -> Verdict {
        if (picture.unwritten == 0) return {};
        return Fail(Say("every byte of ", mode, "'s picture written"),
                    Say(picture.unwritten, " are as before the request, first ",
                        picture.firstUnwritten));
    });
}

Verdict LeavesTheRest(Device& device) {
    return EachPicture(device, [](const Picture& picture, const char* mode) -> Verdict {
        if (picture.outside == 0) return {};
        return Fail(Say("nothing but ", mode, "'s picture written"),
                    Say(picture.outside, " bytes beside it changed, first ", picture.firstOutside));
    });
}

Verdict FollowsTheInput(Device& device) {
    for (const Mode mode : device.Claimed()) {
        const Picture& picture = device.Plain(mode).picture;
        if (!picture.read || !picture.sameForOtherInput) continue;
        return Fail(Say("another picture of ", NameOf(mode), " for another input"),
                    "the same bytes for dark and bright frames");
    }
    return device.Claimed().empty() ? Skip("no mode is taken") : Verdict();
}

Verdict IsDoneWithTheResult(Device& device) {
    for (const Mode mode : device.Claimed()) {
        const Picture& picture = device.Plain(mode).picture;
        if (!picture.read || !picture.changedLater) continue;
        return Fail(Say("no writing to ", NameOf(mode), "'s output after its result"),
                    "bytes that changed between the result and the end of the session");
    }
    return device.Claimed().empty() ? Skip("no mode is taken") : Verdict();
}

// The first picture of Y2J and what its trailer says.
struct Blob {
    const std::vector<uint8_t>& bytes;
    const Stream& stream;
    int32_t id = 0;
    int32_t size = 0;
    Jpeg file = {};
};

Verdict WithBlob(Device& device, bool needsFile, const std::function<Verdict(const Blob&)>& use) {
    const PlainRun& run = device.Plain(Mode::kY2J);
    if (!run.Works() || !run.picture.read) return Skip("no file came of Y2J");
    Blob blob = {run.picture.file, run.info.streams.back()};
    const size_t end = static_cast<size_t>(blob.stream.bufferSize);
    const auto number = [&](size_t place) {
        int32_t value = 0;
        memcpy(&value, &blob.bytes[place], sizeof(value));
        return value;
    };
    blob.id = number(end - kTrailerBytes);
    blob.size = number(end - kTrailerBytes / 2);
    const bool sized = blob.size > 0 && static_cast<size_t>(blob.size) <= end - kTrailerBytes;
    if (sized) blob.file = ParseJpeg(blob.bytes.data(), static_cast<size_t>(blob.size));
    if (needsFile && !sized) return Skip("see content.trailer-size");
    return use(blob);
}

Verdict NamesTheBlob(Device& device) {
    return WithBlob(device, false, [](const Blob& blob) {
        return blob.id == kJpegId ? Verdict()
                                  : Fail(Say("blob id ", kJpegId, " in the buffer's last 8 bytes"),
                                         Say(blob.id));
    });
}

Verdict SizesTheBlob(Device& device) {
    return WithBlob(device, false, [](const Blob& blob) -> Verdict {
        const int32_t room = blob.stream.bufferSize - static_cast<int32_t>(kTrailerBytes);
        if (blob.size > 0 && blob.size <= room) return {};
        return Fail(Say("a file size of 1 to ", room, " in the buffer's last 4 bytes"),
                    Say(blob.size));
    });
}

Verdict IsAJpegFile(Device& device) {
    return WithBlob(device, true, [](const Blob& blob) {
        return blob.file.problem.empty()
                       ? Verdict()
                       : Fail(Say("a JPEG file of ", blob.size, " bytes"), blob.file.problem);
    });
}

Verdict ShowsTheWholePicture(Device& device) {
    return WithBlob(device, true, [](const Blob& blob) -> Verdict {
        const auto width = static_cast<uint32_t>(blob.stream.width);
        const auto height = static_cast<uint32_t>(blob.stream.height);
        const Jpeg& file = blob.file;
        if (!file.problem.empty()) return Skip("see content.jpeg");
        if ((file.width == width && file.height == height) ||
            (file.width == height && file.height == width)) {
            return {};
        }
        return Fail(Say("a picture of ", width, " x ", height, ", or turned"),
                    Say(file.width, " x ", file.height));
    });
}

Verdict CarriesTheOrientation(Device& device) {
    return WithBlob(device, true, [](const Blob& blob) -> Verdict {
        const Jpeg& file = blob.file;
        if (!file.problem.empty()) return Skip("see content.jpeg");
        const bool turned = file.width == static_cast<uint32_t>(blob.stream.height);
        if (turned || file.orientation == 6) return {};
        return Warn(Say("90 degrees were asked for: the picture is not turned, and its EXIF ",
                        "orientation is ", file.orientation, " instead of 6"));
    });
}

}  // namespace

Checks ContentChecks() {
    return {
            {"content.whole-picture", "Every byte of the picture is written, in each plane.",
             "Walk over all rows and the full width of each plane; take strides from the mapper.",
             WritesThePicture},
            {"content.nothing-else", "No byte beside the picture is written.",
             "Write a row's width, not its stride, and only as many rows as the picture has.",
             LeavesTheRest},
            {"content.follows-input", "Another input makes another picture.",
             "Lock the request's own input buffer for each frame.", FollowsTheInput},
            {"content.done-with-result", "After the result the buffer is not written any more.",
             "Unlock the buffer before the result is sent.", IsDoneWithTheResult},
            {"content.trailer-id", "A BLOB buffer ends with the blob id 255 and the file's size.",
             "Write int32 255 at the buffer size minus 8, by the stream's size, not the "
             "allocation's.",
             NamesTheBlob},
            {"content.trailer-size", "The size in the trailer fits into the buffer.",
             "Write the file's size as int32 at the buffer size minus 4.", SizesTheBlob},
            {"content.jpeg", "The file is a JPEG file that ends with its size.",
             "State the bytes from FF D8 to FF D9.", IsAJpegFile},
            {"content.jpeg-size", "The JPEG file shows the stream's width and height.",
             "Encode the whole input.", ShowsTheWholePicture},
            {"content.jpeg-orientation", "The JPEG file follows the orientation of the metadata.",
             "Write the EXIF orientation of the request's JPEG orientation, or turn the picture.",
             CarriesTheOrientation},
    };
}

}  // namespace conformance
