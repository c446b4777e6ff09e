// What deviceshell and the device's first process tell each other over a socket, byte by byte.
#pragma once

namespace deviceshell {

// From the first process, once, when it can take signals. What the terminal sends before, it may
// have missed, and the caller passes on; what comes later reaches it, or the command, by itself.
constexpr unsigned char kHere = 1;

// To the first process: numbers of signals for the command, and once, after all signals that came
// before kHere was read, the word to start.
constexpr unsigned char kStart = 0;

}  // namespace deviceshell
