# SPDX-License-Identifier: MIT
# Texts that no command line of Make and Ninja can hold reach the tool through the CMake functions as they are:
# what the generators take for variables of theirs, line feeds, what generator expressions give; with each
# generator, and expanded again when they change.
#
#     cmake -DSOURCE=<top of the tree> -DTOOL=<tlexpand> -DWORK=<folder> -P TryTexts.cmake

# Writes the project; its texts end with `end`.
function(write_project end)
    file(WRITE ${WORK}/text.tl "inner" [=[ @("$(LIB)/x $(HOME) $(X)$$(Y) $$ ${Z}") _LINES_ _BRACKETS_ _GIVEN_ more rows _END_]=])
    file(COPY_FILE ${WORK}/text.tl ${WORK}/text.h.tl)
    file(WRITE "${WORK}/$(DATA)/rows.csv" "name\nrow\n")
    file(WRITE ${WORK}/empty.c "int made;\n")
    set(arguments "
    DEFINES ROOT=/usr [[LIB=$(ROOT)/lib]] [[HOME=$(NONE)]] [===[BRACKETS=[[[[[[]=] ]]=]==]]===] \"LINES=one\\ntwo\\r\\nthree\\r\"
        \"GIVEN=$<IF:$<BOOL:1>,$(ROOT);'\\\"$<SEMICOLON>,no>\" \"END=${end}\"
    EVALS [[@def inner = {@(\"$(ROOT)/e\")
  indented}]]
    LISTS \"rows=$(DATA)/rows.csv\"
    OPTIONS -E [[@def more = {@(\"$(ROOT)\")}]]")
    file(WRITE ${WORK}/CMakeLists.txt "
cmake_minimum_required(VERSION 3.25)
project(texts LANGUAGES C)
add_executable(telv::tlexpand IMPORTED)
set_target_properties(telv::tlexpand PROPERTIES IMPORTED_LOCATION [[${TOOL}]])
include(${SOURCE}/cmake/TelvExpand.cmake)
tl_expand(OUTPUT text.txt INPUT text.tl ${arguments})
add_custom_target(text ALL DEPENDS \${CMAKE_CURRENT_BINARY_DIR}/text.txt)
add_library(unit STATIC empty.c)
tl_expand_sources(TARGET unit SOURCES text.h.tl ${arguments})
")
endfunction()

include(${CMAKE_CURRENT_LIST_DIR}/RunCMake.cmake)

foreach(generator IN ITEMS "Ninja" "Unix Makefiles" "Ninja Multi-Config")
    file(REMOVE_RECURSE ${WORK})
    foreach(end IN ITEMS first second)
        write_project(${end})
        run(-S ${WORK} -B ${WORK}/out -G ${generator})
        run(--build ${WORK}/out)
        foreach(made IN ITEMS text.txt text.h)
            file(READ ${WORK}/out/${made} text HEX)
            string(HEX "/usr/e\n  indented /usr/lib/x $(NONE) $(X)$$(Y) $$ \${Z} one\ntwo\r\nthree\r [[[[[[]=] ]]=]==] $(ROOT);'\"; /usr [row] ${end}" wanted)
            if(NOT text STREQUAL wanted)
                file(READ ${WORK}/out/${made} text)
                message(SEND_ERROR "${generator}: ${made}: ${text}")
            endif()
        endforeach()
    endforeach()
endforeach()
