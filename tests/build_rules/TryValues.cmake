# SPDX-License-Identifier: MIT
# Values with the characters that CMake, Ninja and the shell make something of reach the tool as they are,
# through both functions.
#
#     cmake -DSOURCE=<top of the tree> -DTOOL=<tlexpand> -DWORK=<folder> -P TryValues.cmake
file(REMOVE_RECURSE ${WORK})
file(WRITE ${WORK}/value.tl "_SEMICOLON_|_DOLLAR_|_QUOTES_|_EMPTY_|eval|two\n")
file(COPY_FILE ${WORK}/value.tl ${WORK}/value.c.tl)
# As in a project that has this one in a subdirectory, whose variables it does not see.
file(WRITE ${WORK}/expander/CMakeLists.txt "
add_executable(telv::tlexpand IMPORTED GLOBAL)
set_target_properties(telv::tlexpand PROPERTIES IMPORTED_LOCATION [[${TOOL}]])
include(${SOURCE}/cmake/TelvExpand.cmake)
")
file(WRITE ${WORK}/CMakeLists.txt "
cmake_minimum_required(VERSION 3.25)
project(values LANGUAGES NONE)
add_subdirectory(expander)
" [=[
tl_expand(OUTPUT one.txt INPUT value.tl
    DEFINES "SEMICOLON=a;b" "DOLLAR=$HOME $$ \${x}" [[QUOTES='a' "b" c]] EMPTY=
    EVALS "@def eval = {1;2}" "@def two = {_MORE_}" OPTIONS -D "MORE=x;y")
add_custom_target(unit ALL)
# A target without a compiler has no directories to search.
function(target_include_directories)
endfunction()
tl_expand_sources(TARGET unit SOURCES value.c.tl
    DEFINES "SEMICOLON=a;b" "DOLLAR=$HOME $$ \${x}" [[QUOTES='a' "b" c]] EMPTY=
    EVALS "@def eval = {1;2}" "@def two = {_MORE_}" OPTIONS -D "MORE=x;y")
add_custom_target(one ALL DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/one.txt)
]=])
foreach(arguments IN ITEMS "-S;${WORK};-B;${WORK}/out;-G;Ninja" "--build;${WORK}/out")
    execute_process(COMMAND ${CMAKE_COMMAND} ${arguments}
        RESULT_VARIABLE status OUTPUT_VARIABLE said ERROR_VARIABLE said)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "cmake ${arguments}: ${said}")
    endif()
endforeach()
foreach(made IN ITEMS one.txt value.c)
    file(READ ${WORK}/out/${made} text)
    if(NOT text STREQUAL "a;b|$HOME $$ \${x}|'a' \"b\" c||1;2|x;y\n")
        message(SEND_ERROR "${made}: ${text}")
    endif()
endforeach()
