// What log and trace together say about a run: why it went wrong, never more than they show.
#pragma once

#include <vector>

#include "report.h"

namespace runreport {

// Of calls that failed, waits that timed out, late callbacks, dumps and sources.
std::vector<Problem> FindConclusions(const Report& report);

// Whether another problem tells what this error line does: that of a crash on a device, or of the
// call that a service answered with it.
bool IsToldElsewhere(const Report& report, const runlog::Line& line);

// Sets cause and cure of an error line where log and trace tell them, and the time of a program's
// end.
void ConcludeLine(const Report& report, const runlog::Line& line, Problem* problem);

// What the tool was in when a signal ended it; empty where log and trace do not tell.
std::string CauseOfSignal(const Report& report);

}  // namespace runreport
