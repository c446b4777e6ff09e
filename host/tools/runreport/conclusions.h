// What log and trace together say about a run: why it went wrong, never more than they show.
#pragma once

#include <vector>

#include "report.h"

namespace runreport {

// Of calls that failed, waits that timed out, late callbacks, dumps and sources.
std::vector<Problem> FindConclusions(const Report& report);

// Whether an error line of a service only repeats what it answered to a call.
bool RepeatsAnswer(const Report& report, const runlog::Line& line);

// Sets cause and cure of an error line where log and trace tell them, and the time of a program's
// end.
void ConcludeLine(const Report& report, const runlog::Line& line, Problem* problem);

// What the tool was in when a signal ended it; empty where log and trace do not tell.
std::string CauseOfSignal(const Report& report);

}  // namespace runreport
