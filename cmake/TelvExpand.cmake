# SPDX-License-Identifier: MIT
# Functions that expand texts while a project is built. They come with find_package(tlMacroExpander),
# and with add_subdirectory and FetchContent of this project.
#
#     tl_expand(OUTPUT table.cpp INPUT table.cpp.tl)
#
# makes table.cpp in the current binary directory, again whenever table.cpp.tl, a file that it reads or
# the tool changes. More of it:
#
#     tl_expand(
#         OUTPUT FILE            in the current binary directory, unless absolute
#         INPUT FILE             in the current source directory, unless absolute
#         [DEFINES NAME=VALUE...]        dollar macros
#         [LISTS NAME=FILE[:COLUMNS]...] rows of CSV and JSON files
#         [EVALS TEXT...]                expanded before the input
#         [IMPORT_PATHS DIR...]          searched by @import, in order
#         [MAP FILE]                     the map from the output to its sources, as JSON
#         [SOURCE_MAP FILE]              a source map, version 3
#         [TRACE FILE]                   a line for each call, round, definition and import
#         [LINE_DIRECTIVES]              #line lines in the output
#         [OPTIONS OPTION...]            other options of the tool
#         [DEPENDS FILE...])             made before, and looked at for changes
#
#     tl_expand_sources(TARGET target SOURCES table.cpp.tl names.h.tl...
#         [DEFINES ...] [LISTS ...] [EVALS ...] [IMPORT_PATHS ...] [LINE_DIRECTIVES] [OPTIONS ...]
#         [DEPENDS ...])
#
# expands each source into a file of its name without the last suffix, at the same place in the current
# binary directory, which becomes a source of the target; headers are found from its other sources.
include_guard(GLOBAL)

# Functions keep the policies that they were defined under: these, whatever those of the project are.
cmake_policy(PUSH)
cmake_policy(VERSION 3.20...3.25)

# Keywords: those that a list follows, those that one name follows, and of these the ones that name a file
# that is made with the output, whose option is the same word. A macro, since variables would not be seen
# outside of the directory that has included this file.
macro(_tl_set_keywords)
    set(lists DEFINES LISTS EVALS IMPORT_PATHS OPTIONS DEPENDS)
    set(besides MAP SOURCE_MAP TRACE)
    set(names OUTPUT INPUT ${besides})
endmacro()

# The whole name of an option that the functions can't take; nothing, when it is another. The tool understands
# names that are cut off where they mean one option, at `--outp` for one.
function(_tl_whole_name option result)
    string(REGEX REPLACE "=.*" "" name "${option}")
    foreach(known IN ITEMS -o,--outp,--output --depfile,--depfile --map,--map --source-map,--source-map --t,--trace
            -j,--j,--jobs --b,--batch --out-,--out-dir --keep-g,--keep-going --chec,--check -h,--h,--help -V,--vers,--version)
        string(REGEX MATCH "^(-.,)?([^,]*),(.*)" known "${known}")
        set(short "${CMAKE_MATCH_1}")
        set(shortest "${CMAKE_MATCH_2}")
        set(whole "${CMAKE_MATCH_3}")
        string(SUBSTRING "${option}," 0 2 start)
        string(FIND "${name}" "${shortest}" hasShortest)
        string(FIND "${whole}" "${name}" isStart)
        if("${start}," STREQUAL short OR (hasShortest EQUAL 0 AND isStart EQUAL 0))
            set(${result} "${whole}" PARENT_SCOPE)
            return()
        endif()
    endforeach()
    set(${result} "" PARENT_SCOPE)
endfunction()

