# Where cmake --install puts things, and what cpack packs: a .deb of the native build, a .zip of a
# Windows one.
include(CMakePackageConfigHelpers)

file(GLOB ZAT_DOCUMENTS CONFIGURE_DEPENDS docs/*.md docs/*.json)

if(WIN32)
    # What a Windows host's author unpacks: everything a program needs side by side.
    install(TARGETS zat_lib zat RUNTIME DESTINATION .)
    get_target_property(library_name zat_lib OUTPUT_NAME)
    install(FILES ${CMAKE_BINARY_DIR}/${library_name}.lib src/api/${library_name}.def DESTINATION lib)
    install(FILES include/zat/zat.h include/zat/details.h DESTINATION include/zat)
    install(FILES catalogue/zat-codec.ini README.md README.ja.md CHANGELOG.md DESTINATION .)
    install(FILES ${ZAT_DOCUMENTS} DESTINATION docs)
    install(DIRECTORY examples DESTINATION . PATTERN __pycache__ EXCLUDE)
    install(FILES bindings/python/zat.py DESTINATION bindings/python)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME zat-${PROJECT_VERSION}-win${ZAT_POINTER_BITS})
else()
    install(TARGETS zat_lib EXPORT zatTargets)
    install(TARGETS zat)
    install(FILES include/zat/zat.h include/zat/details.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zat)
    install(FILES catalogue/zat-codec.ini DESTINATION ${CMAKE_INSTALL_DATADIR}/zat)
    # The folders of the repository, so that links lead somewhere.
    install(FILES README.md README.ja.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
    install(FILES ${ZAT_DOCUMENTS} DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
    install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN __pycache__ EXCLUDE)
    install(FILES bindings/python/zat.py DESTINATION ${CMAKE_INSTALL_DATADIR}/zat)

    set(shell_files ${CMAKE_BINARY_DIR}/shell)
    install(FILES ${shell_files}/zat.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES ${shell_files}/zat.bash RENAME zat
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES ${shell_files}/_zat DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
    install(FILES ${shell_files}/zat.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

    install(EXPORT zatTargets NAMESPACE zat:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zat)
    write_basic_package_version_file(${CMAKE_BINARY_DIR}/zatConfigVersion.cmake
        COMPATIBILITY SameMajorVersion)
    configure_package_config_file(cmake/zatConfig.cmake.in ${CMAKE_BINARY_DIR}/zatConfig.cmake
        INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zat PATH_VARS CMAKE_INSTALL_DATADIR)
    install(FILES ${CMAKE_BINARY_DIR}/zatConfig.cmake ${CMAKE_BINARY_DIR}/zatConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zat)

    # Relative to where the file lies, so that an unpacked tree works from any place.
    file(RELATIVE_PATH ZAT_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    configure_file(cmake/zat.pc.in ${CMAKE_BINARY_DIR}/zat.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/zat.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_SECTION video)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()

set(CPACK_PACKAGE_NAME zat)
set(CPACK_PACKAGE_VENDOR zat)
set(CPACK_PACKAGE_CONTACT "zat maintainers <zat@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
