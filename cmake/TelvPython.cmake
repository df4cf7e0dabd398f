# SPDX-License-Identifier: MIT
# Finds the headers of Python 2.7. The library itself is loaded at run time and never linked; the
# build only tells tlMacroExpander where it was seen. Looked at, in this order: TELV_PYTHON_ROOT, an
# installation of pyenv, what scripts/setup unpacked into build/python2, the system. Without headers
# the bridge is left out.

# The prefixes to try, most wanted first.
function(telv_python_prefixes result)
    set(pyenv "$ENV{PYENV_ROOT}")
    if(NOT pyenv)
        set(pyenv "$ENV{HOME}/.pyenv")
    endif()
    file(GLOB installed LIST_DIRECTORIES true "${pyenv}/versions/2.7*")
    list(SORT installed COMPARE NATURAL ORDER DESCENDING)
    set(${result} ${TELV_PYTHON_ROOT} ${installed} ${PROJECT_SOURCE_DIR}/build/python2/usr /usr
        PARENT_SCOPE)
endfunction()

# The shared library below `prefix`, or an empty string.
function(telv_python_library prefix result)
    set(${result} "" PARENT_SCOPE)
    foreach(folder lib lib/${CMAKE_LIBRARY_ARCHITECTURE} lib64)
        set(candidate ${prefix}/${folder}/libpython2.7.so.1.0)
        if(EXISTS ${candidate})
            set(${result} ${candidate} PARENT_SCOPE)
            return()
        endif()
    endforeach()
endfunction()

# Sets telvPythonHome, telvPythonLibrary and telvPythonIncludes in the caller's scope when the first
# usable prefix has headers that FindPython2 accepts.
macro(telv_find_python)
    telv_python_prefixes(telvPrefixes)
    foreach(prefix IN LISTS telvPrefixes)
        telv_python_library(${prefix} library)
        if(NOT library OR NOT EXISTS ${prefix}/include/python2.7/Python.h)
            continue()
        endif()
        set(Python2_ROOT_DIR ${prefix})
        set(Python2_FIND_STRATEGY LOCATION)
        set(Python2_INCLUDE_DIR ${prefix}/include/python2.7)
        set(Python2_LIBRARY ${library})
        find_package(Python2 2.7 QUIET COMPONENTS Development)
        if(Python2_Development_FOUND)
            set(telvPythonHome ${prefix})
            set(telvPythonLibrary ${library})
            # Debian's pyconfig.h includes the one of its architecture relative to include/.
            set(telvPythonIncludes ${Python2_INCLUDE_DIRS} ${prefix}/include)
            break()
        endif()
    endforeach()
endmacro()

# Compiles `target` with the bridge when that is wanted and possible. TELV_PYTHON_ENABLED tells the
# rest of the build which of the two it became.
function(telv_use_python target)
    set(telvPythonHome "")
    if(TELV_PYTHON)
        telv_find_python()
    endif()
    if(NOT telvPythonHome)
        if(TELV_PYTHON)
            message(STATUS "Python 2.7 headers not found: building as with TELV_PYTHON=OFF")
        else()
            message(STATUS "Python 2.7: off")
        endif()
        set(TELV_PYTHON_ENABLED OFF PARENT_SCOPE)
        return()
    endif()
    message(STATUS "Python 2.7: ${telvPythonHome}")
    set(TELV_PYTHON_ENABLED ON PARENT_SCOPE)
    target_include_directories(${target} SYSTEM PRIVATE ${telvPythonIncludes})
    target_compile_definitions(${target} PRIVATE
        TELV_PYTHON_ENABLED=1
        TELV_PYTHON_BUILD_LIBRARY="${telvPythonLibrary}"
        TELV_PYTHON_HOME="${telvPythonHome}")
endfunction()
