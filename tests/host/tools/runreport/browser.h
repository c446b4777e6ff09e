// A page as a browser draws it.
#pragma once

#include <string>
#include <vector>

namespace runreport_page {

struct Rendered {
    std::string main;     // markup of the page's <main> after its scripts have run
    std::string console;  // the browser's lines about errors and messages of the page
};

// Opens the file with an address fragment ("priority=E"). A test fails here when the browser does
// not end in time or shows nothing.
Rendered render(const std::string& path, const std::string& fragment = "");

// Every text between `start` and the next `end`, as a person reads it: without tags.
std::vector<std::string> textsBetween(const std::string& markup, const std::string& start,
                                      const std::string& end);

}  // namespace runreport_page
