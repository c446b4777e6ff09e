// What is told about the checks: lines for people, JSON for programs.
#pragma once

#include <string>
#include <vector>

#include "check.h"

namespace conformance {

struct Finding {
    const Check* check;
    Verdict verdict;
    double seconds = 0;
};

// The part of a check's name before the dot.
std::string GroupOf(const Check& check);

// One line, such as "FAIL  process.shutter: expected one; came none".
void Print(const Finding& finding);

// How many were skipped, and the last line.
void PrintTotals(const std::vector<Finding>& findings);

// All checks with rule and cure.
void PrintList(const Checks& checks);

// False if the file cannot be written.
bool WriteJson(const std::string& path, const std::vector<Finding>& findings);

bool AnyFailed(const std::vector<Finding>& findings);

}  // namespace conformance
