# The files of cmake --install (GNUInstallDirs): the library, its header, the files with which CMake
# and pkg-config find it, and, except in a build of the driver alone, kmr with its man page and
# completion, and kmr-view where it is built. Components: runtime, dev, kmr, publish (the service
# of kmr publish), view.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/OstrelKmr)

install(TARGETS ostrel_kmr ostrel_kmr_header EXPORT OstrelKmrTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES driver/ostrel_kmr.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)

install(EXPORT OstrelKmrTargets NAMESPACE OstrelKmr:: DESTINATION ${package_dir} COMPONENT dev)
configure_package_config_file(cmake/OstrelKmrConfig.cmake.in OstrelKmrConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(OstrelKmrConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/OstrelKmrConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/OstrelKmrConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT dev)

# Relative to this file, so that an installed tree can be moved.
file(RELATIVE_PATH pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/ostrel-kmr.pc.in ostrel-kmr.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ostrel-kmr.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

if(KMR_DRIVER_ONLY)
    return()
endif()
install(TARGETS kmr RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT kmr)
install(FILES kmr/man/kmr.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT kmr)
install(FILES kmr/completion/kmr.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME kmr COMPONENT kmr)
configure_file(packaging/service/kmr-publish@.service.in kmr-publish@.service @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kmr-publish@.service
    DESTINATION lib/systemd/system COMPONENT publish)
install(FILES packaging/service/line.toml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kmr-publish/examples COMPONENT publish)

if(TARGET kmr-view)
    install(TARGETS kmr-view RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT view)
    install(FILES view/man/kmr-view.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT view)
    if(LRELEASE)
        foreach(language de en)
            install(FILES ${CMAKE_BINARY_DIR}/view/kmr-view_${language}.qm
                DESTINATION ${CMAKE_INSTALL_DATADIR}/kmr-view/translations COMPONENT view)
        endforeach()
    endif()
    install(FILES view/desktop/kmr-view.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT view)
    install(FILES view/desktop/kmr-view.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT view)
    install(FILES view/desktop/kmr-view.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT view)
endif()
