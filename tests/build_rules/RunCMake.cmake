# SPDX-License-Identifier: MIT
# What the scripts that try the functions of CMake share.

# Configures or builds; what goes wrong is fatal.
function(run)
    execute_process(COMMAND ${CMAKE_COMMAND} ${ARGN}
        RESULT_VARIABLE status OUTPUT_VARIABLE said ERROR_VARIABLE said)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "cmake ${ARGN}: ${said}")
    endif()
endfunction()
