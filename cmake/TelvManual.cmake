# SPDX-License-Identifier: MIT
# The manual page and the completions of shells, made from what the tool's --help prints: in
# ${PROJECT_BINARY_DIR}/manual, at each build of the tool. Without Python 3 there are none.
find_package(Python3 COMPONENTS Interpreter)
set(telvManualDir ${PROJECT_BINARY_DIR}/manual)
set(telvManualFiles
    ${telvManualDir}/tlexpand.1
    ${telvManualDir}/tlexpand.bash
    ${telvManualDir}/_tlexpand
    ${telvManualDir}/tlexpand.fish)

if(Python3_Interpreter_FOUND AND NOT CMAKE_CROSSCOMPILING)
    set(telvMakeManual ${CMAKE_CURRENT_LIST_DIR}/../tools/dev/make-manual)
    set(telvManualTemplate ${CMAKE_CURRENT_LIST_DIR}/../docs/man/tlexpand.1.in)
    add_custom_command(
        OUTPUT ${telvManualFiles}
        COMMAND ${Python3_EXECUTABLE} ${telvMakeManual} $<TARGET_FILE:tlexpand> ${telvManualDir}
        DEPENDS tlexpand ${telvMakeManual} ${telvManualTemplate}
        COMMENT "Making the manual page and the completions"
        VERBATIM)
    add_custom_target(tlexpand_manual ALL DEPENDS ${telvManualFiles})
else()
    set(telvManualFiles "")
    message(STATUS "No manual page and no completions: there is no Python 3 to make them")
endif()
