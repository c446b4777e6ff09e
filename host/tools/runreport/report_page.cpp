// Puts the facts into the page.

#include <string_view>

#include "report.h"

namespace runreport {

constexpr std::string_view kPage =
#include "page.html.inc"
        ;

std::string ReportPage(const std::string& json) {
    constexpr std::string_view kMark = "{report}";
    const size_t at = kPage.find(kMark);
    std::string page(kPage.substr(0, at));
    // In JSON a "<" is only ever part of a string, where its escape means the same. So HTML sees no
    // "</script" or "<!--".
    for (const char letter : json) {
        if (letter == '<') {
            page += "\\u003c";
        } else {
            page += letter;
        }
    }
    page += kPage.substr(at + kMark.size());
    return page;
}

}  // namespace runreport
