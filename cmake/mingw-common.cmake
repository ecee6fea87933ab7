# The compilers with POSIX threads; everything is linked statically, so that none of their run-time DLLs is needed.
set(CMAKE_C_COMPILER ${TARN_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TARN_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${TARN_MINGW}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${TARN_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

# Wine runs what is built for tests.
find_program(TARN_WINE wine)
if(TARN_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${TARN_WINE}")
endif()