# Stops unless all arguments were understood, of these keywords and those that both functions take. A macro:
# it looks at the variables of its caller.
macro(_tl_check_arguments function)
    if(NOT "${arg_UNPARSED_ARGUMENTS}" STREQUAL "")
        set(known ${ARGN} ${lists})
        list(JOIN known ", " known)
        message(FATAL_ERROR "${function}: unknown arguments: ${arg_UNPARSED_ARGUMENTS}; it takes ${known}, and LINE_DIRECTIVES, which nothing follows")
    endif()
    # An empty list may come from a variable; a missing name is a mistake.
    foreach(keyword IN ITEMS TARGET ${names})
        if(keyword IN_LIST arg_KEYWORDS_MISSING_VALUES)
            message(FATAL_ERROR "${function}: nothing follows ${keyword}; give a name there")
        endif()
        # What a name stands for must be known now: directories are made for it, and a rule.
        if("${arg_${keyword}}" MATCHES "[$]<|;")
            message(FATAL_ERROR "${function}: ${keyword} is '${arg_${keyword}}', but must be one name without ';' and generator expressions")
        endif()
    endforeach()
    foreach(keyword SOURCES LISTS IMPORT_PATHS) # not IN ITEMS: LISTS is a word of its own there
        foreach(name IN LISTS arg_${keyword})
            if(name MATCHES "[$]<")
                message(FATAL_ERROR "${function}: '${name}' in ${keyword} must be a name without generator expressions")
            endif()
        endforeach()
    endforeach()
    foreach(define IN LISTS arg_DEFINES)
        if(NOT define MATCHES "^[A-Za-z_][A-Za-z0-9_]*=")
            message(FATAL_ERROR "${function}: '${define}' in DEFINES is not NAME=VALUE")
        endif()
    endforeach()
    foreach(list IN LISTS arg_LISTS)
        if(NOT list MATCHES "^[A-Za-z_][A-Za-z0-9_]*=.")
            message(FATAL_ERROR "${function}: '${list}' in LISTS is not NAME=FILE")
        endif()
    endforeach()
    # A build that waits for one file while the tool writes another begins anew each time; a file that it
    # does not know is not removed, not waited for, and left out when results are shared.
    foreach(option IN LISTS arg_OPTIONS)
        _tl_whole_name("${option}" whole)
        if(whole MATCHES "^(--output|--depfile)$")
            message(FATAL_ERROR "${function}: '${option}' in OPTIONS names a file that the build makes already; leave it out, and name the output of tl_expand with OUTPUT")
        elseif(whole MATCHES "^--(map|source-map|trace)$")
            string(TOUPPER "${CMAKE_MATCH_1}" keyword)
            string(REPLACE "-" "_" keyword "${keyword}")
            message(FATAL_ERROR "${function}: '${option}' in OPTIONS names a file that the build must know; leave it out, and name it with ${keyword} of tl_expand")
        elseif(whole MATCHES "^--(jobs|batch|out-dir|keep-going)$")
            message(FATAL_ERROR "${function}: '${option}' in OPTIONS is for runs over many files; leave it out: each file has a rule of its own")
        elseif(whole MATCHES "^--(check|help|version)$")
            message(FATAL_ERROR "${function}: '${option}' in OPTIONS makes the tool write no output; leave it out")
        endif()
    endforeach()
    # They would vanish from the command line, and what follows would be taken for them.
    foreach(keyword IN ITEMS OPTIONS EVALS)
        if("" IN_LIST arg_${keyword})
            message(FATAL_ERROR "${function}: ${keyword} has an empty argument; leave it out")
        endif()
    endforeach()
    if(NOT TARGET telv::tlexpand)
        message(FATAL_ERROR "${function}: there is no target telv::tlexpand; find_package(tlMacroExpander) first")
    endif()
endmacro()

# Stops at an argument in which brackets don't come in pairs: in a list of CMake it would swallow the next one.
# A macro: it looks at the `count` arguments of its caller, which are not yet a list.
macro(_tl_check_brackets function count)
    set(index 0)
    while(index LESS ${count})
        string(REGEX REPLACE "[^[]" "" opened "${ARGV${index}}")
        string(REGEX REPLACE "[^]]" "" closed "${ARGV${index}}")
        string(LENGTH "${opened}" opened)
        string(LENGTH "${closed}" closed)
        if(NOT opened EQUAL closed)
            message(FATAL_ERROR "${function}: '${ARGV${index}}' has ${opened} '[' and ${closed} ']', which no list of CMake can hold; define this text in a file that the input imports")
        endif()
        math(EXPR index "${index} + 1")
    endwhile()
endmacro()

# The options that both functions take, for the command line; relative names are those of sources.
function(_tl_expand_options function result)
    set(options "")
    foreach(define IN LISTS arg_DEFINES)
        string(REPLACE ";" "\\;" define "${define}")
        list(APPEND options -D "${define}")
    endforeach()
    foreach(eval IN LISTS arg_EVALS)
        string(REPLACE ";" "\\;" eval "${eval}")
        list(APPEND options -E "${eval}")
    endforeach()
    foreach(list IN LISTS arg_LISTS)
        string(REGEX MATCH "^([^=]*)=(.*)$" list "${list}")
        cmake_path(ABSOLUTE_PATH CMAKE_MATCH_2 BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} OUTPUT_VARIABLE file)
        list(APPEND options --list "${CMAKE_MATCH_1}=${file}")
    endforeach()
    foreach(path IN LISTS arg_IMPORT_PATHS)
        cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
        if(EXISTS "${path}" AND NOT IS_DIRECTORY "${path}")
            message(FATAL_ERROR "${function}: '${path}' in IMPORT_PATHS is a file; name the directory that it lies in")
        endif()
        list(APPEND options -I "${path}")
    endforeach()
    if(arg_LINE_DIRECTIVES)
        list(APPEND options --line-directives)
    endif()
    foreach(option IN LISTS arg_OPTIONS)
        string(REPLACE ";" "\\;" option "${option}")
        list(APPEND options "${option}")
    endforeach()
    set(${result} "${options}" PARENT_SCOPE)
