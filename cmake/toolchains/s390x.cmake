# 64-bit, big-endian: proves that the driver does not depend on the byte order. See cross.cmake.
set(processor s390x)
set(triplet s390x-linux-gnu)
set(multiarch s390x-linux-gnu)
set(qemu qemu-s390x)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
