# What `cmake --install` puts where: libraries, headers, the tool, a CMake package
# (find_package(tlMacroExpander), target telv::tlMacroExpander) and a pkg-config file.
include(CMakePackageConfigHelpers)

set(telvPackageDir ${CMAKE_INSTALL_LIBDIR}/cmake/tlMacroExpander)

install(TARGETS tlUtils tlMacroExpander
    EXPORT tlMacroExpanderTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS tlexpand RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(EXPORT tlMacroExpanderTargets NAMESPACE telv:: DESTINATION ${telvPackageDir})

configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/tlMacroExpanderConfig.cmake.in
    ${CMAKE_BINARY_DIR}/tlMacroExpanderConfig.cmake
    INSTALL_DESTINATION ${telvPackageDir})
write_basic_package_version_file(
    ${CMAKE_BINARY_DIR}/tlMacroExpanderConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
# Paths from the place of the file itself: the installed tree may be moved.
file(RELATIVE_PATH telvIncludeFromPc
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(
    ${CMAKE_CURRENT_LIST_DIR}/tlMacroExpander.pc.in ${CMAKE_BINARY_DIR}/tlMacroExpander.pc @ONLY)

install(FILES
    ${CMAKE_BINARY_DIR}/tlMacroExpanderConfig.cmake
    ${CMAKE_BINARY_DIR}/tlMacroExpanderConfigVersion.cmake
    DESTINATION ${telvPackageDir})
install(FILES ${CMAKE_BINARY_DIR}/tlMacroExpander.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

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
