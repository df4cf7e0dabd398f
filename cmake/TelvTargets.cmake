# SPDX-License-Identifier: MIT
# Functions that give a target what every target of this project has. Nothing here is a global flag:
# a target that wants the project's warnings and checks says so with one call.

# Position independent executables need a linker option of their own besides the compiler's.
macro(telv_check_pie)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
endmacro()

# Stops for want of a library: those who build this inside a project of theirs have not read what it needs.
function(telv_miss_library library package)
    message(FATAL_ERROR "${PROJECT_NAME}: ${library} is missing, which the tool is made of: install it (on Debian, ${package}), or say in CMAKE_PREFIX_PATH where it is")
endfunction()

# telv_find_small_library(NAME HEADER PACKAGE) makes the target telv_NAME of libNAME, static where it can be
# had: the tool uses a few functions of it, and another shared library would cost every start.
function(telv_find_small_library name header package)
    string(TOUPPER TELV_${name} prefix)
    find_path(${prefix}_INCLUDE ${header})
    find_library(${prefix}_LIBRARY NAMES lib${name}.a ${name})
    mark_as_advanced(${prefix}_INCLUDE ${prefix}_LIBRARY)
    if(NOT ${prefix}_INCLUDE OR NOT ${prefix}_LIBRARY)
        telv_miss_library("lib${name} with its header ${header}" ${package})
    endif()
    add_library(telv_${name} INTERFACE)
    target_include_directories(telv_${name} SYSTEM INTERFACE ${${prefix}_INCLUDE})
    target_link_libraries(telv_${name} INTERFACE ${${prefix}_LIBRARY})
endfunction()

function(telv_set_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    # GCC 12 takes the parts of a sum of strings for overlapping ranges (its bug 105651).
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(TELV_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

# GCC 12 packs the two halves of a view that came in registers through the stack into a vector
# register: two stores and a load that has to wait for both, in every function that copies a view.
function(telv_optimise target)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${target} PRIVATE -fno-tree-slp-vectorize)
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
        $<$<CONFIG:Release>:-fstack-protector>
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
    if(TELV_SANITIZE MATCHES "thread")
        target_compile_definitions(${target} PRIVATE TELV_THREAD_SANITIZER)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        target_compile_options(${target} PRIVATE
            -fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/integer.ignore)
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

# Optimises across sources when TELV_LTO is on and the compiler can. The objects hold ordinary code as
# well, which programs that don't ask for more are linked from (telv_carry_libraries). Not archives:
# what they hold must be of use to every compiler.
function(telv_optimise_linking target)
    get_target_property(type ${target} TYPE)
    if(NOT TELV_LTO OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR type STREQUAL "STATIC_LIBRARY")
        return()
    endif()
    target_compile_options(${target} PRIVATE -flto=auto -ffat-lto-objects)
    target_link_options(${target} PRIVATE -flto=auto)
endfunction()

# Leaves no shared library to be found at the start of a program but that of C. GCC would add that of
# mathematics for what nobody calls, so the default libraries are named here without it. Sanitizers and
# the measurement of coverage bring libraries of their own.
function(telv_link_statically target)
    if(TELV_SANITIZE OR TELV_COVERAGE)
        return()
    endif()
    target_link_options(${target} PRIVATE -ffunction-sections
        LINKER:--gc-sections,--as-needed,--exclude-libs,ALL)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_link_options(${target} PRIVATE -nodefaultlibs)
        target_link_libraries(${target} PRIVATE -l:libstdc++.a gcc gcc_eh c)
    else()
        target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
    endif()
endfunction()

# Puts what the start of the program calls side by side, and its relocations into a compact form: both
# are read from disk, or mapped, page by page at each start. Only code of one section per function can
# be put in order, as link-time optimisation makes it.
function(telv_order_start target order)
    if(NOT TELV_LTO OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR TELV_SANITIZE)
        return()
    endif()
    target_link_options(${target} PRIVATE LINKER:-T,${order})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${order})
    include(CheckLinkerFlag)
    check_linker_flag(CXX LINKER:-z,pack-relative-relocs TELV_CAN_PACK_RELOCATIONS)
    if(TELV_CAN_PACK_RELOCATIONS)
        target_link_options(${target} PRIVATE LINKER:-z,pack-relative-relocs)
    endif()
endfunction()

