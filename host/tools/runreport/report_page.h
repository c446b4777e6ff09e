// A report for people.
#pragma once

#include <string>

namespace runreport {

// One HTML file with the JSON of reportJson() in it; nothing in `json` can end the element that
// holds it or start another.
std::string reportPage(const std::string& json);

}  // namespace runreport
