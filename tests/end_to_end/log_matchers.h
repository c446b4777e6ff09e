// What tests say about a run's platform log.
#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace end_to_end {

// The messages contain these, in this order, with any others between.
MATCHER_P(HasInOrder, wanted, "has in order " + ::testing::PrintToString(wanted)) {
    auto next = arg.begin();
    for (const std::string& message : wanted) {
        next = std::find(next, arg.end(), message);
        if (next == arg.end()) {
            *result_listener << "which lacks, at its place, \"" << message << "\"";
            return false;
        }
        ++next;
    }
    return true;
}

inline auto InOrder(std::vector<std::string> messages) {
    return HasInOrder(std::move(messages));
}

}  // namespace end_to_end
