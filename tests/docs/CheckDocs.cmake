# SPDX-License-Identifier: MIT
# telv_check_docs(NAME DOCUMENT [LONG] [ARGUMENT...]) adds the test NAME: tools/dev/check-docs runs the
# examples of DOCUMENT (from the top of the tree) with the tool, the libraries and the compiler of
# this build, and compares what comes out with what the document says. With LONG it also runs what takes long,
# and belongs to the configuration of that name.
include_guard()
find_package(Python3 REQUIRED COMPONENTS Interpreter)

function(telv_check_docs name document)
    cmake_parse_arguments(PARSE_ARGV 2 arg "LONG" "" "")
    set(configurations "")
    set(timeout ${telvTestTimeout})
    set(arguments --build ${PROJECT_BINARY_DIR} --compiler ${CMAKE_CXX_COMPILER}
        --warnings ${PROJECT_SOURCE_DIR}/tests/docs/wanted_warnings.txt)
    if(TELV_SANITIZE)
        list(APPEND arguments --flags=-fsanitize=${TELV_SANITIZE})
    endif()
    if(NOT TELV_PYTHON_ENABLED)
        list(APPEND arguments --without-python)
    endif()
    if(arg_LONG)
        list(APPEND arguments --long)
        set(configurations CONFIGURATIONS Long)
        set(timeout 1200)
    endif()
    add_test(NAME ${name} ${configurations}
        COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tools/dev/check-docs
            ${arguments} ${arg_UNPARSED_ARGUMENTS} ${PROJECT_SOURCE_DIR}/${document})
    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "${telvTestEnvironment}" TIMEOUT ${timeout})
endfunction()
