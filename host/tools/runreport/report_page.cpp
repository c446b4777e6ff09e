// Puts style, script and facts into the page.

#include "report_page.h"

#include <string_view>

#include "page_files.h"

namespace runreport {

namespace {

// In JSON a "<" stands in strings only, where this means the same; so no "</script" or "<!--" is
// left for HTML to see.
std::string safeInHtml(const std::string& json) {
    std::string text;
    text.reserve(json.size());
    for (const char letter : json) {
        if (letter == '<') {
            text += "\\u003c";
        } else {
            text += letter;
        }
    }
    return text;
}

}  // namespace

std::string reportPage(const std::string& json) {
    const std::string data = safeInHtml(json);
    std::string page;
    std::string_view rest = page_files::kTemplate;
    const struct {
        std::string_view mark;
        std::string_view content;
    } parts[] = {
            {"@STYLE@", page_files::kStyle}, {"@REPORT@", data}, {"@SCRIPT@", page_files::kScript}};
    for (const auto& part : parts) {
        const size_t at = rest.find(part.mark);
        page += rest.substr(0, at);
        page += part.content;
        rest.remove_prefix(at + part.mark.size());
    }
    page += rest;
    return page;
}

}  // namespace runreport
