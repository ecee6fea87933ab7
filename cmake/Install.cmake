# What `cmake --install` puts where, in components: runtime, development, tools, documentation.
include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/TarnRemoteClient")

install(TARGETS TarnRemoteClient EXPORT TarnRemoteClient
  RUNTIME COMPONENT runtime
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development)
install(FILES include/TarnRemoteClient.h TYPE INCLUDE COMPONENT development)
if(WIN32)
  set(library_dir "${CMAKE_INSTALL_BINDIR}")
  install(FILES "${PROJECT_BINARY_DIR}/src/TarnRemoteClient.def" TYPE LIB COMPONENT development)
else()
  set(library_dir "${CMAKE_INSTALL_LIBDIR}")
endif()
if(MINGW)
  # The same import library under the name that Microsoft's linker is usually given.
  install(FILES "$<TARGET_LINKER_FILE:TarnRemoteClient>" TYPE LIB RENAME TarnRemoteClient.lib COMPONENT development)
endif()
if(WIN32 AND (MSVC OR TARN_SPLIT_DEBUG))
  install(FILES "$<TARGET_FILE_DIR:TarnRemoteClient>/TarnRemoteClient.map" TYPE BIN COMPONENT development)
endif()
if(MSVC OR TARN_PDB)
  install(FILES "$<TARGET_FILE_DIR:TarnRemoteClient>/TarnRemoteClient.pdb" TYPE BIN COMPONENT development OPTIONAL)
endif()
if(TARN_SPLIT_DEBUG)
  install(FILES "$<TARGET_FILE:TarnRemoteClient>.debug" DESTINATION "${library_dir}" COMPONENT development)
endif()

install(EXPORT TarnRemoteClient NAMESPACE TarnRemoteClient:: DESTINATION "${package_dir}"
  FILE TarnRemoteClientConfig.cmake COMPONENT development)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TarnRemoteClientConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/TarnRemoteClientConfigVersion.cmake" DESTINATION "${package_dir}"
  COMPONENT development)

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
  OUTPUT_VARIABLE prefix_from_pkgconfig)
configure_file(cmake/TarnRemoteClient.pc.in TarnRemoteClient.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/TarnRemoteClient.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT development)

file(GLOB csharp CONFIGURE_DEPENDS bindings/csharp/*.cs)
install(FILES ${csharp} DESTINATION "${CMAKE_INSTALL_DOCDIR}/bindings/csharp" COMPONENT development)
install(FILES tools/wireshark/tarn.lua DESTINATION "${CMAKE_INSTALL_DATADIR}/TarnRemoteClient/wireshark"
  COMPONENT tools)

# The documents keep the places that they have to each other, so that the links between them hold. A link to what is
# elsewhere in an installation, or only in the sources, becomes plain text.
file(GLOB documents RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS README.md CHANGELOG.md docs/*)
foreach(document IN LISTS documents)
  set(installed "${PROJECT_BINARY_DIR}/documents/${document}")
  configure_file("${document}" "${installed}" COPYONLY)
  if(document MATCHES "\\.md$")
    file(READ "${document}" text)
    string(REGEX REPLACE "\\[([^]]*)\\]\\((\\.\\./)*(CONTRIBUTING\\.md|(bindings|include|scripts|src|tests|tools)/)[^)]*\\)"
      "\\1" text "${text}")
    file(WRITE "${installed}" "${text}")
  endif()
endforeach()
install(DIRECTORY "${PROJECT_BINARY_DIR}/documents/" TYPE DOC COMPONENT documentation)
