// The command line program.
#pragma once

#include <string>
#include <vector>

namespace offlineframes {

// The whole program after main(): `words` without the program's name. Prints and gives the exit
// status: 0 done, 1 failed, 2 wrong command line.
int RunProgram(const std::vector<std::string>& words);

}  // namespace offlineframes
