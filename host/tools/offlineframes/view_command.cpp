// "view": any frame file as PNG.

#include "commands.h"
#include "file_io.h"
#include "frame_view.h"
#include "picture_file.h"

namespace offlineframes {
namespace {

Result<ViewRequest> readRequest(const CommandLine& line) {
    const auto format = line.format("--format");
    if (!format.ok()) return format.failure();
    const auto size = line.size("--size");
    if (!size.ok()) return size.failure();
    const auto stride = line.number("--stride", 1, kMaxFileBytes);
    if (!stride.ok()) return stride.failure();
    const auto scanlines = line.number("--scanlines", 1, kMaxFileBytes);
    if (!scanlines.ok()) return scanlines.failure();
    ViewRequest request;
    request.format = format.value();
    request.size = size.value();
    if (stride.value()) request.stride = static_cast<uint32_t>(*stride.value());
    if (scanlines.value()) request.scanlines = static_cast<uint32_t>(*scanlines.value());
    request.mosaic = line.has("--mosaic");
    request.asStored = line.has("--as-stored");
    return request;
}

}  // namespace

const CommandSpec& viewSpec() {
    static const CommandSpec* const spec = new CommandSpec{
            "view",
            "shows a dump or source file as PNG",
            "Shows a dump, a source file or a picture as PNG. The geometry comes from the file's "
            "name,\nfrom its size or from the options; a JPEG is cut at its real end.",
            {"INPUT", "OUTPUT.png"},
            {{"--format", "raw10|nv12", "what INPUT holds, when its name does not tell"},
             {"--size", "WxH", "picture size"},
             {"--stride", "N", "bytes per row"},
             {"--scanlines", "N", "rows of the luma or raw plane"},
             {"--mosaic", nullptr, "raw10: the mosaic as grey, not developed to colour"},
             {"--as-stored", nullptr, "JPEG: do not turn it upright by its EXIF orientation"},
             {"--force", nullptr, "replace OUTPUT.png when it exists"}}};
    return *spec;
}

Result<Report> runView(const CommandLine& line) {
    const std::string& output = line.arguments[1];
    const Existing existing = line.has("--force") ? Existing::kReplace : Existing::kKeep;
    const Result<ViewRequest> request = readRequest(line);
    if (!request.ok()) return request.failure();
    const Result<Done> writable = checkWritable(output, existing);
    if (!writable.ok()) return writable.failure();
    const Result<View> view = viewFile(line.arguments[0], request.value());
    if (!view.ok()) return view.failure();
    const Result<Bytes> png = encodePng(view.value().picture, output);
    if (!png.ok()) return png.failure();
    const Result<Done> written = writeFile(output, png.value(), existing);
    if (!written.ok()) return written.failure();
    return Report{"", line.arguments[0] + ": " + view.value().description + "\n"};
}

}  // namespace offlineframes
