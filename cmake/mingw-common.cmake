# The compilers with POSIX threads.
set(CMAKE_C_COMPILER ${TARN_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TARN_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${TARN_MINGW}-windres)
set(CMAKE_RC_FLAGS_INIT --use-temp-file) # the preprocessor is called without a shell, which takes paths apart
# With the prefixes: packages outside of all roots would not be found.
set(CMAKE_FIND_ROOT_PATH /usr/${TARN_MINGW} ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Wine runs what is built for tests.
find_program(TARN_WINE wine)
if(TARN_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${TARN_WINE}")
endif()
