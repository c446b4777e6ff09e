// offlineframes: makes source frames and shows dumps.

#include <base/options.h>

#include "program.h"

int main(int argc, char** argv) {
    return offlineframes::RunProgram(base::WordsOf(argc, argv));
}
