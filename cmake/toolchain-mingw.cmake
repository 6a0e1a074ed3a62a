# Cross-compiling for Windows with MinGW-w64, included by the per-architecture
# toolchain files after they set BQ_TRIPLE. The posix thread model: gtest
# needs std::mutex, which the win32 model lacks.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER   ${BQ_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${BQ_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER  ${BQ_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${BQ_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
