# Debian packages of the installed files, made with CPack by script/package: libostrel-kmr1 (component
# runtime), libostrel-kmr-dev (dev), kmr (kmr) and kmr-publish (publish). The version says which Qt
# they are built for.
set(KMR_DEBIAN_RELEASE 1+qt${KMR_QT_MAJOR})
set(KMR_DEBIAN_VERSION ${PROJECT_VERSION}-${KMR_DEBIAN_RELEASE})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ostrel-kmr)
set(CPACK_PACKAGE_CONTACT "Ostrel KMR driver maintainers <maintainers@ostrel-kmr.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${KMR_DEBIAN_RELEASE})
if(KMR_FOREIGN_ARCHITECTURE) # script/package says what the packages depend on
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${KMR_FOREIGN_ARCHITECTURE})
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS ${KMR_FOREIGN_RUNTIME_DEPENDS})
else()
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
set(CPACK_COMPONENTS_ALL runtime dev)
if(NOT KMR_DRIVER_ONLY)
    list(APPEND CPACK_COMPONENTS_ALL kmr publish)
endif()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libostrel-kmr1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The records of the interface differ between major versions of Qt, so a program that links to the
# library built for one must not get the library built for the other.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
# CPack writes scripts that call ldconfig; Debian requires the trigger, which runs it once.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/packaging/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"Modbus ASCII driver for Ostrel KMR controllers (Qt ${KMR_QT_MAJOR})
The shared library that an operator panel's host loads: it turns the host's
addresses into a polling plan, builds request frames, decodes replies, queues
writes and moves recipes. It opens no port; the host does.

Host and library must be built with the same major version of Qt.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libostrel-kmr-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
if(KMR_QT_MAJOR EQUAL 5)
    set(qt_dev_packages qtbase5-dev)
else()
    set(qt_dev_packages "qt6-base-dev, libgl-dev") # Qt 6's CMake package needs OpenGL
endif()
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libostrel-kmr1 (= ${KMR_DEBIAN_VERSION}), ${qt_dev_packages}")
set(CPACK_COMPONENT_DEV_DESCRIPTION
"Modbus ASCII driver for Ostrel KMR controllers (header, Qt ${KMR_QT_MAJOR})
The files to build hosts for the driver in libostrel-kmr1: its header,
the CMake package OstrelKmr and ostrel-kmr.pc for pkg-config.")

set(CPACK_DEBIAN_KMR_PACKAGE_NAME kmr)
set(CPACK_DEBIAN_KMR_PACKAGE_SECTION comm)
# kmr loads the library at run time, which shlibdeps can't see.
set(CPACK_DEBIAN_KMR_PACKAGE_DEPENDS "libostrel-kmr1 (= ${KMR_DEBIAN_VERSION})")
if(KMR_FOREIGN_ARCHITECTURE)
    set(CPACK_DEBIAN_KMR_PACKAGE_DEPENDS ${KMR_FOREIGN_KMR_DEPENDS})
endif()
set(CPACK_COMPONENT_KMR_DESCRIPTION
"commissioning command for Ostrel KMR controllers (Qt ${KMR_QT_MAJOR})
Reads, writes and watches a controller's memory over a serial line or TCP,
transfers recipes, diagnoses the line and simulates controllers. It uses the
driver in libostrel-kmr1, as an operator panel does.")

set(CPACK_DEBIAN_PUBLISH_PACKAGE_NAME kmr-publish)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_DEPENDS "kmr (= ${KMR_DEBIAN_VERSION})")
set(CPACK_DEBIAN_PUBLISH_PACKAGE_SUGGESTS mosquitto)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/packaging/service/postinst
    ${CMAKE_CURRENT_SOURCE_DIR}/packaging/service/prerm
    ${CMAKE_CURRENT_SOURCE_DIR}/packaging/service/postrm)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENT_PUBLISH_DESCRIPTION
"values of Ostrel KMR controllers to an MQTT broker, as a service
The service kmr-publish@NAME runs 'kmr publish' for the line that
/etc/kmr/NAME.toml describes: it publishes the line's values and, if that is
allowed, takes writes. It is confined and watched by systemd.")

# Further files that Debian requires. EXCLUDE_FROM_ALL: not part of a plain cmake --install.
find_program(GZIP gzip)
function(compress input output)
    execute_process(COMMAND ${GZIP} -9nc ${input} OUTPUT_FILE ${output} COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${input})
endfunction()

if(GZIP)
    set(package_files ${CMAKE_CURRENT_BINARY_DIR}/packaging)
    configure_file(packaging/changelog.in ${package_files}/changelog @ONLY)
    compress(${package_files}/changelog ${package_files}/changelog.Debian.gz)
    compress(${CMAKE_CURRENT_SOURCE_DIR}/CHANGELOG.md ${package_files}/changelog.gz)
    foreach(component IN LISTS CPACK_COMPONENTS_ALL)
        string(TOUPPER ${component} key)
        set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
        install(FILES packaging/copyright
            ${package_files}/changelog.Debian.gz ${package_files}/changelog.gz
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
            COMPONENT ${component} EXCLUDE_FROM_ALL)
    endforeach()
    install(FILES packaging/libostrel-kmr1.lintian-overrides
        DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME libostrel-kmr1
        COMPONENT runtime EXCLUDE_FROM_ALL)
    if(NOT KMR_DRIVER_ONLY)
        install(FILES packaging/kmr-publish.lintian-overrides
            DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME kmr-publish
            COMPONENT publish EXCLUDE_FROM_ALL)
    endif()
    set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/packaging/compress-man-pages.cmake)
endif()

include(CPack)
