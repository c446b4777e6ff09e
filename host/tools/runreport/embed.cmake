# The page's files as arrays in a header. Wants FOLDER and OUTPUT.
function(embed text name)
    set(bytes)
    foreach(file ${ARGN})
        file(READ ${FOLDER}/${file} part HEX)
        string(APPEND bytes ${part})
    endforeach()
    string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes ${bytes})
    string(APPEND ${text} "inline constexpr char k${name}Bytes[] = {${bytes}};\n")
    string(APPEND ${text}
        "inline constexpr std::string_view k${name}(k${name}Bytes, sizeof k${name}Bytes);\n")
    set(${text} "${${text}}" PARENT_SCOPE)
endfunction()

set(header "// The files of page/, made by embed.cmake.\n#pragma once\n\n")
string(APPEND header "#include <string_view>\n\n")
string(APPEND header "namespace runreport::page_files {\n")
embed(header Template template.html)
embed(header Style style.css)
embed(header Script
    dom.js overview.js timeline_rows.js timeline.js timeline_tables.js log.js page.js)
string(APPEND header "}  // namespace runreport::page_files\n")
file(WRITE ${OUTPUT} "${header}")
