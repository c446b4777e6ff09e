// Timing in turns, and medians.
#include "measure.h"

#include <algorithm>
#include <chrono>

namespace bench {

double Now() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(time).count();
}

double Median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    if (values.size() % 2 != 0) return values[middle];
    return (values[middle - 1] + values[middle]) / 2;
}

std::vector<double> MedianTimes(const std::vector<Subject>& subjects, int rounds) {
    std::vector<std::vector<double>> times(subjects.size());
    for (int round = -1; round < rounds; ++round) {
        for (size_t i = 0; i < subjects.size(); ++i) {
            if (subjects[i].before) subjects[i].before();
            const double start = Now();
            subjects[i].run();
            if (round >= 0) times[i].push_back(Now() - start);
        }
    }
    std::vector<double> medians;
    for (std::vector<double>& of : times) medians.push_back(Median(std::move(of)));
    return medians;
}

}  // namespace bench