# Everything that libraries, tool and tests have in common.
function(telv_configure target)
    target_compile_features(${target} PRIVATE cxx_std_20)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        UNITY_BUILD OFF)
    target_compile_definitions(${target} PRIVATE TELV_VERSION="${PROJECT_VERSION}")
    if(TELV_GUARD_TEXTS)
        target_compile_definitions(${target} PRIVATE TELV_GUARD_TEXTS)
    endif()
    telv_set_warnings(${target})
    telv_optimise(${target})
    telv_harden(${target})
    telv_sanitize(${target})
    telv_measure_coverage(${target})
endfunction()

# Lets `target` find the libraries at places relative to itself, in the build as where it is
# installed. In a host project, whose folders are not known, the build uses whole paths.
function(telv_find_libraries_at target places)
    set(asInstalled ${PROJECT_IS_TOP_LEVEL})
    if(CMAKE_SKIP_INSTALL_RPATH)
        set(asInstalled OFF)
    endif()
    set_target_properties(${target} PROPERTIES
        BUILD_WITH_INSTALL_RPATH ${asInstalled}
        INSTALL_RPATH "${places}")
endfunction()

# A library of all sources below Core/<name>: shared, unless BUILD_SHARED_LIBS says otherwise. Those
# who use it need C++17.
function(telv_add_library name)
    set(type SHARED)
    if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
        set(type STATIC)
    endif()
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/Core/${name}/*.cpp)
    add_library(${name} ${type} ${sources})
    add_library(telv::${name} ALIAS ${name})
    telv_configure(${name})
    telv_optimise_linking(${name})
    target_compile_features(${name} INTERFACE cxx_std_17)
    set_target_properties(${name} PROPERTIES
        DEFINE_SYMBOL ""
        VISIBILITY_INLINES_HIDDEN OFF # InlineDefinitions.cpp, whose names every file must leave visible
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    telv_find_libraries_at(${name} "$ORIGIN")
    telv_emit_inline_definitions(${name})
    # A symbol that no library defines is an error here and not at the user's, and what is not in the
    # list is not exported. Sanitized code takes the run time's symbols from the program, and some of
    # its own from other libraries.
    if(NOT TELV_SANITIZE)
        set(exports ${PROJECT_SOURCE_DIR}/Core/${name}/exports.map)
        target_link_options(${name} PRIVATE
            LINKER:--no-undefined LINKER:--version-script=${exports})
        set_target_properties(${name} PROPERTIES LINK_DEPENDS ${exports})
    endif()
endfunction()

# Makes the libraries a part of the program `target`, which then sees what they do not export. It is
# linked from their ordinary code, which takes a moment, unless telv_optimise_linking was called.
function(telv_carry_libraries target)
    target_sources(${target} PRIVATE
        $<TARGET_OBJECTS:tlUtils> $<TARGET_OBJECTS:tlMacroExpander>)
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/Core)
    target_link_libraries(${target} PRIVATE Threads::Threads ${CMAKE_DL_LIBS})
    get_target_property(options ${target} LINK_OPTIONS)
    if(TELV_LTO AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT options MATCHES "-flto")
        target_link_options(${target} PRIVATE -fno-lto)
    endif()
endfunction()

# InlineDefinitions.cpp must not be optimised: see there.
function(telv_emit_inline_definitions library)
    get_target_property(sources ${library} SOURCES)
    list(FILTER sources INCLUDE REGEX "/InlineDefinitions\\.cpp$")
    set_source_files_properties(${sources} PROPERTIES
        COMPILE_OPTIONS "-O0;-fno-lto;-U_FORTIFY_SOURCE")
endfunction()

# telv_public_headers(LIBRARY PATTERN... [EXCEPT HEADER...]) makes headers below Core/ part of the
# library's interface: they are installed with their folders, and the target
# all_verify_interface_header_sets compiles each one alone.
function(telv_public_headers library)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "EXCEPT")
    set(root ${PROJECT_SOURCE_DIR}/Core)
    list(TRANSFORM arg_UNPARSED_ARGUMENTS PREPEND ${root}/)
    list(TRANSFORM arg_EXCEPT PREPEND ${root}/)
    file(GLOB headers CONFIGURE_DEPENDS ${arg_UNPARSED_ARGUMENTS})
    list(REMOVE_ITEM headers ${arg_EXCEPT})
    target_sources(${library} PUBLIC FILE_SET HEADERS BASE_DIRS ${root} FILES ${headers})
    set_target_properties(${library} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
endfunction()
