# SPDX-License-Identifier: MIT
# Debian packages: the shared libraries, the files for development, the tool. scripts/package makes and
# checks them. They are components of their own, which a plain `cmake --install` passes over.
set(telvDocuments ${CMAKE_INSTALL_DATADIR}/doc)
set(telvPackaged EXCLUDE_FROM_ALL)

install(TARGETS tlUtils tlMacroExpander
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libraries NAMELINK_SKIP ${telvPackaged})
install(TARGETS tlexpand RUNTIME
    DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool ${telvPackaged})
install(FILES ${telvManualDir}/tlexpand.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME tlexpand
    COMPONENT tool ${telvPackaged})
install(FILES ${telvManualDir}/_tlexpand
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tool ${telvPackaged})
install(FILES ${telvManualDir}/tlexpand.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tool ${telvPackaged})

# What Debian asks of every package, and compressed pages.
set(telvDebian ${PROJECT_BINARY_DIR}/debian)
configure_file(cmake/debian/changelog.in ${telvDebian}/changelog @ONLY)
configure_file(LICENSE ${telvDebian}/copyright COPYONLY)
install(CODE "
    execute_process(COMMAND gzip -9nf -k \"${telvDebian}/changelog\" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND gzip -9nf -k \"${telvManualDir}/tlexpand.1\" COMMAND_ERROR_IS_FATAL ANY)"
    COMPONENT tool ${telvPackaged})
install(FILES ${telvManualDir}/tlexpand.1.gz
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool ${telvPackaged})

function(telv_debian_documents component package)
    install(CODE "
        execute_process(COMMAND gzip -9nf -k \"${telvDebian}/changelog\" COMMAND_ERROR_IS_FATAL ANY)"
        COMPONENT ${component} ${ARGN})
    install(FILES ${telvDebian}/copyright ${telvDebian}/changelog.gz
        DESTINATION ${telvDocuments}/${package} COMPONENT ${component} ${ARGN})
endfunction()
telv_debian_documents(libraries libtlmacroexpander1 ${telvPackaged})
telv_debian_documents(tool tlexpand ${telvPackaged})
telv_debian_documents(debian_development libtlmacroexpander-dev ${telvPackaged})

set(CPACK_GENERATOR DEB)
set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGE_NAME tlmacroexpander)
set(CPACK_PACKAGE_VENDOR "The tlMacroExpander authors")
set(CPACK_PACKAGE_CONTACT "The tlMacroExpander authors <authors@tlmacroexpander.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL libraries tool development debian_development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME libtlmacroexpander1)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_LIBRARIES_DESCRIPTION "Any text goes through unchanged, except where it
names a macro or a variable, or where a directive begins. These are the
libraries that expand it.")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME tlexpand)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TOOL_DESCRIPTION "Any text goes through unchanged, except where it
names a macro or a variable, or where a directive begins. This is the tool
for people and build systems.")
set(CPACK_COMPONENT_DEVELOPMENT_GROUP dev)
set(CPACK_COMPONENT_DEBIAN_DEVELOPMENT_GROUP dev)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libtlmacroexpander-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "libtlmacroexpander1 (= ${PROJECT_VERSION}), tlexpand (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEV_DESCRIPTION "Headers, a CMake package, pkg-config files and build
rules for programs that expand texts, and for builds that do.")
include(CPack)