endfunction()

# The absolute path of a file that may be one of the source tree, one that the build makes, or nothing.
function(_tl_find_input function path result)
    cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE OUTPUT_VARIABLE source)
    if(NOT EXISTS "${source}")
        cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} NORMALIZE OUTPUT_VARIABLE made)
        get_source_file_property(isGenerated "${made}" GENERATED)
        if(NOT isGenerated)
            message(FATAL_ERROR "${function}: there is no file '${source}', and nothing makes '${made}'")
        endif()
        set(source "${made}")
    elseif(IS_DIRECTORY "${source}")
        message(FATAL_ERROR "${function}: the input '${source}' is a directory; name a file")
    endif()
    set(${result} "${source}" PARENT_SCOPE)
endfunction()

# Command lines of Make and Ninja can't hold every text: $(NAME) is a variable of theirs in spite of VERBATIM, and
# a line feed ends the command. (What comes of a generator expression may have such, too.) A script that CMake runs
# can: this one, which lies beside the `output` of the caller, gives the tool its `options`.
function(_tl_write_script result)
    get_property(isMultiConfig GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    set(script "${output}.cmake")
    if(isMultiConfig)
        set(script "${output}.$<CONFIG>.cmake")
    endif()
    set(text "# Made by TelvExpand.cmake.\n")
    set(words "")
    set(count 0)
    foreach(word IN LISTS options)
        # In brackets nothing means anything, except their end and a carriage return, which would be dropped.
        string(REPLACE "]=" "]]==] \"=\" [==[\n" word "${word}")
        string(REPLACE "\r" "]==] \"\\r\" [==[\n" word "${word}")
        math(EXPR count "${count} + 1")
        string(APPEND text "string(CONCAT word${count} [==[\n${word}]==])\n")
        string(APPEND words " \"\${word${count}}\"")
    endforeach()
    string(APPEND text "execute_process(COMMAND [==[$<TARGET_FILE:telv::tlexpand>]==]${words} RESULT_VARIABLE status)\n"
        "if(NOT status EQUAL 0)\n    message(FATAL_ERROR \"tlexpand ended with: \${status}\")\nendif()\n")
    file(GENERATE OUTPUT "${script}" CONTENT "${text}")
    set(${result} "${script}" PARENT_SCOPE)
endfunction()

# Adds the command that makes `output` of `input`, both relative or absolute, with the arguments of the
# function that calls this: passed on as a list, those with a semicolon would fall apart.
function(_tl_add_expansion function output input)
    _tl_find_input(${function} "${input}" input)
    cmake_path(ABSOLUTE_PATH output BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} NORMALIZE)
    if(output STREQUAL input)
        message(FATAL_ERROR "${function}: OUTPUT is the INPUT '${input}'")
    endif()
    _tl_expand_options(${function} options)
    set(outputs "${output}")
    foreach(keyword IN LISTS besides)
        if("${arg_${keyword}}" STREQUAL "")
            continue()
        endif()
        cmake_path(ABSOLUTE_PATH arg_${keyword} BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} NORMALIZE OUTPUT_VARIABLE file)
        if(file STREQUAL input)
            message(FATAL_ERROR "${function}: ${keyword} is the INPUT '${file}'; give it a name of its own")
        elseif(file IN_LIST outputs OR file STREQUAL "${output}.d")
            message(FATAL_ERROR "${function}: ${keyword} is another output of this call, '${file}'; give it a name of its own")
        endif()
        string(TOLOWER "--${keyword}" option)
        string(REPLACE "_" "-" option "${option}")
        list(APPEND options ${option} "${file}")
        list(APPEND outputs "${file}")
    endforeach()
    foreach(made IN ITEMS ${outputs} "${output}.d")
        get_property(maker GLOBAL PROPERTY "_tl_maker_of_${made}")
        if(NOT "${maker}" STREQUAL "")
            set(cure "give one of the outputs another name")
            if(maker STREQUAL input)
                set(cure "make it once; if two targets want it, for a library that both link")
            endif()
            message(FATAL_ERROR "${function}: '${made}' is made already, of '${maker}'; ${cure}")
        endif()
        set_property(GLOBAL PROPERTY "_tl_maker_of_${made}" "${input}")
    endforeach()
    foreach(made IN LISTS outputs)
        cmake_path(GET made PARENT_PATH directory)
        file(MAKE_DIRECTORY "${directory}")
    endforeach()
    cmake_path(RELATIVE_PATH output BASE_DIRECTORY ${CMAKE_BINARY_DIR} OUTPUT_VARIABLE shown)
    list(PREPEND options -o "${output}" --depfile "${output}.d")
    list(APPEND options "${input}")
    set(command telv::tlexpand "${options}")
    set(script "")
    if(options MATCHES "[$][(<]|[\n\r]")
        _tl_write_script(script)
        set(command "${CMAKE_COMMAND}" -P "${script}")
    endif()
    add_custom_command(
        OUTPUT ${outputs}
        COMMAND ${command}
        DEPENDS "${input}" telv::tlexpand ${script} ${arg_DEPENDS}
        DEPFILE "${output}.d"
        COMMENT "Expanding ${shown}"
        VERBATIM)
