# SPDX-License-Identifier: MIT
# What `cmake --install` puts where. Two components: `runtime` has the shared libraries and the tool;
# `development` has headers, archives, a CMake package (find_package(tlMacroExpander)), pkg-config
# files and the build rules. All files find each other by their places: the tree may be moved.
include(CMakePackageConfigHelpers)

set(telvPackageDir ${CMAKE_INSTALL_LIBDIR}/cmake/tlMacroExpander)

install(TARGETS tlUtils tlMacroExpander
    EXPORT tlMacroExpanderTargets
    LIBRARY
        DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT runtime
        NAMELINK_COMPONENT development
    ARCHIVE
        DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT development
    FILE_SET HEADERS
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT development)
install(TARGETS tlexpand
    EXPORT tlMacroExpanderTargets
    RUNTIME
        DESTINATION ${CMAKE_INSTALL_BINDIR}
        COMPONENT runtime)
install(EXPORT tlMacroExpanderTargets
    NAMESPACE telv::
    DESTINATION ${telvPackageDir}
    COMPONENT development)

get_target_property(telvLibraryType tlMacroExpander TYPE)
set(telvRuntimeLibraries "")
if(telvLibraryType STREQUAL "SHARED_LIBRARY")
    set(suffix ${CMAKE_SHARED_LIBRARY_SUFFIX}.${PROJECT_VERSION_MAJOR})
    foreach(library IN ITEMS tlUtils tlMacroExpander)
        string(APPEND telvRuntimeLibraries " \"\${telvLibraryDir}/lib${library}${suffix}\"")
    endforeach()
endif()
configure_package_config_file(
    cmake/tlMacroExpanderConfig.cmake.in
    ${PROJECT_BINARY_DIR}/tlMacroExpanderConfig.cmake
    INSTALL_DESTINATION ${telvPackageDir}
    PATH_VARS CMAKE_INSTALL_BINDIR CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/tlMacroExpanderConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/tlMacroExpanderConfig.cmake
    ${PROJECT_BINARY_DIR}/tlMacroExpanderConfigVersion.cmake
    cmake/TelvExpand.cmake
    DESTINATION ${telvPackageDir}
    COMPONENT development)

# Not CMAKE_INSTALL_DOCDIR, which has the name of the project that this one is a part of.
install(FILES LICENSE
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tlMacroExpander
    COMPONENT runtime)

install(DIRECTORY build_rules/bazel
    DESTINATION ${CMAKE_INSTALL_DATADIR}/tlMacroExpander
    COMPONENT development)

# Everything below the prefix, which is found from the place of the file itself.
foreach(folder IN ITEMS LIBDIR INCLUDEDIR BINDIR)
    file(RELATIVE_PATH telvPc${folder} ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_${folder}})
endforeach()
file(RELATIVE_PATH telvPcPrefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" telvPcPrefix ${telvPcPrefix})
# An archive cannot say what it needs; a shared library can.
set(telvPcArchiveLibs "")
if(telvLibraryType STREQUAL "STATIC_LIBRARY")
    set(telvPcArchiveLibs " -pthread ${CMAKE_DL_LIBS}")
    string(REPLACE " dl" " -ldl" telvPcArchiveLibs "${telvPcArchiveLibs}")
endif()
foreach(library IN ITEMS tlUtils tlMacroExpander)
    configure_file(cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${library}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)
endforeach()

# The manual page and the completions, where the shells and `man` look for them.
include(${CMAKE_CURRENT_LIST_DIR}/TelvManual.cmake)
if(telvManualFiles)
    install(FILES ${telvManualDir}/tlexpand.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT runtime OPTIONAL)
    install(FILES ${telvManualDir}/tlexpand.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME tlexpand
        COMPONENT runtime OPTIONAL)
    install(FILES ${telvManualDir}/_tlexpand
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
        COMPONENT runtime OPTIONAL)
    install(FILES ${telvManualDir}/tlexpand.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
        COMPONENT runtime OPTIONAL)
endif()
