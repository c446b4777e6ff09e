// A report for programs.
#pragma once

#include <string>

#include "report.h"

namespace runreport {

// UTF-8; bytes of the inputs that are none are replaced by U+FFFD.
std::string reportJson(const Report& report);

}  // namespace runreport
