# For the folder of the tests. Where GCC builds for Windows and Clang is there as well, Clang and lld make the tests' own
# programs in half of the time: GNU ld takes seconds for each. What they test remains GCC's.
option(TARN_TESTS_CLANG "Let Clang and lld, where they are, make the tests' own programs for Windows" ON)
find_program(TARN_CLANG clang++-16)
find_program(TARN_LLD ld.lld-16)
find_program(TARN_LLVM_AR llvm-ar-16)
if(NOT (TARN_TESTS_CLANG AND MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND TARN_CLANG AND TARN_LLD AND TARN_LLVM_AR))
  return()
endif()
set(TARN_TESTS_BY_CLANG ON)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-libgcc-file-name
  OUTPUT_VARIABLE gcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET gcc PARENT_PATH gcc)
set(clang "${TARN_CLANG} --target=${TARN_MINGW} -B${gcc}")
set(headers "-isystem ${gcc}/include/c++ -isystem ${gcc}/include/c++/${TARN_MINGW}")
set(CMAKE_CXX_COMPILE_OBJECT "${clang} ${headers} <DEFINES> <INCLUDES> <FLAGS> -o <OBJECT> -c <SOURCE>")
set(CMAKE_CXX_COMPILE_OPTIONS_VISIBILITY_INLINES_HIDDEN "") # an option of GCC
set(CMAKE_CXX_ARCHIVE_CREATE "${TARN_LLVM_AR} qc <TARGET> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_FINISH "")
set(CMAKE_CXX_LINK_EXECUTABLE "${clang} --ld-path=${TARN_LLD} -L${gcc} <FLAGS> <LINK_FLAGS> <OBJECTS> -o <TARGET> \
<LINK_LIBRARIES> -lwinpthread")
