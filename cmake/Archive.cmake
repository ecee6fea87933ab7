# Run by cpack: makes the archive from the staged files. CPack's own archives carry the names and the times of the
# builder; here equal files give equal bytes. SOURCE_DATE_EPOCH is the time that every file gets.
set(epoch "$ENV{SOURCE_DATE_EPOCH}")
if(epoch STREQUAL "")
  string(TIMESTAMP epoch "%s" UTC)
endif()

# An archive is unpacked into a folder of its own, so its documents are at the top of it.
set(stage "${CPACK_TEMPORARY_DIRECTORY}")
file(GLOB documents RELATIVE "${stage}/${CPACK_TARN_DOCDIR}" "${stage}/${CPACK_TARN_DOCDIR}/*")
foreach(document IN LISTS documents)
  file(RENAME "${stage}/${CPACK_TARN_DOCDIR}/${document}" "${stage}/${document}")
endforeach()

execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/../scripts/notices" ${CPACK_TARN_NOTICES}
  OUTPUT_FILE "${stage}/NOTICES" COMMAND_ERROR_IS_FATAL ANY)

if(CPACK_TARN_FORMAT STREQUAL "zip")
  set(pack "find \"$0\" -type f | sort | zip -q -X -D \"$1\" -@")
else()
  set(pack "find \"$0\" ! -type d | sort | tar -c --owner=0 --group=0 --numeric-owner -T - | gzip -9n > \"$1\"")
endif()
cmake_path(GET stage PARENT_PATH folder)
set(archive "${folder}/${CPACK_PACKAGE_FILE_NAME}.${CPACK_TARN_FORMAT}")
file(REMOVE "${archive}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C TZ=UTC bash -euo pipefail -c
    "chmod -R u=rwX,go=rX \"$0\"; find \"$0\" -exec touch -h -d \"@$2\" {} +; ${pack}"
    "${CPACK_PACKAGE_FILE_NAME}" "${archive}" "${epoch}"
  WORKING_DIRECTORY "${folder}" COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_EXTERNAL_BUILT_PACKAGES "${archive}")
