// offlineframes: makes source frames and shows dumps.

#include "commands.h"

int main(int argc, char** argv) {
    return offlineframes::runProgram(base::WordsOf(argc, argv));
}
