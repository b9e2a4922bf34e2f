# Cross build for x86_64 Windows.
set(ZYN_ARCH x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
