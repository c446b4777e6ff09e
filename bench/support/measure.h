// Times of things that are to be compared, taken in turn so that a busy machine disturbs all alike.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Subject {
    std::string name;
    std::function<void()> run;          // what is timed
    std::function<void()> before = {};  // what must come first but is not timed; may be empty
};

/** Median wall times in milliseconds, by subject: each runs once in every one of `rounds` rounds,
 * after one that does not count. */
std::vector<double> MedianTimes(const std::vector<Subject>& subjects, int rounds);

/** Milliseconds of a clock that only goes forward. */
double Now();

/** The middle one; of an even count the mean of the two middle ones. */
double Median(std::vector<double> values);

}  // namespace bench
