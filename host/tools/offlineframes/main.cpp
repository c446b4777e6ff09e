// offlineframes: makes source frames and shows dumps.

#include "commands.h"

int main(int argc, char** argv) {
    return offlineframes::runProgram(std::vector<std::string>(argv + 1, argv + argc));
}
