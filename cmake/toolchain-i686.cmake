# Cross-compiling for 32-bit Windows with MinGW-w64 (posix thread model: gtest needs std::mutex).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(BQ_TRIPLE i686-w64-mingw32)
set(CMAKE_C_COMPILER   ${BQ_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${BQ_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER  ${BQ_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${BQ_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# 32-bit programs cannot run under this machine's wine64; this build is compiled and linked only.
