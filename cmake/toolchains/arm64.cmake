# 64-bit ARM, little-endian. See cross.cmake.
set(processor aarch64)
set(triplet aarch64-linux-gnu)
set(multiarch aarch64-linux-gnu)
set(qemu qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
