# Builds for arm64 on another machine, by Debian's g++-aarch64-linux-gnu. What is built runs here under
# qemu-user. Libraries are those in the folder DRENCH_SYSROOT, as deploy/debian/sysroot.sh makes it; without
# it, those that come with the compiler.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

# Each try of the compiler reads this file again, and shares the environment.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DRENCH_SYSROOT DRENCH_STATIC)
if(DRENCH_SYSROOT)
  set(CMAKE_SYSROOT ${DRENCH_SYSROOT})
  set(libraries ${DRENCH_SYSROOT})
else()
  set(libraries /usr/aarch64-linux-gnu)
endif()
set(CMAKE_FIND_ROOT_PATH ${libraries})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} ${libraries}/usr/lib/aarch64-linux-gnu/pkgconfig:${libraries}/usr/share/pkgconfig)
# What deploy/container/libraries.sh builds.
if(DRENCH_STATIC)
  set(ENV{PKG_CONFIG_LIBDIR} ${libraries}/opt/static/lib/pkgconfig)
endif()
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${libraries})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${libraries})
