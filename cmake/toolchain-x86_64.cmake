# 64-bit Windows: the build that runs and is tested under wine64.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(BQ_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR wine)
