# What `cmake --install` and cpack put where. The documents keep the places that they have to each other, so that the
# links between them hold.
include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/TarnRemoteClient")

install(TARGETS TarnRemoteClient EXPORT TarnRemoteClient)
install(FILES include/TarnRemoteClient.h TYPE INCLUDE)
if(WIN32)
  set(library_dir "${CMAKE_INSTALL_BINDIR}")
  # The same import library under the name that Microsoft's linker is usually given.
  install(FILES "$<TARGET_LINKER_FILE:TarnRemoteClient>" TYPE LIB RENAME TarnRemoteClient.lib)
  install(FILES "${PROJECT_BINARY_DIR}/src/TarnRemoteClient.def" TYPE LIB)
else()
  set(library_dir "${CMAKE_INSTALL_LIBDIR}")
endif()
if(CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo")
  install(FILES "$<TARGET_FILE:TarnRemoteClient>.debug" DESTINATION "${library_dir}")
endif()

install(EXPORT TarnRemoteClient NAMESPACE TarnRemoteClient:: DESTINATION "${package_dir}"
  FILE TarnRemoteClientConfig.cmake)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TarnRemoteClientConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/TarnRemoteClientConfigVersion.cmake" DESTINATION "${package_dir}")

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
  OUTPUT_VARIABLE prefix_from_pkgconfig)
configure_file(cmake/TarnRemoteClient.pc.in TarnRemoteClient.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/TarnRemoteClient.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

file(GLOB csharp CONFIGURE_DEPENDS bindings/csharp/*.cs)
install(FILES ${csharp} DESTINATION "${CMAKE_INSTALL_DOCDIR}/bindings/csharp")
install(FILES tools/wireshark/tarn.lua DESTINATION "${CMAKE_INSTALL_DATADIR}/TarnRemoteClient/wireshark")
install(FILES README.md CHANGELOG.md TYPE DOC)
install(DIRECTORY docs TYPE DOC)

if(PROJECT_IS_TOP_LEVEL)
  string(TOLOWER "${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" platform)
  set(CPACK_PACKAGE_FILE_NAME "TarnRemoteClient-${PROJECT_VERSION}-${platform}")
  set(CPACK_GENERATOR External)
  set(CPACK_EXTERNAL_ENABLE_STAGING ON)
  set(CPACK_EXTERNAL_PACKAGE_SCRIPT "${PROJECT_SOURCE_DIR}/cmake/Archive.cmake")
  set(CPACK_TARN_DOCDIR "${CMAKE_INSTALL_DOCDIR}")
  if(WIN32)
    set(CPACK_TARN_FORMAT zip)
  else()
    set(CPACK_TARN_FORMAT tar.gz)
  endif()
  set(CPACK_VERBATIM_VARIABLES ON)
  include(CPack)
endif()
