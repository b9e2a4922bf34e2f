# Shared part of the cross toolchains: mingw-w64 posix-thread compilers for
# ZYN_ARCH, which the per-architecture file sets before including this.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${ZYN_ARCH})
set(ZYN_TRIPLE ${ZYN_ARCH}-w64-mingw32)
set(CMAKE_C_COMPILER   ${ZYN_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZYN_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER  ${ZYN_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${ZYN_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
