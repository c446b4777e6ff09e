// "compare": two pictures or frames in numbers.

#include <stdio.h>

#include <cmath>

#include "commands.h"
#include "compare.h"
#include "frame_view.h"

namespace offlineframes {
namespace {

std::string decibels(double psnr) {
    if (std::isinf(psnr)) return "equal";
    char text[32];
    snprintf(text, sizeof(text), "%.2f dB", psnr);
    return text;
}

std::string sampleText(const Picture& picture, const Comparison& result) {
    return std::to_string(picture.pixel(result.x, result.y)[result.channel]);
}

}  // namespace

const CommandSpec& compareSpec() {
    static const CommandSpec* const spec = new CommandSpec{
            "compare",
            "tells in numbers how much two pictures or frames differ",
            "Tells how much two pictures, dumps or source files of equal size differ: PSNR of "
            "each\n"
            "channel and overall, and the largest difference with its place.",
            {"A", "B"},
            {{"--as-stored", nullptr, "JPEG: do not turn it upright by its EXIF orientation"}}};
    return *spec;
}

Result<Report> runCompare(const CommandLine& line) {
    Picture pictures[2];
    for (size_t i = 0; i < 2; ++i) {
        ViewRequest request;
        request.asStored = line.has("--as-stored");
        Result<View> view = viewFile(line.arguments[i], request);
        if (!view.ok()) return view.failure();
        pictures[i] = std::move(view).value().picture;
    }
    const Result<Comparison> compared = comparePictures(pictures[0], pictures[1]);
    if (!compared.ok()) {
        return Failure{line.arguments[0] + ", " + line.arguments[1] + ": " + compared.error()};
    }
    const Comparison& result = compared.value();
    Report report;
    report.output = "PSNR  red " + decibels(result.channelPsnr[0]) + "  green " +
                    decibels(result.channelPsnr[1]) + "  blue " + decibels(result.channelPsnr[2]) +
                    "  all " + decibels(result.psnr) + "\n";
    report.output += "largest difference " + std::to_string(result.largest);
    if (result.largest > 0) {
        constexpr const char* kNames[3] = {"red", "green", "blue"};
        report.output += std::string(" in ") + kNames[result.channel] + " at x " +
                         std::to_string(result.x) + ", y " + std::to_string(result.y) + ": " +
                         sampleText(pictures[0], result) + " and " +
                         sampleText(pictures[1], result);
    }
    report.output += "\n";
    return report;
}

}  // namespace offlineframes
