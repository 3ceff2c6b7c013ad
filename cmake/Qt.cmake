# Chooses Qt: KMR_QT_MAJOR=5 or 6, or empty for Qt 5 where it is installed and Qt 6 otherwise. The
# rest of the build names its parts Qt::Core and so on.
set(KMR_QT_MAJOR "" CACHE STRING "Major version of Qt: 5, 6 or empty for the first that is found")

if(KMR_QT_MAJOR STREQUAL "")
    find_package(Qt5 QUIET COMPONENTS Core Network SerialPort)
    if(Qt5_FOUND) # one search for both names finds either first
        set(KMR_QT_MAJOR 5 CACHE STRING "" FORCE)
    else()
        set(KMR_QT_MAJOR 6 CACHE STRING "" FORCE)
    endif()
endif()
find_package(Qt${KMR_QT_MAJOR} REQUIRED COMPONENTS Core Network SerialPort)
message(STATUS "Qt ${Qt${KMR_QT_MAJOR}Core_VERSION}")

foreach(part Core Network SerialPort)
    if(NOT TARGET Qt::${part})
        add_library(Qt::${part} ALIAS Qt${KMR_QT_MAJOR}::${part})
    endif()
endforeach()
