# What makes a binary fit to be shipped: it says nothing of the machine that built it, two builds of it are equal, and
# its debug information stands in a file of its own.

# The longer of two matching prefixes has to come last: a build folder is often inside the source folder.
add_compile_options("-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

if(WIN32)
  add_link_options(LINKER:--no-insert-timestamp LINKER:--dynamicbase LINKER:--nxcompat)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    add_link_options(LINKER:--high-entropy-va)
  endif()
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
