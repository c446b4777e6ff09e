// "sources": every file the test modes read.

#include "commands.h"
#include "picture_file.h"
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

Result<Report> runSources(const CommandLine& line) {
    std::optional<Picture> photo;
    const auto from = line.options.find("--from");
    if (from != line.options.end()) {
        Result<Picture> read = readPicture(from->second);
        if (!read.ok()) return read.failure();
        photo = std::move(read).value();
    }
    const Result<std::string> made = makeSources(line.arguments[0], photo);
    if (!made.ok()) return made.failure();
    return Report{"", made.value()};
}

}  // namespace offlineframes
