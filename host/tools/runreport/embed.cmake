# Style and scripts put into the page, and the page as an array in a header. Wants FOLDER and OUTPUT.
cmake_minimum_required(VERSION 3.20)
file(READ ${FOLDER}/style.css STYLE)
set(SCRIPT)
foreach(script text overview timeline log)
    file(READ ${FOLDER}/${script}.js part)
    string(APPEND SCRIPT "${part}")
endforeach()
file(READ ${FOLDER}/page.html page)
string(REPLACE "@STYLE@" "${STYLE}" page "${page}")
string(REPLACE "@SCRIPT@" "${SCRIPT}" page "${page}")
file(WRITE ${OUTPUT}.html "${page}")
file(READ ${OUTPUT}.html bytes HEX)
string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes ${bytes})
file(WRITE ${OUTPUT} "// The report's page, made by embed.cmake.
#pragma once
#include <string_view>
namespace runreport {
inline constexpr char kPageBytes[] = {${bytes}};
inline constexpr std::string_view kPage(kPageBytes, sizeof kPageBytes);
}  // namespace runreport
")
