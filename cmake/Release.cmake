# What makes a binary fit to be shipped: it says nothing of the machine that built it, two builds of it are equal, it
# brings its run-time along on Windows, its debug information is in a file of its own, and it is hardened.

# Programs find the library beside themselves, in the build folder as after the installation. Without this, the build's
# run path gets an empty element to be overwritten later, which the loader takes for the current folder.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

if(MSVC)
  # Microsoft's linker hardens by default.
  add_compile_options(/utf-8 /Brepro)
  add_link_options(/Brepro)
  add_compile_definitions(NOMINMAX _CRT_SECURE_NO_WARNINGS _WINSOCK_DEPRECATED_NO_WARNINGS)
  set(CMAKE_MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
else()
  # The longer of two matching prefixes has to come last: a build folder is often inside the source folder.
  add_compile_options("-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build")
  add_compile_options(-fstack-protector-strong)
  add_link_options(-fstack-protector-strong)
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT TARN_SANITIZED)
    add_compile_definitions(_FORTIFY_SOURCE=2)
  endif()
  if(TARN_TESTS)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
  endif()
endif()

if(MINGW)
  add_link_options(-static LINKER:--no-insert-timestamp LINKER:--dynamicbase LINKER:--nxcompat)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    add_link_options(LINKER:--high-entropy-va)
  endif()
elseif(NOT WIN32)
  add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()

if(CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo" AND NOT MSVC)
  if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Microsoft's debuggers read this form, which GCC does not write. The linker names each file after its program.
    set(TARN_PDB ON)
    add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-gcodeview>)
    add_link_options(LINKER:--pdb= LINKER:-Xlink=-pdbaltpath:%_PDB%)
  elseif(CMAKE_OBJCOPY)
    set(TARN_SPLIT_DEBUG ON)
  endif()
endif()

# tarn_split_debug(TARGET): moves the debug information of a release to FILE.debug beside it, where gdb looks for it.
# Without --preserve-dates the time of the call would go into the header of a Windows file.
function(tarn_split_debug target)
  if(NOT TARN_SPLIT_DEBUG)
    return()
  endif()
  set(file "$<TARGET_FILE:${target}>")
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND "${CMAKE_OBJCOPY}" --preserve-dates --only-keep-debug "${file}" "${file}.debug"
    COMMAND "${CMAKE_OBJCOPY}" --preserve-dates --strip-all "--add-gnu-debuglink=${file}.debug" "${file}"
    VERBATIM)
endfunction()
