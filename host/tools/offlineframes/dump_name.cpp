// Parser of dump and source file names.

#include "dump_name.h"

#include <charconv>
#include <string_view>

namespace offlineframes {
namespace {

constexpr std::string_view kPrefix = "OfflineAidl_CameraId_";

std::string_view lastComponent(std::string_view path) {
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

bool endsWith(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

// The text between "_<key>[" and the next "]", when the name has it.
std::optional<std::string_view> bracketed(std::string_view name, std::string_view key) {
    const std::string opening = "_" + std::string(key) + "[";
    const size_t start = name.rfind(opening);
    if (start == std::string_view::npos) return std::nullopt;
    const std::string_view rest = name.substr(start + opening.size());
    const size_t end = rest.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    return rest.substr(0, end);
}

// A plain positive number a frame can have; anything else counts as unknown.
std::optional<uint32_t> usableNumber(std::optional<std::string_view> text) {
    if (!text) return std::nullopt;
    uint32_t number = 0;
    const char* const end = text->data() + text->size();
    const auto [stop, error] = std::from_chars(text->data(), end, number);
    if (error != std::errc() || stop != end || number == 0) return std::nullopt;
    return number;
}

}  // namespace

std::optional<DumpName> parseDumpName(const std::string& path) {
    const std::string_view name = lastComponent(path);
    if (name.substr(0, kPrefix.size()) != kPrefix) return std::nullopt;
    DumpName dump;
    if (endsWith(name, ".jpg")) {
        dump.width = usableNumber(bracketed(name, "Width"));
        dump.height = usableNumber(bracketed(name, "Height"));
        return dump;
    }
    if (!endsWith(name, ".raw") && !endsWith(name, ".yuv")) return std::nullopt;
    dump.stride = usableNumber(bracketed(name, "Stride"));
    dump.scanlines = usableNumber(bracketed(name, "Scanline"));
    return dump;
}

std::optional<FrameGeometry> sourceFileGeometry(const std::string& path) {
    const std::string_view name = lastComponent(path);
    if (name == "4096_3072_RAW10.raw") return allocatorGeometry(FrameFormat::kRaw10, {4096, 3072});
    if (name == "4000_3000_NV12.yuv") return allocatorGeometry(FrameFormat::kNv12, {4000, 3000});
    if (name == "mmf_fd.yuv") return allocatorGeometry(FrameFormat::kNv12, {640, 480});
    return std::nullopt;
}

}  // namespace offlineframes
