# SPDX-License-Identifier: MIT
# What the CMake functions are told reaches the tool: values as they are, with the characters that CMake, Ninja and
# the shell make something of, through both functions; rows of data, import paths and what is made before; and a
# change of the data expands the text again.
#
#     cmake -DSOURCE=<top of the tree> -DTOOL=<tlexpand> -DWORK=<folder> -P TryValues.cmake
file(REMOVE_RECURSE ${WORK})
file(WRITE ${WORK}/value.tl "_SEMICOLON_|_DOLLAR_|_QUOTES_|_EMPTY_|eval|two\n")
file(COPY_FILE ${WORK}/value.tl ${WORK}/value.h.tl)
file(WRITE ${WORK}/empty.c "int made;\n")
# As in a project that has this one in a subdirectory, whose variables it does not see.
file(WRITE ${WORK}/expander/CMakeLists.txt "
add_executable(telv::tlexpand IMPORTED GLOBAL)
set_target_properties(telv::tlexpand PROPERTIES IMPORTED_LOCATION [[${TOOL}]])
include(${SOURCE}/cmake/TelvExpand.cmake)
")
file(WRITE ${WORK}/CMakeLists.txt "
cmake_minimum_required(VERSION 3.0) # functions keep their own policies
project(values LANGUAGES C)
add_subdirectory(expander)
" [=[
tl_expand(OUTPUT one.txt INPUT value.tl
    DEFINES "SEMICOLON=a;b" "DOLLAR=$HOME $$ \${x}" [[QUOTES='a' "b" c]] EMPTY=
    EVALS "@def eval = {1;2}" "@def two = {_MORE_}" OPTIONS -D "MORE=x;y")
add_library(unit STATIC empty.c)
tl_expand_sources(TARGET unit SOURCES value.h.tl
    DEFINES "SEMICOLON=a;b" "DOLLAR=$HOME $$ \${x}" [[QUOTES='a' "b" c]] EMPTY=
    EVALS "@def eval = {1;2}" "@def two = {_MORE_}" OPTIONS -D "MORE=x;y")
add_custom_target(one ALL DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/one.txt)
add_custom_command(OUTPUT made.tl COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_SOURCE_DIR}/lib/names.tl made.tl)
tl_expand(OUTPUT rows.txt INPUT rows.tl LISTS rows=data/rows.csv:name,number
    IMPORT_PATHS ${CMAKE_CURRENT_BINARY_DIR} lib LINE_DIRECTIVES DEPENDS made.tl
    MAP kept/rows.map SOURCE_MAP kept/rows.txt.map TRACE kept/rows.trace)
add_custom_target(rows ALL DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/rows.txt)
]=])
file(WRITE ${WORK}/data/rows.csv "number,name\n1,one\n2,two\n")
file(WRITE ${WORK}/lib/names.tl "@def shown(x) = {<x>}\n")
file(WRITE ${WORK}/lib/more.tl "@def mark = {!}\n")
file(WRITE ${WORK}/rows.tl
    "@import \"made.tl\"\n@import \"more.tl\"\nfirst\n@for((name, number) in rows){row shown(name)=number@@mark}\n")

include(${CMAKE_CURRENT_LIST_DIR}/RunCMake.cmake)

run(-S ${WORK} -B ${WORK}/out -G Ninja)
run(--build ${WORK}/out)
foreach(made IN ITEMS one.txt value.h)
    file(READ ${WORK}/out/${made} text)
    if(NOT text STREQUAL "a;b|$HOME $$ \${x}|'a' \"b\" c||1;2|x;y\n")
        message(SEND_ERROR "${made}: ${text}")
    endif()
endforeach()

# rows_are(TEXT): what the expansion of the rows must be, with the line directive before it.
function(rows_are wanted)
    file(READ ${WORK}/out/rows.txt text)
    string(REPLACE "${WORK}" "WORK" text "${text}")
    if(NOT text STREQUAL "${wanted}")
        message(FATAL_ERROR "rows.txt has ${text}")
    endif()
endfunction()

rows_are("#line 3 \"WORK/rows.tl\"\nfirst\nrow <one>=1!row <two>=2!\n")
file(WRITE ${WORK}/data/rows.csv "number,name\n3,three\n")
run(--build ${WORK}/out)
rows_are("#line 3 \"WORK/rows.tl\"\nfirst\nrow <three>=3!\n")

# What a run makes besides is known to the build: it comes again when it is gone, and goes with the others.
foreach(besides IN ITEMS rows.map rows.txt.map rows.trace)
    set(file ${WORK}/out/kept/${besides})
    if(NOT EXISTS ${file})
        message(FATAL_ERROR "${file} was not made")
    endif()
    file(REMOVE ${file})
    run(--build ${WORK}/out)
    if(NOT EXISTS ${file})
        message(FATAL_ERROR "${file} was not made again")
    endif()
endforeach()
run(--build ${WORK}/out --target clean)
file(GLOB left ${WORK}/out/kept/*)
if(left)
    message(FATAL_ERROR "cleaning leaves ${left}")
endif()
