// Times of things to compare, taken in turns so that a busy machine disturbs all alike, and shown
// as rows of one Markdown table.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

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
// One time that may be at most `most` milliseconds.
void PrintTime(const std::string& title, const std::string& name, double milliseconds, double most);

// What everything is measured on, and the head of the table.
void PrintHead();

// Milliseconds of a clock that only goes forward.
double Now();
// Of an even count the mean of the two middle values.
double Median(std::vector<double> values);

constexpr int kRounds = 15;

// Ends the program with a sentence unless `done`.
void Require(bool done, const std::string& what);

}  // namespace bench
