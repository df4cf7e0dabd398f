# SPDX-License-Identifier: MIT
# What the CMake functions say to wrong arguments, through whole configurations of a small project.
#
#     cmake -DSOURCE=<top of the tree> -DWORK=<folder> -P TryArguments.cmake

# Configures a project with CODE; the status and what is said are the variables of that name. TOOL is what
# gives the project the tool.
function(configure code)
    set(tool "
add_executable(telv::tlexpand IMPORTED)
set_target_properties(telv::tlexpand PROPERTIES IMPORTED_LOCATION /bin/true)")
    if(ARGC GREATER 1)
        set(tool "${ARGV1}")
    endif()
    file(REMOVE_RECURSE ${WORK})
    file(WRITE ${WORK}/a.txt.tl "text\n")
    file(WRITE ${WORK}/single.tl "text\n")
    file(MAKE_DIRECTORY ${WORK}/folder)
    file(WRITE ${WORK}/CMakeLists.txt "
cmake_minimum_required(VERSION 3.25)
project(arguments LANGUAGES NONE)
${tool}
add_library(unit OBJECT single.tl)
include(${SOURCE}/cmake/TelvExpand.cmake)
${code}
")
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${WORK} -B ${WORK}/out
        RESULT_VARIABLE status OUTPUT_VARIABLE said ERROR_VARIABLE said)
    string(REGEX REPLACE "[ \n]+" " " said "${said}")
    set(status "${status}" PARENT_SCOPE)
    set(said "${said}" PARENT_SCOPE)
endfunction()

# refuses(MESSAGE CODE [TOOL]): configuring a project with CODE must stop with MESSAGE.
function(refuses message code)
    if(ARGC GREATER 2)
        configure("${code}" "${ARGV2}")
    else()
        configure("${code}")
    endif()
    string(FIND "${said}" "${message}" found)
    if(status EQUAL 0 OR found EQUAL -1)
        message(SEND_ERROR "expected '${message}' for ${code}, status ${status}: ${said}")
    endif()
endfunction()

function(accepts code)
    configure("${code}")
    if(NOT status EQUAL 0)
        message(SEND_ERROR "expected success for ${code}, status ${status}: ${said}")
    endif()
endfunction()

refuses("tl_expand: OUTPUT is missing" "tl_expand(INPUT a.txt.tl)")
refuses("tl_expand: INPUT is missing" "tl_expand(OUTPUT a.txt)")
refuses("tl_expand: unknown arguments: FLAGS;-x; it takes OUTPUT, INPUT, MAP, SOURCE_MAP, TRACE, DEFINES, LISTS, EVALS, IMPORT_PATHS, OPTIONS, DEPENDS, and LINE_DIRECTIVES, which nothing follows"
    "tl_expand(FLAGS -x OUTPUT a.txt INPUT a.txt.tl)")
refuses("tl_expand: unknown arguments: ON; it takes" "tl_expand(OUTPUT a.txt INPUT a.txt.tl LINE_DIRECTIVES ON)")
refuses("tl_expand_sources: unknown arguments: unit; it takes TARGET, SOURCES, DEFINES" "tl_expand_sources(unit SOURCES a.txt.tl)")
foreach(keyword IN ITEMS MAP SOURCE_MAP TRACE)
    refuses("tl_expand: nothing follows ${keyword}; give a name there" "tl_expand(OUTPUT a.txt INPUT a.txt.tl ${keyword})")
    refuses("tl_expand: ${keyword} is another output of this call, '${WORK}/out/a.txt'; give it a name of its own"
        "tl_expand(OUTPUT a.txt INPUT a.txt.tl ${keyword} ../out/a.txt)")
    refuses("tl_expand: ${keyword} is another output of this call, '${WORK}/out/a.txt.d'; give it a name of its own"
        "tl_expand(OUTPUT a.txt INPUT a.txt.tl ${keyword} a.txt.d)")
    refuses("tl_expand: ${keyword} is the INPUT '${WORK}/a.txt.tl'; give it a name of its own"
        "tl_expand(OUTPUT a.txt INPUT a.txt.tl ${keyword} ../a.txt.tl)")
    refuses("tl_expand_sources: ${keyword} is for tl_expand" "tl_expand_sources(TARGET unit SOURCES a.txt.tl ${keyword} a.map)")
    string(TOLOWER "--${keyword}" option)
    string(REPLACE "_" "-" option "${option}")
    foreach(given IN ITEMS "${option}" "${option}=a.map")
        refuses("tl_expand: '${given}' in OPTIONS names a file that the build must know; leave it out, and name it with ${keyword} of tl_expand"
            "tl_expand(OUTPUT a.txt INPUT a.txt.tl OPTIONS ${given})")
    endforeach()
endforeach()
refuses("tl_expand: '--tra=a' in OPTIONS names a file that the build must know; leave it out, and name it with TRACE"
    "tl_expand(OUTPUT a.txt INPUT a.txt.tl OPTIONS --tra=a)")
# What only looks like such an option is left to the tool; a value may begin like one.
accepts("tl_expand(OUTPUT a.txt INPUT a.txt.tl OPTIONS --bogus --trap --jump --outpost --check-all)")
refuses("tl_expand: 'A=[[;]' has 2 '[' and 1 ']', which no list of CMake can hold; define this text in a file that the input imports"
    "tl_expand(OUTPUT a.txt INPUT a.txt.tl DEFINES \"A=[[;]\" B=1)")
refuses("tl_expand_sources: '@def a = {]}' has 0 '[' and 1 ']'"
    "tl_expand_sources(TARGET unit SOURCES a.txt.tl EVALS \"@def a = {]}\")")
refuses("tl_expand: TRACE is another output of this call, '${WORK}/out/a.map'"
    "tl_expand(OUTPUT a.txt INPUT a.txt.tl MAP a.map TRACE a.map)")
refuses("tl_expand: nothing follows OUTPUT; give a name there" "tl_expand(OUTPUT INPUT a.txt.tl)")
refuses("tl_expand_sources: nothing follows TARGET" "tl_expand_sources(TARGET SOURCES a.txt.tl)")
refuses("tl_expand: OPTIONS has an empty argument; leave it out" "tl_expand(OUTPUT a.txt INPUT a.txt.tl OPTIONS --warn \"\" --werror)")
refuses("tl_expand: EVALS has an empty argument; leave it out" "tl_expand(OUTPUT a.txt INPUT a.txt.tl EVALS \"\" \"@def a = {1}\")")
refuses("tl_expand: '${WORK}/single.tl' in IMPORT_PATHS is a file; name the directory that it lies in"
    "tl_expand(OUTPUT a.txt INPUT a.txt.tl IMPORT_PATHS single.tl)")
refuses("tl_expand: '$<CONFIG>' in IMPORT_PATHS must be a name without generator expressions"
    "tl_expand(OUTPUT a.txt INPUT a.txt.tl IMPORT_PATHS $<CONFIG>)")
refuses("tl_expand: 'rows=$<CONFIG>.csv' in LISTS must be a name without generator expressions"
    "tl_expand(OUTPUT a.txt INPUT a.txt.tl LISTS rows=$<CONFIG>.csv)")
refuses("tl_expand: there is no target telv::tlexpand; find_package(tlMacroExpander) first"
    "tl_expand(OUTPUT a.txt INPUT a.txt.tl)" "")
refuses("tl_expand: there is no file '${WORK}/b.tl'" "tl_expand(OUTPUT a.txt INPUT b.tl)")
refuses("tl_expand: 'X' in DEFINES is not NAME=VALUE" "tl_expand(OUTPUT a.txt INPUT a.txt.tl DEFINES X)")
refuses("tl_expand: 'rows.csv' in LISTS is not NAME=FILE" "tl_expand(OUTPUT a.txt INPUT a.txt.tl LISTS rows.csv)")
refuses("tl_expand: OUTPUT is the INPUT" "tl_expand(OUTPUT \${CMAKE_SOURCE_DIR}/a.txt.tl INPUT a.txt.tl)")
foreach(option IN ITEMS "-o;b.txt" "-ob.txt" "--output;b.txt" "--output=b.txt" "--outp=b.txt" "--depfile;a.d" "--depfile=a.d")
    list(GET option 0 name)
    set(said "'${name}' in OPTIONS names a file that the build makes already; leave it out")
    list(JOIN option " " option)
    refuses("tl_expand: ${said}" "tl_expand(OUTPUT a.txt INPUT a.txt.tl OPTIONS --keep-imports ${option})")
endforeach()
refuses("tl_expand_sources: '-o' in OPTIONS names a file that the build makes already"
    "tl_expand_sources(TARGET unit SOURCES a.txt.tl OPTIONS -o b.txt)")
refuses("tl_expand: the input '${WORK}/folder' is a directory; name a file" "tl_expand(OUTPUT a.txt INPUT folder)")
accepts("tl_expand(OUTPUT a.txt INPUT a.txt.tl MAP a.map OPTIONS --depfile-target a.txt)")
foreach(second IN ITEMS "OUTPUT ../out/a.txt INPUT single.tl" "OUTPUT b.txt INPUT single.tl MAP a.txt" "OUTPUT b.txt INPUT single.tl TRACE a.txt")
    refuses("tl_expand: '${WORK}/out/a.txt' is made already, of '${WORK}/a.txt.tl'; give one of the outputs another name"
        "tl_expand(OUTPUT a.txt INPUT a.txt.tl)\ntl_expand(${second})")
endforeach()
refuses("tl_expand_sources: '${WORK}/out/a.txt' is made already"
    "tl_expand(OUTPUT a.txt INPUT single.tl)\ntl_expand_sources(TARGET unit SOURCES a.txt.tl)")
foreach(option IN ITEMS -j -j4 --jobs=4 --batch --batch=list --out-dir --out-dir=out --keep-going)
    refuses("tl_expand: '${option}' in OPTIONS is for runs over many files"
        "tl_expand(OUTPUT a.txt INPUT a.txt.tl OPTIONS ${option})")
endforeach()
foreach(option IN ITEMS --check --help -h -V --version)
    refuses("tl_expand: '${option}' in OPTIONS makes the tool write no output"
        "tl_expand(OUTPUT a.txt INPUT a.txt.tl OPTIONS ${option})")
endforeach()
accepts("tl_expand(OUTPUT a.txt INPUT a.txt.tl MAP a.map SOURCE_MAP b/a.map
    OPTIONS --map-runs --chains --keep-imports --keep-unchanged --source-map-contents)")
refuses("tl_expand_sources: '${WORK}/out/a.txt' is made already, of '${WORK}/a.txt.tl'; make it once; if two targets want it, for a library that both link"
    "add_library(other OBJECT single.tl)\ntl_expand_sources(TARGET unit SOURCES a.txt.tl)\ntl_expand_sources(TARGET other SOURCES a.txt.tl)")
# Names that are false as a condition are names.
accepts("tl_expand(OUTPUT off INPUT a.txt.tl MAP no)
get_source_file_property(isMade \${CMAKE_BINARY_DIR}/no GENERATED)
if(NOT isMade)
    message(FATAL_ERROR [[no map]])
endif()")
accepts("add_library(no OBJECT single.tl)\ntl_expand_sources(TARGET no SOURCES a.txt.tl)")
refuses("tl_expand: unknown arguments: off" "tl_expand(off OUTPUT a.txt INPUT a.txt.tl)")
refuses("tl_expand_sources: MAP is for tl_expand" "tl_expand_sources(TARGET unit SOURCES a.txt.tl MAP off)")
refuses("tl_expand: OUTPUT is missing" "tl_expand(OUTPUT \"\" INPUT a.txt.tl)")
foreach(name IN ITEMS "a;b" "$<CONFIG>.txt")
    set(said "is '${name}', but must be one name without ';' and generator expressions")
    refuses("tl_expand: OUTPUT ${said}" "tl_expand(OUTPUT [[${name}]] INPUT a.txt.tl)")
    refuses("tl_expand: INPUT ${said}" "tl_expand(OUTPUT a.txt INPUT [[${name}]])")
    refuses("tl_expand: MAP ${said}" "tl_expand(OUTPUT a.txt INPUT a.txt.tl MAP [[${name}]])")
endforeach()
refuses("tl_expand_sources: '$<CONFIG>.txt.tl' in SOURCES must be a name without generator expressions"
    "tl_expand_sources(TARGET unit SOURCES $<CONFIG>.txt.tl)")
refuses("tl_expand_sources: the target 'unit' is of the directory '${WORK}', which does not see rules of this one; call tl_expand_sources there"
    "file(WRITE \${CMAKE_SOURCE_DIR}/folder/CMakeLists.txt [[tl_expand_sources(TARGET unit SOURCES b.txt.tl)]])
file(WRITE \${CMAKE_SOURCE_DIR}/folder/b.txt.tl text)
add_subdirectory(folder)")
foreach(add IN ITEMS "add_library(other INTERFACE)" "add_custom_target(other)")
    refuses("tl_expand_sources: the target 'other' compiles no sources; use tl_expand"
        "${add}\ntl_expand_sources(TARGET other SOURCES a.txt.tl)")
endforeach()
refuses("tl_expand_sources: the target 'other' is imported" "add_library(other STATIC IMPORTED)\ntl_expand_sources(TARGET other SOURCES a.txt.tl)")
refuses("tl_expand_sources: 'other' is an alias; name the target 'unit' itself"
    "add_library(other ALIAS unit)\ntl_expand_sources(TARGET other SOURCES a.txt.tl)")
refuses("tl_expand_sources: wants TARGET and SOURCES" "tl_expand_sources(TARGET unit)")
refuses("tl_expand_sources: wants TARGET and SOURCES" "tl_expand_sources(SOURCES a.txt.tl)")
refuses("tl_expand_sources: MAP is for tl_expand" "tl_expand_sources(TARGET unit SOURCES a.txt.tl MAP a.map)")
refuses("tl_expand_sources: there is no target 'none'" "tl_expand_sources(TARGET none SOURCES a.txt.tl)")
refuses("must be a file below the current source directory with two suffixes" "tl_expand_sources(TARGET unit SOURCES single.tl)")
