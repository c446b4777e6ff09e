// Times of things to compare, taken in turns so that a busy machine disturbs all alike, and shown
// as rows of one Markdown table; and the stand-in device that everything is measured in.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace bench {

constexpr int kRounds = 15;

struct Subject {
    std::string name;
    std::function<void()> run;          // what is timed
    std::function<void()> before = {};  // comes first and is not timed; may be empty
    double mark = 0;                    // the most that the ratio to the baseline may be; 0: none
    double share = 1;                   // the part of the time that is shown: 1.0 / calls
};

// Times every subject once in each round and prints the medians under a heading, with their ratios
// to subject `baseline`.
void Compare(const std::string& title, const std::vector<Subject>& subjects, size_t baseline = 0);

// Rows for times that were taken elsewhere, in milliseconds.
void PrintTimes(const std::string& title, const std::vector<Subject>& subjects,
                const std::vector<double>& milliseconds, size_t baseline = 0);

// Milliseconds of a clock that only goes forward.
double Now();
// Of an odd count.
double Median(std::vector<double> values);

// Ends the program with a sentence unless `done`.
void Require(bool done, const std::string& what);

// Goes on inside a device with plane layouts, whose data folder holds the source files: this
// program starts anew in it, and the call returns there. Ends the program where that fails.
void GoIntoDevice();

// The device's folder of frames, as the programs in it see it.
inline constexpr char kFrameFolder[] = "/data/vendor/camera/offlinecameratest/";

// Starts a program, looked up in PATH when it has no '/'. Its standard output and error go to
// `output`, a borrowed descriptor.
pid_t Start(const std::vector<std::string>& command, int output);

// Waits for its end: the exit status, or 128 + the signal.
int WaitFor(pid_t child);

// The groups of comparisons, a file each.
void MeasureImaging();  // the pixel pipeline, beside a naive one and libjpeg-turbo
void MeasureLoading();  // the tool's source loaders, beside the same reads without stdio
void MeasureRuns();     // the tool as a whole, beside copies of its files
void MeasureBinder();   // calls between processes, beside a bare socket; all on one core

// The other process of MeasureBinder: registers an object under the name and serves it until it is
// killed.
[[noreturn]] void ServeEcho(const char* name);

}  // namespace bench
