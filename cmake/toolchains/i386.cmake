# 32-bit x86, little-endian. See cross.cmake.
set(processor i686)
set(triplet i686-linux-gnu)
set(multiarch i386-linux-gnu)
set(qemu qemu-i386)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
