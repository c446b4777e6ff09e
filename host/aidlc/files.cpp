// Whole-file reading and writing.
#include "files.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace aidlc {

bool ReadFile(const std::string& path, std::string* text, std::string* error) {
    std::error_code code;
    if (!std::filesystem::is_regular_file(path, code)) {
        *error = "cannot read " + path + ": " + (code ? code.message() : "not a regular file");
        return false;
    }
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    if (!stream.is_open() || stream.bad()) {
        *error = "cannot read " + path + ": " + std::strerror(errno);
        return false;
    }
    *text = content.str();
    return true;
}

bool WriteFile(const std::string& path, const std::string& text, std::string* error) {
    std::error_code code;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), code);
    if (code) {
        *error = "cannot make the folder of " + path + ": " + code.message();
        return false;
    }
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    if (stream.fail()) {
        *error = "cannot write " + path + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

}  // namespace aidlc
