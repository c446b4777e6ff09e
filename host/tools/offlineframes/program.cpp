// The program: a table of commands (words, options, help) and for each a function that does it and
// returns what to print. It ends with 0: done, 1: failed, 2: wrong command line.

#include <base/options.h>
#include <stdio.h>
#include <stdlib.h>
#include <terminal/terminal.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <new>

#include "frame_encoder.h"
#include "frame_view.h"
#include "source_set.h"

namespace offlineframes {
namespace {

using base::Option;
using Words = std::vector<std::string>;

// What the options of any command give.
struct Given : ViewRequest {
    double sigma = 0;
    std::optional<uint64_t> seed;
    std::string from;
    bool force = false;
};

struct Command {
    const char* name;
    const char* summary;  // a phrase for the list of commands
    const char* purpose;  // sentences for its own help
    Words words;          // plain words the command needs, all of them
    std::vector<Option> options;
    // Returns the text to print to `output`, stderr for remarks.
    Result<std::string> (*run)(const Words& words, const Given& given);
    FILE* output = stderr;
};

Option FormatOption(const char* help, Given* given) {
    return {"--format", "raw10|nv12", help, [given](const std::string& word) -> Result<Done> {
                for (const FrameFormat known : {FrameFormat::kRaw10, FrameFormat::kNv12}) {
                    if (word == FormatName(known)) given->format = known;
                }
                if (!given->format) return Failure{"raw10 or nv12"};
                return Done{};
            }};
}

Option SizeOption(const char* help, Given* given) {
    return {"--size", "WxH", help, [given](const std::string& word) -> Result<Done> {
                auto& [width, height] = given->size;
                const char* const end = word.data() + word.size();
                const char* const cross = std::from_chars(word.data(), end, width).ptr;
                if (cross != end && *cross == 'x' &&
                    std::from_chars(cross + 1, end, height).ptr == end &&
                    IsUsableSize(width, height)) {
                    return Done{};
                }
                return Failure{"a size like 4096x3072, of at most " + std::to_string(kMaxPixels) +
                               " pixels and " + std::to_string(kMaxSide) + " a side"};
            }};
}

Option NoiseOption(Given* given) {
    return {"--noise", "SIGMA", "add Gaussian noise, in raw levels or nv12 code values",
            [given](const std::string& word) -> Result<Done> {
                char* stop = nullptr;
                given->sigma = strtod(word.c_str(), &stop);
                if (*stop == 0 && given->sigma > 0 && given->sigma <= 200) return Done{};
                return Failure{"a number above 0, up to 200"};
            }};
}

Option CountOption(const char* name, const char* help, std::optional<uint64_t>* count) {
    return base::Number(name, "N", help, 1, kMaxFileBytes, count);
}

// Fails when the command could not write its output, before that is made. Views are named .png; a
// frame may not be named like a picture.
Result<Done> CheckOutput(const Words& words, const Given& given, bool isPicture) {
    const std::filesystem::path output = words[1];
    std::error_code unknown;
    if (std::filesystem::equivalent(words[0], output, unknown)) {
        return Failure{words[1] + ": is the input; choose another name for the output"};
    }
    std::string ending = output.extension();
    for (char& letter : ending) letter = static_cast<char>(tolower(letter));
    if (isPicture && ending != ".png") {
        return Failure{words[1] + ": views are PNG files; choose a name that ends in .png"};
    }
    if (!isPicture &&
        (ending == ".png" || ending == ".jpg" || ending == ".jpeg" || ending == ".ppm")) {
        return Failure{words[1] + ": is a picture's name; a frame's ends in .raw or .yuv"};
    }
    return CheckWritable(words[1], given.force);
}

// Writes what a command has made and returns what it says then.
Result<std::string> Save(const std::string& path, const Bytes& bytes, const std::string& said) {
    const Result<Done> written = WriteFile(path, bytes);
    if (!written.Ok()) return written.GetFailure();
    return said + "\n";
}

Result<std::string> Pack(const Words& words, const Given& given) {
    if (given.seed && given.sigma == 0) return Failure{"--seed needs --noise", true};
    const FrameFormat format = given.format.value_or(FrameFormat::kRaw10);
    FrameGeometry geometry =
            AllocatorGeometry(format, given.size.width != 0 ? given.size : DefaultSize(format));
    geometry.stride = static_cast<uint32_t>(given.stride.value_or(geometry.stride));
    geometry.scanlines = static_cast<uint32_t>(given.scanlines.value_or(geometry.scanlines));
    const Result<size_t> bytes = FrameBytes(geometry);
    if (!bytes.Ok()) return Failure{bytes.Error(), true};
    const Result<Done> writable = CheckOutput(words, given, false);
    if (!writable.Ok()) return writable.GetFailure();
    const Noise noise = {given.sigma, given.seed.value_or(1)};
    Bytes frame;
    if (words[0] == "chart") {
        frame = MakeFrame(nullptr, geometry, noise);
    } else {
        const Result<Picture> photo = ReadPicture(words[0]);
        if (!photo.Ok()) return photo.GetFailure();
        frame = MakeFrame(&photo.Value(), geometry, noise);
    }
    return Save(
            words[1], frame,
            words[1] + ": " + Describe(geometry) + ", " + std::to_string(bytes.Value()) + " bytes");
}

Result<std::string> Sources(const Words& words, const Given& given) {
    if (given.from.empty()) return MakeSources(words[0], nullptr);
    const Result<Picture> read = ReadPicture(given.from);
    if (!read.Ok()) return read.GetFailure();
    const Picture& photo = read.Value();
    const Result<std::string> made = MakeSources(words[0], &photo);
    if (!made.Ok()) return made;
    const PictureSize sensor = DefaultSize(FrameFormat::kRaw10);
    const double scale = CoveringScale(photo, sensor);
    const int decimals = std::clamp(2 - static_cast<int>(std::floor(std::log10(scale))), 0, 3);
    char fit[160];
    snprintf(
            fit, sizeof(fit),
            ": %u x %u as seen upright, scaled by %.*f to cover %u x %u, the overhang cut evenly\n",
            photo.width, photo.height, decimals, scale, sensor.width, sensor.height);
    return given.from + fit + made.Value();
}

Result<std::string> ViewInput(const Words& words, const Given& given) {
    const Result<Done> writable = CheckOutput(words, given, true);
    if (!writable.Ok()) return writable.GetFailure();
    const Result<View> view = ViewFile(words[0], given);
    if (!view.Ok()) return view.GetFailure();
    return Save(words[1], EncodePng(view.Value().size, view.Value().rows),
                words[0] + ": " + view.Value().description);
}

std::string Decibels(double psnr) {
    char text[32];
    snprintf(text, sizeof(text), "%.2f dB", psnr);
    return std::isinf(psnr) ? "equal" : text;
}

Result<std::string> Compare(const Words& words, const Given& given) {
    Picture pictures[2];
    for (size_t i = 0; i < 2; ++i) {
        const Result<View> view = ViewFile(words[i], given);
        if (!view.Ok()) return view.GetFailure();
        pictures[i] = view.Value().WholePicture();
    }
    const Result<Comparison> compared = ComparePictures(pictures[0], pictures[1]);
    if (!compared.Ok()) return Failure{words[0] + ", " + words[1] + ": " + compared.Error()};
    const Comparison& result = compared.Value();
    const std::string text = "PSNR  red " + Decibels(result.channelPsnr[0]) + "  green " +
                             Decibels(result.channelPsnr[1]) + "  blue " +
                             Decibels(result.channelPsnr[2]) + "  all " + Decibels(result.psnr) +
                             "\nlargest difference " + std::to_string(result.largest);
    if (result.largest == 0) return text + "\n";
    constexpr const char* kNames[3] = {"red", "green", "blue"};
    char place[100];
    snprintf(place, sizeof(place), " in %s at x %u, y %u: %d and %d\n", kNames[result.channel],
             result.x, result.y, pictures[0].Pixel(result.x, result.y)[result.channel],
             pictures[1].Pixel(result.x, result.y)[result.channel]);
    return text + place;
}

std::vector<Command> Commands(Given* given) {
    const Option asStored =
            base::Switch("--as-stored", "JPEG: do not turn it upright by its EXIF orientation",
                         &given->asStored);
    return {{"pack",
             "a photo or the test chart becomes a RAW10 or NV12 frame",
             "Makes a frame from INPUT, a PNG, JPEG or PPM photo or the word \"chart\" for the "
             "built-in\ntest chart. A photo is turned upright, scaled to cover the frame and cut "
             "evenly;\nwhat is transparent becomes white.",
             {"INPUT", "OUTPUT"},
             {FormatOption("packed RAW10 mosaic (default) or NV12", given),
              SizeOption("picture size (default: raw10 4096x3072, nv12 4000x3000)", given),
              CountOption("--stride", "bytes per row (default: what the allocator chooses)",
                          &given->stride),
              CountOption("--scanlines", "rows of the luma or raw plane (default: the allocator's)",
                          &given->scanlines),
              NoiseOption(given),
              base::Number("--seed", "N", "the noise's seed (default 1)", 0, UINT64_MAX,
                           &given->seed),
              base::Switch("--force", "replace OUTPUT when it exists", &given->force)},
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
             {FormatOption("what INPUT holds, when its name does not tell", given),
              SizeOption("picture size", given),
              CountOption("--stride", "bytes per row", &given->stride),
              CountOption("--scanlines", "rows of the luma or raw plane", &given->scanlines),
              base::Switch("--mosaic", "raw10: the mosaic as grey, not developed to colour",
                           &given->mosaic),
              asStored,
              base::Switch("--force", "replace OUTPUT.png when it exists", &given->force)},
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
    for (const std::string& word : command.words) text += " " + word;
    return text + "\n\n" + command.purpose + "\n\n" + base::OptionHelp(command.options);
}

bool AsksForHelp(const std::string& word) {
    return word == "--help" || word == "-h";
}

Result<std::string> RunCommand(const Command& command, const Words& line, const Given& given) {
    const auto read = base::ReadOptions(command.options, line, base::Order::kAnywhere);
    if (!read.Ok()) return read.GetFailure();
    const Words& words = read.Value();
    const size_t needed = command.words.size();
    if (words.size() < needed) return Failure{"missing " + command.words[words.size()], true};
    if (words.size() > needed) return Failure{"unexpected word \"" + words[needed] + "\"", true};
    // Frames are large: most commands take about a second.
    terminal::Progress progress;
    progress.Show(std::string("offlineframes: ") + command.name + " ...");
    return command.run(words, given);
}

// What the command line asks for, and where it is printed. A misuse names whose help to read.
Result<std::string> Answer(const Words& words, FILE** output) {
    const auto misuse = [](const std::string& text, const std::string& helpOf) {
        return Failure{text + "\n\"offlineframes " + helpOf + "--help\" tells what there is", true};
    };
    Given given;
    const std::vector<Command> commands = Commands(&given);
    if (words.empty()) return misuse("no command given", "");
    if (AsksForHelp(words[0])) return ProgramHelp(commands);
    const auto command = std::find_if(commands.begin(), commands.end(),
                                      [&](const Command& c) { return words[0] == c.name; });
    if (command == commands.end()) return misuse("unknown command \"" + words[0] + "\"", "");
    const Words line(words.begin() + 1, words.end());
    const auto optionsEnd = std::find(line.begin(), line.end(), "--");
    if (std::any_of(line.begin(), optionsEnd, AsksForHelp)) return HelpOf(*command);
    *output = command->output;
    const Result<std::string> report = RunCommand(*command, line, given);
    if (report.Ok() || !report.GetFailure().misuse) return report;
    return misuse(words[0] + ": " + report.Error(), words[0] + " ");
}

}  // namespace
}  // namespace offlineframes

int main(int argc, char** argv) {
    std::set_new_handler([] {
        fputs("offlineframes: not enough memory for a picture of this size\n", stderr);
        _exit(1);
    });
    FILE* output = stdout;
    base::Result<std::string> answer = offlineframes::Answer(base::WordsOf(argc, argv), &output);
    // Standard output may be a full disk: what could not be printed is a failure.
    if (answer.Ok() && (fputs(answer.Value().c_str(), output) < 0 || fflush(output) != 0)) {
        answer = base::Failure{"cannot write to standard output"};
    }
    if (answer.Ok()) return 0;
    fprintf(stderr, "offlineframes: %s\n", terminal::Red(answer.Error()).c_str());
    return answer.GetFailure().misuse ? 2 : 1;
}
