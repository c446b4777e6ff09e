// deviceinit: bubblewrap's parent on the user's side, and the first process in the device.
// usage: deviceinit [--terminal] WORDS...
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <terminal/terminal.h>
#include <unistd.h>

#include "deviceinit.h"

namespace deviceshell {

void Become(const Words& argv) {
    std::vector<char*> words;
    for (const std::string& word : argv) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    Complain(argv[0] + ": " + strerror(errno) + (argv[0] == "bwrap" ? "; install bubblewrap" : ""));
    _exit(kNoDevice);
}

void Complain(const std::string& sentence) {
    const std::string line =
            terminal::BlankedLine() + "deviceshell: " + terminal::Red(sentence) + "\n";
    // One write, so that lines of several processes do not mix.
    if (write(STDERR_FILENO, line.data(), line.size()) < 0) return;
}

}  // namespace deviceshell

int main(int argc, char** argv) {
    const bool terminal = argc > 1 && strcmp(argv[1], "--terminal") == 0;
    const deviceshell::Words words(argv + (terminal ? 2 : 1), argv + argc);
    if (getpid() == 1) return deviceshell::RunInside(words, terminal);
    // Descriptors 0 to 2 exist from here on, so that no other becomes the command's input.
    int number = 0;
    while (number >= 0 && number <= STDERR_FILENO) number = open("/dev/null", O_RDWR);
    close(number);
    return deviceshell::RunOutside(words, terminal);
}
