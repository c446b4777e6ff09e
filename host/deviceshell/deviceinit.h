// What the two programs of deviceshell share: bubblewrap's parent on the user's side (sandbox), and
// the first process in the device (deviceinit).
#pragma once

#include <string>
#include <vector>

namespace deviceshell {

using Words = std::vector<std::string>;

constexpr int kNoDevice = 125;  // status when the device did not come up

// Whether the word is NAME=VALUE. A path is none, although a folder's name may have a '='.
bool IsSetting(const std::string& word);

// Becomes the program, looked for in PATH, after NAME=VALUE words for its environment; where that
// fails it says so and ends with 127 or 126, as a shell does.
[[noreturn]] void Become(Words words);

// Writes one line "deviceshell: ..." to standard error.
void Complain(const std::string& sentence);

}  // namespace deviceshell
