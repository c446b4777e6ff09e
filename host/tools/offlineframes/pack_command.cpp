// "pack": a photo or the chart becomes one frame file.

#include <optional>

#include "chart.h"
#include "commands.h"
#include "file_io.h"
#include "frame_encoder.h"
#include "picture_file.h"
#include "resample.h"

namespace offlineframes {
namespace {

constexpr double kLargestSigma = 200;

struct PackRequest {
    FrameGeometry geometry;
    Noise noise;
    Existing existing = Existing::kKeep;
};

Result<Noise> readNoise(const CommandLine& line) {
    const auto sigma = line.positiveReal("--noise", kLargestSigma);
    if (!sigma.ok()) return sigma.failure();
    const auto seed = line.number("--seed", 0, UINT64_MAX);
    if (!seed.ok()) return seed.failure();
    if (seed.value() && !sigma.value()) return Failure{"--seed needs --noise", true};
    return Noise{sigma.value().value_or(0), seed.value().value_or(1)};
}

Result<PackRequest> readRequest(const CommandLine& line) {
    const auto format = line.format("--format");
    if (!format.ok()) return format.failure();
    const auto size = line.size("--size");
    if (!size.ok()) return size.failure();
    const auto stride = line.number("--stride", 1, kMaxFileBytes);
    if (!stride.ok()) return stride.failure();
    const auto scanlines = line.number("--scanlines", 1, kMaxFileBytes);
    if (!scanlines.ok()) return scanlines.failure();
    const Result<Noise> noise = readNoise(line);
    if (!noise.ok()) return noise.failure();

    PackRequest request;
    const FrameFormat chosen = format.value().value_or(FrameFormat::kRaw10);
    request.geometry = allocatorGeometry(chosen, size.value().value_or(defaultSize(chosen)));
    if (stride.value()) request.geometry.stride = static_cast<uint32_t>(*stride.value());
    if (scanlines.value()) request.geometry.scanlines = static_cast<uint32_t>(*scanlines.value());
    const Result<size_t> bytes = frameBytes(request.geometry);
    if (!bytes.ok()) return Failure{bytes.error(), true};
    request.noise = noise.value();
    request.existing = line.has("--force") ? Existing::kReplace : Existing::kKeep;
    return request;
}

Bytes packChart(const PackRequest& request) {
    const FrameGeometry& geometry = request.geometry;
    if (geometry.format == FrameFormat::kRaw10) {
        const ChartFrame frame = chartOnSensor(geometry.size);
        return encodeRaw10(drawSensorChart(frame), geometry, request.noise, frame);
    }
    return encodeNv12(drawVisibleChart(chartOfVisible(geometry.size)), geometry, request.noise);
}

Bytes packPhoto(const Picture& photo, const PackRequest& request) {
    const Picture fitted = fitPicture(photo, request.geometry.size);
    if (request.geometry.format == FrameFormat::kRaw10) {
        return encodeRaw10(fitted, request.geometry, request.noise, std::nullopt);
    }
    return encodeNv12(fitted, request.geometry, request.noise);
}

}  // namespace

const CommandSpec& packSpec() {
    static const CommandSpec* const spec = new CommandSpec{
            "pack",
            "a photo or the test chart becomes a RAW10 or NV12 frame",
            "Makes a frame from INPUT, a PNG, JPEG or PPM photo or the word \"chart\" for the "
            "built-in\ntest chart. A photo is turned upright, scaled to cover the frame and cut "
            "evenly.",
            {"INPUT", "OUTPUT"},
            {{"--format", "raw10|nv12", "packed RAW10 mosaic (default) or NV12"},
             {"--size", "WxH", "picture size (default: raw10 4096x3072, nv12 4000x3000)"},
             {"--stride", "N", "bytes per row (default: what the allocator chooses)"},
             {"--scanlines", "N", "rows of the luma or raw plane (default: the allocator's)"},
             {"--noise", "SIGMA", "add Gaussian noise, in raw levels or nv12 code values"},
             {"--seed", "N", "the noise's seed (default 1)"},
             {"--force", nullptr, "replace OUTPUT when it exists"}}};
    return *spec;
}

Result<Report> runPack(const CommandLine& line) {
    const Result<PackRequest> read = readRequest(line);
    if (!read.ok()) return read.failure();
    const PackRequest& request = read.value();
    const std::string& input = line.arguments[0];
    const std::string& output = line.arguments[1];
    const Result<Done> writable = checkWritable(output, request.existing);
    if (!writable.ok()) return writable.failure();
    Bytes bytes;
    if (input == "chart") {
        bytes = packChart(request);
    } else {
        const Result<Picture> photo = readPicture(input);
        if (!photo.ok()) return photo.failure();
        bytes = packPhoto(photo.value(), request);
    }
    const Result<Done> written = writeFile(output, bytes, request.existing);
    if (!written.ok()) return written.failure();
    return Report{"", output + ": " + describe(request.geometry) + ", " +
                              std::to_string(bytes.size()) + " bytes\n"};
}

}  // namespace offlineframes
