// The commands pack, sources, view and compare: each a table (words, options, help) and a function
// that does it; the program chooses one, reads its words and prints what it reports.

#include "program.h"

#include <base/options.h>
#include <stdio.h>
#include <stdlib.h>
#include <terminal/terminal.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <memory>
#include <optional>

#include "compare.h"
#include "frame_encoder.h"
#include "frame_view.h"
#include "picture_file.h"
#include "resample.h"
#include "source_set.h"

namespace offlineframes {
namespace {

using base::Option;
using Words = std::vector<std::string>;

// What a command prints when it is done: `output` on standard output, `notes` on standard error.
struct Report {
    std::string output;
    std::string notes;
};

struct Command {
    const char* name;
    const char* summary;             // a phrase for the list of commands
    const char* purpose;             // sentences for its own help
    std::vector<const char*> words;  // plain words the command needs, all of them
    std::vector<base::Option> options;
    std::function<base::Result<Report>(const Words& words)> run;
};

struct PackOptions : KnownGeometry {
    std::optional<double> sigma;
    std::optional<uint64_t> seed;
    bool force = false;
};

struct ViewOptions : ViewRequest {
    bool force = false;
};

Option FormatOption(const char* help, std::optional<FrameFormat>* format) {
    return {"--format", "raw10|nv12", help,
            [format](const std::string& word) -> base::Result<base::Done> {
                for (const FrameFormat known : {FrameFormat::kRaw10, FrameFormat::kNv12}) {
                    if (word == formatName(known)) *format = known;
                }
                if (!*format) return base::Failure{"raw10 or nv12"};
                return base::Done{};
            }};
}

Option SizeOption(const char* help, std::optional<PictureSize>* size) {
    return {"--size", "WxH", help, [size](const std::string& word) -> base::Result<base::Done> {
                PictureSize read;
                const char* const end = word.data() + word.size();
                const auto width = std::from_chars(word.data(), end, read.width);
                const char* const cross = width.ptr;
                if (cross != end && *cross == 'x' &&
                    std::from_chars(cross + 1, end, read.height).ptr == end &&
                    isUsableSize(read.width, read.height)) {
                    *size = read;
                    return base::Done{};
                }
                return base::Failure{"a size like 4096x3072, of at most " +
                                     std::to_string(kMaxPixels) + " pixels and " +
                                     std::to_string(kMaxSide) + " a side"};
            }};
}

Option NoiseOption(std::optional<double>* sigma) {
    constexpr int kLargest = 200;
    return {"--noise", "SIGMA", "add Gaussian noise, in raw levels or nv12 code values",
            [sigma](const std::string& word) -> base::Result<base::Done> {
                char* stop = nullptr;
                const double number = strtod(word.c_str(), &stop);
                if (*stop != 0 || !(number > 0) || number > kLargest) {
                    return base::Failure{"a number above 0, up to " + std::to_string(kLargest)};
                }
                *sigma = number;
                return base::Done{};
            }};
}

Option CountOption(const char* name, const char* help, std::optional<uint64_t>* count) {
    return base::Number(name, "N", help, 1, kMaxFileBytes, count);
}

Option AsStoredOption(bool* given) {
    return base::Switch("--as-stored", "JPEG: do not turn it upright by its EXIF orientation",
                        given);
}

Existing ExistingOf(bool force) {
    return force ? Existing::kReplace : Existing::kKeep;
}

base::Result<Report> Pack(const Words& words, const PackOptions& options) {
    if (options.seed && !options.sigma) return base::Failure{"--seed needs --noise", true};
    const FrameFormat format = options.format.value_or(FrameFormat::kRaw10);
    FrameGeometry geometry = allocatorGeometry(format, options.size.value_or(defaultSize(format)));
    if (options.stride) geometry.stride = static_cast<uint32_t>(*options.stride);
    if (options.scanlines) geometry.scanlines = static_cast<uint32_t>(*options.scanlines);
    const base::Result<size_t> size = frameBytes(geometry);
    if (!size.Ok()) return base::Failure{size.Error(), true};
    const std::string& output = words[1];
    const base::Result<base::Done> writable = checkWritable(output, ExistingOf(options.force));
    if (!writable.Ok()) return writable.GetFailure();
    const Noise noise = {options.sigma.value_or(0), options.seed.value_or(1)};
    std::optional<Picture> photo;
    if (words[0] != "chart") {
        base::Result<Picture> read = readPicture(words[0]);
        if (!read.Ok()) return read.GetFailure();
        photo = std::move(read).Value();
    }
    const base::Result<base::Done> written =
            writeFile(output, makeFrame(photo, geometry, noise), ExistingOf(options.force));
    if (!written.Ok()) return written.GetFailure();
    return Report{"", output + ": " + describe(geometry) + ", " + std::to_string(size.Value()) +
                              " bytes\n"};
}

Command PackCommand() {
    const auto options = std::make_shared<PackOptions>();
    return {"pack",
            "a photo or the test chart becomes a RAW10 or NV12 frame",
            "Makes a frame from INPUT, a PNG, JPEG or PPM photo or the word \"chart\" for the "
            "built-in\ntest chart. A photo is turned upright, scaled to cover the frame and cut "
            "evenly.",
            {"INPUT", "OUTPUT"},
            {FormatOption("packed RAW10 mosaic (default) or NV12", &options->format),
             SizeOption("picture size (default: raw10 4096x3072, nv12 4000x3000)", &options->size),
             CountOption("--stride", "bytes per row (default: what the allocator chooses)",
                         &options->stride),
             CountOption("--scanlines", "rows of the luma or raw plane (default: the allocator's)",
                         &options->scanlines),
             NoiseOption(&options->sigma),
             base::Number("--seed", "N", "the noise's seed (default 1)", 0, UINT64_MAX,
                          &options->seed),
             base::Switch("--force", "replace OUTPUT when it exists", &options->force)},
            [options](const Words& words) { return Pack(words, *options); }};
}

base::Result<Report> MakeSources(const Words& words, const std::string& from) {
    std::optional<Picture> photo;
    char fit[160] = "";
    if (!from.empty()) {
        base::Result<Picture> read = readPicture(from);
        if (!read.Ok()) return read.GetFailure();
        photo = std::move(read).Value();
        snprintf(fit, sizeof(fit),
                 ": %u x %u as seen upright, scaled by %.3g to cover %u x %u, the overhang cut "
                 "evenly\n",
                 photo->width, photo->height, coveringScale(*photo, kSensorSize), kSensorSize.width,
                 kSensorSize.height);
    }
    const base::Result<std::string> made = makeSources(words[0], photo);
    if (!made.Ok()) return made.GetFailure();
    return Report{"", (photo ? from + fit : "") + made.Value()};
}

Command SourcesCommand() {
    const auto from = std::make_shared<std::string>();
    return {"sources",
            "makes every file the test modes read",
            "Makes the source files of the test modes that are missing under DIR, which stands "
            "for\n/data/vendor/camera: RAW10, NV12 and face detection frames and a metadata dump.\n"
            "Files that exist are kept.",
            {"DIR"},
            {base::Text("--from", "PHOTO", "a PNG, JPEG or PPM photo instead of the test chart",
                        from.get())},
            [from](const Words& words) { return MakeSources(words, *from); }};
}

base::Result<Report> ViewInput(const Words& words, const ViewOptions& options) {
    const base::Result<base::Done> writable = checkWritable(words[1], ExistingOf(options.force));
    if (!writable.Ok()) return writable.GetFailure();
    const base::Result<View> view = viewFile(words[0], options);
    if (!view.Ok()) return view.GetFailure();
    const base::Result<Bytes> png = encodePng(view.Value().picture, words[1]);
    if (!png.Ok()) return png.GetFailure();
    const base::Result<base::Done> written =
            writeFile(words[1], png.Value(), ExistingOf(options.force));
    if (!written.Ok()) return written.GetFailure();
    return Report{"", words[0] + ": " + view.Value().description + "\n"};
}

Command ViewCommand() {
    const auto options = std::make_shared<ViewOptions>();
    return {"view",
            "shows a dump or source file as PNG",
            "Shows a dump, a source file or a picture as PNG. The geometry comes from the file's "
            "name,\nfrom its size or from the options; a JPEG is cut at its real end.",
            {"INPUT", "OUTPUT.png"},
            {FormatOption("what INPUT holds, when its name does not tell", &options->format),
             SizeOption("picture size", &options->size),
             CountOption("--stride", "bytes per row", &options->stride),
             CountOption("--scanlines", "rows of the luma or raw plane", &options->scanlines),
             base::Switch("--mosaic", "raw10: the mosaic as grey, not developed to colour",
                          &options->mosaic),
             AsStoredOption(&options->asStored),
             base::Switch("--force", "replace OUTPUT.png when it exists", &options->force)},
            [options](const Words& words) { return ViewInput(words, *options); }};
}

std::string Decibels(double psnr) {
    if (std::isinf(psnr)) return "equal";
    char text[32];
    snprintf(text, sizeof(text), "%.2f dB", psnr);
    return text;
}

base::Result<Report> Compare(const Words& words, const ViewRequest& request) {
    Picture pictures[2];
    for (size_t i = 0; i < 2; ++i) {
        base::Result<View> view = viewFile(words[i], request);
        if (!view.Ok()) return view.GetFailure();
        pictures[i] = std::move(view).Value().picture;
    }
    const base::Result<Comparison> compared = comparePictures(pictures[0], pictures[1]);
    if (!compared.Ok()) return base::Failure{words[0] + ", " + words[1] + ": " + compared.Error()};
    const Comparison& result = compared.Value();
    std::string text = "PSNR  red " + Decibels(result.channelPsnr[0]) + "  green " +
                       Decibels(result.channelPsnr[1]) + "  blue " +
                       Decibels(result.channelPsnr[2]) + "  all " + Decibels(result.psnr) +
                       "\nlargest difference " + std::to_string(result.largest);
    if (result.largest > 0) {
        constexpr const char* kNames[3] = {"red", "green", "blue"};
        const auto sample = [&](const Picture& picture) {
            return std::to_string(picture.pixel(result.x, result.y)[result.channel]);
        };
        text += std::string(" in ") + kNames[result.channel] + " at x " + std::to_string(result.x) +
                ", y " + std::to_string(result.y) + ": " + sample(pictures[0]) + " and " +
                sample(pictures[1]);
    }
    return Report{text + "\n", ""};
}

Command CompareCommand() {
    const auto request = std::make_shared<ViewRequest>();
    return {"compare",
            "tells in numbers how much two pictures or frames differ",
            "Tells how much two pictures, dumps or source files of equal size differ: PSNR of "
            "each\nchannel and overall, and the largest difference with its place.",
            {"A", "B"},
            {AsStoredOption(&request->asStored)},
            [request](const Words& words) { return Compare(words, *request); }};
}

std::string ProgramHelp(const std::vector<Command>& commands) {
    std::string text =
            "usage: offlineframes COMMAND ...\n\n"
            "Makes the frames that the offline camera tests read, and shows those they dump.\n\n";
    for (const Command& command : commands) {
        const std::string name = command.name;
        text += "  " + name + std::string(10 - name.size(), ' ') + command.summary + "\n";
    }
    return text + "\n\"offlineframes COMMAND --help\" tells a command's options.\n";
}

std::string HelpOf(const Command& command) {
    std::string text = std::string("usage: offlineframes ") + command.name + " [OPTION...]";
    for (const char* word : command.words) text += std::string(" ") + word;
    return text + "\n\n" + command.purpose + "\n\n" + base::OptionHelp(command.options);
}

int Fail(const std::string& text, int status) {
    fprintf(stderr, "offlineframes: %s\n", terminal::Red(text).c_str());
    return status;
}

int Misuse(const std::string& text, const std::string& helpOf) {
    return Fail(text + "\n\"offlineframes " + helpOf + "--help\" tells what there is", 2);
}

// Standard output may be a full disk: what could not be printed is a failure.
int Print(const std::string& text) {
    if (fputs(text.c_str(), stdout) >= 0 && fflush(stdout) == 0) return 0;
    return Fail("cannot write to standard output", 1);
}

bool AsksForHelp(const std::string& word) {
    return word == "--help" || word == "-h";
}

base::Result<Report> RunCommand(const Command& command, const std::vector<std::string>& line) {
    const auto words = base::ReadOptions(command.options, line, base::Order::kAnywhere);
    if (!words.Ok()) return words.GetFailure();
    const size_t given = words.Value().size();
    const size_t needed = command.words.size();
    if (given < needed) return base::Failure{std::string("missing ") + command.words[given], true};
    if (given > needed)
        return base::Failure{"unexpected word \"" + words.Value()[needed] + "\"", true};
    // Frames are large: most commands take about a second.
    terminal::Progress progress;
    progress.Show(std::string("offlineframes: ") + command.name + " ...");
    return command.run(words.Value());
}

}  // namespace

int runProgram(const std::vector<std::string>& words) {
    const std::vector<Command> commands = {PackCommand(), SourcesCommand(), ViewCommand(),
                                           CompareCommand()};
    if (words.empty()) return Misuse("no command given", "");
    if (AsksForHelp(words[0])) return Print(ProgramHelp(commands));
    const auto command = std::find_if(commands.begin(), commands.end(),
                                      [&](const Command& c) { return words[0] == c.name; });
    if (command == commands.end()) return Misuse("unknown command \"" + words[0] + "\"", "");
    const std::vector<std::string> line(words.begin() + 1, words.end());
    const auto optionsEnd = std::find(line.begin(), line.end(), "--");
    if (std::any_of(line.begin(), optionsEnd, AsksForHelp)) return Print(HelpOf(*command));
    const base::Result<Report> report = RunCommand(*command, line);
    if (report.Ok()) {
        fputs(report.Value().notes.c_str(), stderr);
        return Print(report.Value().output);
    }
    if (!report.GetFailure().misuse) return Fail(report.Error(), 1);
    return Misuse(words[0] + ": " + report.Error(), words[0] + " ");
}

}  // namespace offlineframes
