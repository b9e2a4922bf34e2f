# Cross build for i686 Windows.
set(ZYN_ARCH i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
