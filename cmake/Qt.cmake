# Chooses Qt: KMR_QT_MAJOR=4, 5 or 6, or empty for Qt 5 if it is installed and Qt 6 otherwise. The
# rest of the build names its parts Qt::Core and so on.
#   KMR_QT_CORE      the target of Qt Core by Qt's own name, for exported targets
#   KMR_QT_CORE_PC   its name for pkg-config
# The driver alone (KMR_DRIVER_ONLY) needs only Qt Core. Qt 4 is only for the driver;
# CMake finds it by its qmake (QT_QMAKE_EXECUTABLE).
set(KMR_QT_MAJOR "" CACHE STRING "Major version of Qt: 4, 5, 6 or empty for the first that is found")

set(qt_parts Core)
if(KMR_QT_MAJOR EQUAL 4)
    set(KMR_DRIVER_ONLY ON)
elseif(NOT KMR_DRIVER_ONLY)
    list(APPEND qt_parts Network SerialPort)
endif()

if(KMR_QT_MAJOR STREQUAL "")
    find_package(Qt5 QUIET COMPONENTS ${qt_parts})
    if(Qt5_FOUND) # a single search for both names may find either
        set(KMR_QT_MAJOR 5 CACHE STRING "" FORCE)
    else()
        set(KMR_QT_MAJOR 6 CACHE STRING "" FORCE)
    endif()
endif()

if(KMR_QT_MAJOR EQUAL 4)
    find_package(Qt4 4.8 REQUIRED COMPONENTS QtCore)
    set(qt_version ${QTVERSION})
    set(KMR_QT_CORE Qt4::QtCore)
    set(KMR_QT_CORE_PC QtCore)
    add_library(Qt::Core ALIAS ${KMR_QT_CORE})
else()
    find_package(Qt${KMR_QT_MAJOR} REQUIRED COMPONENTS ${qt_parts})
    set(qt_version ${Qt${KMR_QT_MAJOR}Core_VERSION})
    set(KMR_QT_CORE Qt${KMR_QT_MAJOR}::Core)
    set(KMR_QT_CORE_PC Qt${KMR_QT_MAJOR}Core)
    foreach(part IN LISTS qt_parts)
        if(NOT TARGET Qt::${part})
            add_library(Qt::${part} ALIAS Qt${KMR_QT_MAJOR}::${part})
        endif()
    endforeach()
endif()
message(STATUS "Qt ${qt_version}")
