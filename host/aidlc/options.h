// The command line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace aidlc {

struct Options {
    std::string outputFolder;
    std::vector<std::string> roots;
    int32_t version = 0;  // 0: not given
    std::string hash;
    std::vector<std::string> files;
    bool help = false;
};

extern const char* const kUsage;

/** False with a sentence in error if the words are not a valid command line. */
bool ParseOptions(const std::vector<std::string>& words, Options* options, std::string* error);

}  // namespace aidlc
