SUMMARY = "Modbus ASCII driver for Ostrel KMR controllers"
DESCRIPTION = "The shared library that an operator panel's host loads."
LICENSE = "CLOSED"

# Unpacked into the folder S. For Qt 6: qtbase of meta-qt6, inherit qt6-cmake, and 6 below.
SRC_URI = "file://ostrel-kmr-${PV}.tar.gz"
S = "${WORKDIR}/ostrel-kmr-${PV}"

DEPENDS = "qtbase"
inherit cmake_qt5

EXTRA_OECMAKE += "-DKMR_DRIVER_ONLY=ON -DKMR_QT_MAJOR=5 -DKMR_TESTS=OFF"
