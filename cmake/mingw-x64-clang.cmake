# Clang and lld with MinGW-w64's libraries and those of its GCC, which Clang does not find by itself.
include("${CMAKE_CURRENT_LIST_DIR}/mingw-x64.cmake")
execute_process(COMMAND ${TARN_MINGW}-g++-posix -print-libgcc-file-name
  OUTPUT_VARIABLE gcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET gcc PARENT_PATH gcc)
set(CMAKE_C_COMPILER clang-16)
set(CMAKE_C_COMPILER_TARGET ${TARN_MINGW})
set(CMAKE_C_FLAGS_INIT "-B${gcc}")
set(CMAKE_CXX_COMPILER clang++-16)
set(CMAKE_CXX_COMPILER_TARGET ${TARN_MINGW})
set(CMAKE_CXX_FLAGS_INIT
  "-B${gcc} -isystem ${gcc}/include/c++ -isystem ${gcc}/include/c++/${TARN_MINGW}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld-16 -L${gcc} -lwinpthread")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-fuse-ld=lld-16 -L${gcc} -lwinpthread")
