# What makes a binary fit to be shipped: it says nothing of the machine that built it, two builds of it are equal, its
# debug information is in a file of its own, and it is hardened.

# The longer of two matching prefixes has to come last: a build folder is often inside the source folder.
add_compile_options("-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build")

# Programs find the library beside themselves, in the build folder as after the installation. Without this, the build's
# run path gets an empty element to be overwritten later, which the loader takes for the current folder.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

add_compile_options(-fstack-protector-strong)
add_link_options(-fstack-protector-strong)
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT CMAKE_CXX_FLAGS MATCHES sanitize)
  add_compile_definitions(_FORTIFY_SOURCE=2)
endif()
if(TARN_TESTS)
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

if(WIN32)
  add_link_options(LINKER:--no-insert-timestamp LINKER:--dynamicbase LINKER:--nxcompat)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    add_link_options(LINKER:--high-entropy-va)
  endif()
else()
  add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()

# tarn_split_debug(TARGET): moves the debug information of a release to FILE.debug beside it, where gdb looks for it.
# Without --preserve-dates the time of the call would go into the header of a Windows file.
function(tarn_split_debug target)
  if(NOT CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo")
    return()
  endif()
  set(file "$<TARGET_FILE:${target}>")
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND "${CMAKE_OBJCOPY}" --preserve-dates --only-keep-debug "${file}" "${file}.debug"
    COMMAND "${CMAKE_OBJCOPY}" --preserve-dates --strip-all "--add-gnu-debuglink=${file}.debug" "${file}"
    VERBATIM)
endfunction()
