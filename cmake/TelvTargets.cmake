# Functions that give a target what every target of this project has. Nothing here is a global flag:
# a target that wants the project's warnings and checks says so with one call.

# Position independent executables need a linker option of their own besides the compiler's.
macro(telv_check_pie)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
endmacro()

# libcsv, static: it is a few functions, and another shared library would cost every start.
function(telv_find_csv)
    find_path(TELV_CSV_INCLUDE csv.h REQUIRED)
    find_library(TELV_CSV_LIBRARY NAMES libcsv.a csv REQUIRED)
    add_library(telv_csv INTERFACE)
    target_include_directories(telv_csv SYSTEM INTERFACE ${TELV_CSV_INCLUDE})
    target_link_libraries(telv_csv INTERFACE ${TELV_CSV_LIBRARY})
endfunction()

function(telv_set_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(TELV_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

# Release builds: checks that the compiler, the C library and the loader can make at run time.
# Debug builds: the checks of the standard library. Fortification does not go with sanitizers.
function(telv_harden target)
    target_compile_definitions(${target} PRIVATE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
    if(TELV_SANITIZE)
        return()
    endif()
    target_compile_options(${target} PRIVATE
        $<$<CONFIG:Release>:-U_FORTIFY_SOURCE>
        $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2>
        $<$<CONFIG:Release>:-fstack-protector-strong>
        $<$<CONFIG:Release>:-fstack-clash-protection>)
    target_link_options(${target} PRIVATE $<$<CONFIG:Release>:LINKER:-z,relro,-z,now>)
endfunction()

# Frame pointers give the sanitizers whole stacks; a finding ends the program, so that a test fails.
# What clang checks beyond undefined behaviour holds for this project's own code only.
function(telv_sanitize target)
    if(NOT TELV_SANITIZE)
        return()
    endif()
    set(flags -fsanitize=${TELV_SANITIZE} -fno-omit-frame-pointer)
    target_compile_options(${target} PRIVATE ${flags} -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE ${flags})
    # The compilers tell a program in different ways.
    if(TELV_SANITIZE MATCHES "address")
        target_compile_definitions(${target} PRIVATE TELV_ADDRESS_SANITIZER)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        target_compile_options(${target} PRIVATE
            -fsanitize-ignorelist=${CMAKE_SOURCE_DIR}/cmake/integer.ignore)
    endif()
    if(TELV_FUZZ)
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
endfunction()

function(telv_measure_coverage target)
    if(TELV_COVERAGE)
        target_compile_options(${target} PRIVATE --coverage -fprofile-abs-path)
        target_link_options(${target} PRIVATE --coverage)
    endif()
endfunction()

# Everything that libraries, tool and tests have in common.
function(telv_configure target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    target_compile_definitions(${target} PRIVATE TELV_VERSION="${PROJECT_VERSION}")
    if(TELV_GUARD_TEXTS)
        target_compile_definitions(${target} PRIVATE TELV_GUARD_TEXTS)
    endif()
    telv_set_warnings(${target})
    telv_harden(${target})
    telv_sanitize(${target})
    telv_measure_coverage(${target})
endfunction()

# A shared library of all sources below Core/<name>. Its headers are a file set, so that each one is
# compiled alone by the target all_verify_interface_header_sets and installed with its folder.
function(telv_add_library name)
    set(root ${CMAKE_SOURCE_DIR}/Core)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${root}/${name}/*.cpp)
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${root}/${name}/*.h)
    add_library(${name} SHARED ${sources})
    add_library(telv::${name} ALIAS ${name})
    telv_configure(${name})
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${root} FILES ${headers})
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        VERIFY_INTERFACE_HEADER_SETS ON
        BUILD_WITH_INSTALL_RPATH ON
        INSTALL_RPATH "$ORIGIN")
    # A symbol that no library defines is an error here and not at the user's. Sanitized code takes
    # the run time's symbols from the program.
    if(NOT TELV_SANITIZE)
        target_link_options(${name} PRIVATE LINKER:--no-undefined)
    endif()
endfunction()
