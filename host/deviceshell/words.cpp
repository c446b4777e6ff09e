// Starts a program, with settings for its environment; complains.
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <terminal/terminal.h>
#include <unistd.h>

#include "deviceinit.h"

namespace deviceshell {

bool IsSetting(const std::string& word) {
    return word.find('=') < word.find('/');
}

void Become(Words words) {
    while (IsSetting(words[0])) {
        putenv(strdup(words[0].c_str()));
        words.erase(words.begin());
    }
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    execvp(argv[0], argv.data());
    const int error = errno;
    Complain(words[0] + ": " + strerror(error) +
             (words[0] == "bwrap" ? "; install bubblewrap" : ""));
    _exit(error == ENOENT ? 127 : 126);
}

void Complain(const std::string& sentence) {
    const std::string line =
            terminal::BlankedLine() + "deviceshell: " + terminal::Red(sentence) + "\n";
    // One write, so that lines of several processes do not mix.
    if (write(STDERR_FILENO, line.data(), line.size()) < 0) return;
}

}  // namespace deviceshell
