// From the files of a run to its report.
#pragma once

#include "options.h"
#include "report.h"

namespace runreport {

// Reads what there is; what is absent or damaged is named in the report.
Report makeReport(const Options& options);

}  // namespace runreport
