// What went wrong in a run, with cause and cure.
#pragma once

#include <string>
#include <vector>

#include "report.h"

namespace runreport {

inline constexpr size_t kMaxProblems = 200;

/**
 * Every different error line once, waits that timed out, a session that was not opened, inputs
 * left empty, the signal or status that ended the run; in order of time. Causes and cures come
 * from the pages at `explanations`; those of a page that cannot be read are absent, and
 * report->missing says so. Needs the rest of the report.
 */
void findProblems(const std::vector<std::string>& explanations, Report* report);

}  // namespace runreport
