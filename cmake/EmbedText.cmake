# SPDX-License-Identifier: MIT
# Makes a C++ source of the page's files: raw strings of whole lines, as long as
# every compiler takes them.
#
#     cmake -D OUTPUT=FILE.cpp -D FOLDER=explain -P EmbedText.cmake
function(embed result name)
    set(text "")
    foreach(file IN LISTS ARGN)
        file(READ ${FOLDER}/${file} part)
        string(APPEND text "${part}")
    endforeach()
    string(LENGTH "${text}" length)
    set(made "const char* const ${name} =\n")
    set(at 0)
    while(at LESS length)
        string(SUBSTRING "${text}" ${at} 8000 part)
        string(FIND "${part}" "\n" lineEnd REVERSE)
        math(EXPR size "${lineEnd} + 1")
        string(SUBSTRING "${part}" 0 ${size} part)
        string(APPEND made "R\"embedded(${part})embedded\"\n")
        math(EXPR at "${at} + ${size}")
    endwhile()
    set(${result} "${${result}}${made};\n\n" PARENT_SCOPE)
endfunction()

set(code "// Made by cmake/EmbedText.cmake.\n#include \"explain/PageFiles.h\"\n\nnamespace telv::tool\n{\n\n")
embed(code s_pageHtml page.html)
embed(code s_pageStyle page.css)
embed(code s_pageScript model.js pane.js page.js)
string(APPEND code "} // namespace telv::tool\n")
file(WRITE ${OUTPUT} "${code}")