endfunction()

function(tl_expand)
    _tl_check_brackets(tl_expand ${ARGC})
    _tl_set_keywords()
    cmake_parse_arguments(PARSE_ARGV 0 arg "LINE_DIRECTIVES" "${names}" "${lists}")
    _tl_check_arguments(tl_expand ${names})
    foreach(needed IN ITEMS OUTPUT INPUT)
        if("${arg_${needed}}" STREQUAL "")
            message(FATAL_ERROR "tl_expand: ${needed} is missing: tl_expand(OUTPUT FILE INPUT FILE ...)")
        endif()
    endforeach()
    _tl_add_expansion(tl_expand "${arg_OUTPUT}" "${arg_INPUT}")
endfunction()

# Stops unless the target compiles sources, and is of the current directory: the rules that make them are seen
# there only.
function(_tl_check_target target)
    if(NOT TARGET "${target}")
        message(FATAL_ERROR "tl_expand_sources: there is no target '${target}'; add_executable or add_library it first")
    endif()
    get_target_property(type "${target}" TYPE)
    get_target_property(isImported "${target}" IMPORTED)
    get_target_property(aliased "${target}" ALIASED_TARGET)
    get_target_property(place "${target}" BINARY_DIR)
    if(aliased)
        message(FATAL_ERROR "tl_expand_sources: '${target}' is an alias; name the target '${aliased}' itself")
    elseif(isImported)
        message(FATAL_ERROR "tl_expand_sources: the target '${target}' is imported, so it takes no sources; name one that this project builds")
    elseif(type STREQUAL "INTERFACE_LIBRARY" OR type STREQUAL "UTILITY")
        message(FATAL_ERROR "tl_expand_sources: the target '${target}' compiles no sources; use tl_expand, and name its output where it is wanted")
    elseif(NOT place STREQUAL CMAKE_CURRENT_BINARY_DIR)
        get_target_property(place "${target}" SOURCE_DIR)
        message(FATAL_ERROR "tl_expand_sources: the target '${target}' is of the directory '${place}', which does not see rules of this one; call tl_expand_sources there, or make a library of the sources here and link it")
    endif()
endfunction()

function(tl_expand_sources)
    _tl_check_brackets(tl_expand_sources ${ARGC})
    _tl_set_keywords()
    cmake_parse_arguments(PARSE_ARGV 0 arg "LINE_DIRECTIVES" "TARGET;${names}" "SOURCES;${lists}")
    _tl_check_arguments(tl_expand_sources TARGET SOURCES)
    foreach(other IN LISTS names)
        if(NOT "${arg_${other}}" STREQUAL "")
            message(FATAL_ERROR "tl_expand_sources: ${other} is for tl_expand, which makes one file of a name that it is told")
        endif()
    endforeach()
    if("${arg_TARGET}" STREQUAL "" OR "${arg_SOURCES}" STREQUAL "")
        message(FATAL_ERROR "tl_expand_sources: wants TARGET and SOURCES: tl_expand_sources(TARGET target SOURCES FILE...)")
    endif()
    _tl_check_target("${arg_TARGET}")
    set(folders "")
    foreach(source IN LISTS arg_SOURCES)
        cmake_path(IS_PREFIX CMAKE_CURRENT_SOURCE_DIR "${source}" NORMALIZE isBelow)
        set(place "${source}")
        if(isBelow)
            cmake_path(RELATIVE_PATH place BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
        endif()
        cmake_path(REMOVE_EXTENSION place LAST_ONLY OUTPUT_VARIABLE made)
        cmake_path(GET made EXTENSION suffix)
        if(suffix STREQUAL "" OR IS_ABSOLUTE "${made}" OR made MATCHES "^\\.\\./")
            message(FATAL_ERROR "tl_expand_sources: '${source}' must be a file below the current source directory with two suffixes, as table.cpp.tl")
        endif()
        _tl_add_expansion(tl_expand_sources "${made}" "${source}")
        target_sources(${arg_TARGET} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${made}")
        cmake_path(GET made PARENT_PATH folder)
        cmake_path(APPEND CMAKE_CURRENT_BINARY_DIR "${folder}" OUTPUT_VARIABLE folder)
        list(APPEND folders "${folder}")
    endforeach()
    list(REMOVE_DUPLICATES folders)
    target_include_directories(${arg_TARGET} PRIVATE ${folders})
endfunction()

cmake_policy(POP)
