# SPDX-License-Identifier: MIT
# telv_check_docs(NAME DOCUMENT [ARGUMENT...]) adds the test NAME: tools/dev/check-docs runs the
# examples of DOCUMENT (from the top of the tree) with the tool, the libraries and the compiler of
# this build, and compares what comes out with what the document says.
include_guard()
find_package(Python3 REQUIRED COMPONENTS Interpreter)

function(telv_check_docs name document)
    set(arguments --build ${PROJECT_BINARY_DIR} --compiler ${CMAKE_CXX_COMPILER}
        --warnings ${PROJECT_SOURCE_DIR}/tests/docs/wanted_warnings.txt)
    if(TELV_SANITIZE)
        list(APPEND arguments --flags=-fsanitize=${TELV_SANITIZE})
    endif()
    if(NOT TELV_PYTHON_ENABLED)
        list(APPEND arguments --without-python)
    endif()
    add_test(NAME ${name}
        COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tools/dev/check-docs
            ${arguments} ${ARGN} ${PROJECT_SOURCE_DIR}/${document})
    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "${telvTestEnvironment}" TIMEOUT ${telvTestTimeout})
endfunction()
