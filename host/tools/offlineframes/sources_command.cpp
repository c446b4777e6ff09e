// "sources": every file the test modes read.

#include <stdio.h>

#include "commands.h"
#include "picture_file.h"
#include "resample.h"
#include "source_set.h"

namespace offlineframes {

const CommandSpec& sourcesSpec() {
    static const CommandSpec* const spec = new CommandSpec{
            "sources",
            "makes every file the test modes read",
            "Makes the source files of the test modes that are missing under DIR, which stands "
            "for\n"
            "/data/vendor/camera: RAW10, NV12 and face detection frames and a metadata dump.\n"
            "Files that exist are kept.",
            {"DIR"},
            {{"--from", "PHOTO", "a PNG, JPEG or PPM photo instead of the test chart"}}};
    return *spec;
}

namespace {

// How the frames show a photo of another size, on one line.
std::string describeFit(const std::string& name, const Picture& photo) {
    const double scale = coveringScale(photo, kSensorSize);
    char text[160];
    snprintf(
            text, sizeof text,
            ": %u x %u as seen upright, scaled by %.3g to cover %u x %u, the overhang cut evenly\n",
            photo.width, photo.height, scale, kSensorSize.width, kSensorSize.height);
    return name + text;
}

}  // namespace

Result<Report> runSources(const CommandLine& line) {
    std::optional<Picture> photo;
    std::string fit;
    const auto from = line.options.find("--from");
    if (from != line.options.end()) {
        Result<Picture> read = readPicture(from->second);
        if (!read.ok()) return read.failure();
        photo = std::move(read).value();
        fit = describeFit(from->second, *photo);
    }
    const Result<std::string> made = makeSources(line.arguments[0], photo);
    if (!made.ok()) return made.failure();
    return Report{"", fit + made.value()};
}

}  // namespace offlineframes
