# 32-bit ARM with a floating-point unit, little-endian. See cross.cmake.
set(processor armv7l)
set(triplet arm-linux-gnueabihf)
set(multiarch arm-linux-gnueabihf)
set(qemu qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
