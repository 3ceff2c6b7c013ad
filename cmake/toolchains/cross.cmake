# Included by the toolchain files, which set `processor` (as `uname -m` prints it), `triplet`
# (the prefix of the compiler and of binutils) and `qemu` (QEMU's emulator for one program).
#   SYSROOT   folder with the target's headers and libraries, from a vendor's SDK or Debian's
#             packages; without it the compiler uses its own
#   CROSS     prefix of a vendor's compiler with or without a folder, such as
#             /opt/sdk/bin/arm-vendor-linux-gnueabihf- ; default: Debian's cross compiler
# With a SYSROOT and QEMU on this machine, the tests of the build run under QEMU.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${processor})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SYSROOT CROSS)

if(NOT CROSS)
    set(CROSS ${triplet}-)
    set(CMAKE_LIBRARY_ARCHITECTURE ${multiarch})
endif()
set(CMAKE_C_COMPILER ${CROSS}gcc)
set(CMAKE_CXX_COMPILER ${CROSS}g++)

if(SYSROOT)
    set(CMAKE_SYSROOT ${SYSROOT})
    find_program(KMR_EMULATOR ${qemu})
    if(KMR_EMULATOR)
        set(CMAKE_CROSSCOMPILING_EMULATOR ${KMR_EMULATOR} -L ${SYSROOT})
    endif()
endif()

# Headers, libraries and CMake packages are those of the target, programs those of this machine.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
