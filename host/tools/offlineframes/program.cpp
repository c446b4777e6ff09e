// The commands pack, sources, view and compare: a table (words, options, help) and for each a
// function that does it and returns what to print.

#include "program.h"

#include <base/options.h>
#include <stdio.h>
#include <stdlib.h>
#include <terminal/terminal.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "frame_encoder.h"
#include "frame_view.h"
#include "picture_file.h"
#include "source_set.h"

namespace offlineframes {
namespace {

using base::Option;
using Words = std::vector<std::string>;

// What the options of any command give.
struct Given : ViewRequest {
    std::optional<double> sigma;
    std::optional<uint64_t> seed;
    std::string from;
    bool force = false;

    Existing GetExisting() const { return force ? Existing::kReplace : Existing::kKeep; }
};

struct Command {
    const char* name;
    const char* summary;             // a phrase for the list of commands
    const char* purpose;             // sentences for its own help
    std::vector<const char*> words;  // plain words the command needs, all of them
    std::vector<Option> options;
    // Returns the text to print to `output`, stderr for remarks.
    base::Result<std::string> (*run)(const Words& words, const Given& given);
    FILE* output = stderr;
};

Option FormatOption(const char* help, std::optional<FrameFormat>* format) {
    return {"--format", "raw10|nv12", help,
            [format](const std::string& word) -> base::Result<base::Done> {
                for (const FrameFormat known : {FrameFormat::kRaw10, FrameFormat::kNv12}) {
                    if (word == FormatName(known)) *format = known;
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
                    IsUsableSize(read.width, read.height)) {
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

base::Result<std::string> Pack(const Words& words, const Given& given) {
    if (given.seed && !given.sigma) return base::Failure{"--seed needs --noise", true};
    const FrameFormat format = given.format.value_or(FrameFormat::kRaw10);
    FrameGeometry geometry = AllocatorGeometry(format, given.size.value_or(DefaultSize(format)));
    if (given.stride) geometry.stride = static_cast<uint32_t>(*given.stride);
    if (given.scanlines) geometry.scanlines = static_cast<uint32_t>(*given.scanlines);
    const base::Result<size_t> size = FrameBytes(geometry);
    if (!size.Ok()) return base::Failure{size.Error(), true};
    const std::string& output = words[1];
    const base::Result<base::Done> writable = CheckWritable(output, given.GetExisting());
    if (!writable.Ok()) return writable.GetFailure();
    std::optional<Picture> photo;
    if (words[0] != "chart") {
        base::Result<Picture> read = ReadPicture(words[0]);
        if (!read.Ok()) return read.GetFailure();
        photo = std::move(read).Value();
    }
    const Noise noise = {given.sigma.value_or(0), given.seed.value_or(1)};
    const base::Result<base::Done> written =
            WriteFile(output, MakeFrame(photo, geometry, noise), given.GetExisting());
    if (!written.Ok()) return written.GetFailure();
    return output + ": " + Describe(geometry) + ", " + std::to_string(size.Value()) + " bytes\n";
}

base::Result<std::string> Sources(const Words& words, const Given& given) {
    if (given.from.empty()) return MakeSources(words[0], std::nullopt);
    const base::Result<Picture> photo = ReadPicture(given.from);
    if (!photo.Ok()) return photo.GetFailure();
    const base::Result<std::string> made = MakeSources(words[0], photo.Value());
    if (!made.Ok()) return made;
    const PictureSize sensor = DefaultSize(FrameFormat::kRaw10);
    char fit[160];
    snprintf(
            fit, sizeof(fit),
            ": %u x %u as seen upright, scaled by %.3g to cover %u x %u, the overhang cut evenly\n",
            photo.Value().width, photo.Value().height, CoveringScale(photo.Value(), sensor),
            sensor.width, sensor.height);
    return given.from + fit + made.Value();
}

base::Result<std::string> ViewInput(const Words& words, const Given& given) {
    const base::Result<base::Done> writable = CheckWritable(words[1], given.GetExisting());
    if (!writable.Ok()) return writable.GetFailure();
    const base::Result<View> view = ViewFile(words[0], given);
    if (!view.Ok()) return view.GetFailure();
    const Bytes png = EncodePng(view.Value().size, view.Value().rows);
    const base::Result<base::Done> written = WriteFile(words[1], png, given.GetExisting());
    if (!written.Ok()) return written.GetFailure();
    return words[0] + ": " + view.Value().description + "\n";
}

std::string Decibels(double psnr) {
    if (std::isinf(psnr)) return "equal";
    char text[32];
    snprintf(text, sizeof(text), "%.2f dB", psnr);
    return text;
}

base::Result<std::string> Compare(const Words& words, const Given& given) {
    Picture pictures[2];
    for (size_t i = 0; i < 2; ++i) {
        const base::Result<View> view = ViewFile(words[i], given);
        if (!view.Ok()) return view.GetFailure();
        pictures[i] = view.Value().WholePicture();
    }
    const base::Result<Comparison> compared = ComparePictures(pictures[0], pictures[1]);
    if (!compared.Ok()) return base::Failure{words[0] + ", " + words[1] + ": " + compared.Error()};
    const Comparison& result = compared.Value();
    constexpr const char* kNames[3] = {"red", "green", "blue"};
    std::string text = "PSNR";
    for (size_t i = 0; i < 3; ++i) {
        text += std::string("  ") + kNames[i] + " " + Decibels(result.channelPsnr[i]);
    }
    text += "  all " + Decibels(result.psnr) + "\nlargest difference " +
            std::to_string(result.largest);
    if (result.largest > 0) {
        const auto sample = [&](const Picture& picture) {
            return std::to_string(picture.Pixel(result.x, result.y)[result.channel]);
        };
        text += std::string(" in ") + kNames[result.channel] + " at x " + std::to_string(result.x) +
                ", y " + std::to_string(result.y) + ": " + sample(pictures[0]) + " and " +
                sample(pictures[1]);
    }
    return text + "\n";
}

std::vector<Command> Commands(Given* given) {
    const auto force = [&](const char* help) {
        return base::Switch("--force", help, &given->force);
    };
    const Option asStored =
            base::Switch("--as-stored", "JPEG: do not turn it upright by its EXIF orientation",
                         &given->asStored);
    return {{"pack",
             "a photo or the test chart becomes a RAW10 or NV12 frame",
             "Makes a frame from INPUT, a PNG, JPEG or PPM photo or the word \"chart\" for the "
             "built-in\ntest chart. A photo is turned upright, scaled to cover the frame and cut "
             "evenly.",
             {"INPUT", "OUTPUT"},
             {FormatOption("packed RAW10 mosaic (default) or NV12", &given->format),
              SizeOption("picture size (default: raw10 4096x3072, nv12 4000x3000)", &given->size),
              CountOption("--stride", "bytes per row (default: what the allocator chooses)",
                          &given->stride),
              CountOption("--scanlines", "rows of the luma or raw plane (default: the allocator's)",
                          &given->scanlines),
              NoiseOption(&given->sigma),
              base::Number("--seed", "N", "the noise's seed (default 1)", 0, UINT64_MAX,
                           &given->seed),
              force("replace OUTPUT when it exists")},
             Pack},
            {"sources",
             "makes every file the test modes read",
             "Makes the source files of the test modes that are missing under DIR, which stands "
             "for\n/data/vendor/camera: RAW10, NV12 and face detection frames and a metadata "
             "dump.\n"
             "Files that exist are kept.",
             {"DIR"},
             {base::Text("--from", "PHOTO", "a PNG, JPEG or PPM photo instead of the test chart",
                         &given->from)},
             Sources},
            {"view",
             "shows a dump or source file as PNG",
             "Shows a dump, a source file or a picture as PNG. The geometry comes from the file's "
             "name,\nfrom its size or from the options; a JPEG is cut at its real end.",
             {"INPUT", "OUTPUT.png"},
             {FormatOption("what INPUT holds, when its name does not tell", &given->format),
              SizeOption("picture size", &given->size),
              CountOption("--stride", "bytes per row", &given->stride),
              CountOption("--scanlines", "rows of the luma or raw plane", &given->scanlines),
              base::Switch("--mosaic", "raw10: the mosaic as grey, not developed to colour",
                           &given->mosaic),
              asStored, force("replace OUTPUT.png when it exists")},
             ViewInput},
            {"compare",
             "tells in numbers how much two pictures or frames differ",
             "Tells how much two pictures, dumps or source files of equal size differ: PSNR of "
             "each\nchannel and overall, and the largest difference with its place.",
             {"A", "B"},
             {asStored},
             Compare,
             stdout}};
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
int Print(const std::string& text, FILE* output = stdout) {
    if (fputs(text.c_str(), output) >= 0 && fflush(output) == 0) return 0;
    return Fail("cannot write to standard output", 1);
}

bool AsksForHelp(const std::string& word) {
    return word == "--help" || word == "-h";
}

base::Result<std::string> RunCommand(const Command& command, const Words& line,
                                     const Given& given) {
    const auto words = base::ReadOptions(command.options, line, base::Order::kAnywhere);
    if (!words.Ok()) return words.GetFailure();
    const size_t count = words.Value().size();
    const size_t needed = command.words.size();
    if (count < needed) return base::Failure{std::string("missing ") + command.words[count], true};
    if (count > needed) {
        return base::Failure{"unexpected word \"" + words.Value()[needed] + "\"", true};
    }
    // Frames are large: most commands take about a second.
    terminal::Progress progress;
    progress.Show(std::string("offlineframes: ") + command.name + " ...");
    return command.run(words.Value(), given);
}

}  // namespace

int RunProgram(const std::vector<std::string>& words) {
    Given given;
    const std::vector<Command> commands = Commands(&given);
    if (words.empty()) return Misuse("no command given", "");
    if (AsksForHelp(words[0])) return Print(ProgramHelp(commands));
    const auto command = std::find_if(commands.begin(), commands.end(),
                                      [&](const Command& c) { return words[0] == c.name; });
    if (command == commands.end()) return Misuse("unknown command \"" + words[0] + "\"", "");
    const Words line(words.begin() + 1, words.end());
    const auto optionsEnd = std::find(line.begin(), line.end(), "--");
    if (std::any_of(line.begin(), optionsEnd, AsksForHelp)) return Print(HelpOf(*command));
    const base::Result<std::string> report = RunCommand(*command, line, given);
    if (report.Ok()) return Print(report.Value(), command->output);
    if (!report.GetFailure().misuse) return Fail(report.Error(), 1);
    return Misuse(words[0] + ": " + report.Error(), words[0] + " ");
}

}  // namespace offlineframes
