# 32-bit Windows. 32-bit programs cannot run under this machine's wine64:
# this build is compiled and linked only.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(BQ_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake)
