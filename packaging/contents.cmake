# Run by CPack when the packages' files stand in their folders: adds what belongs into every package,
# and compresses the manual pages.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} key)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  set(doc ${root}/doc/${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/../LICENSE ${doc}/copyright COPYONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/../CHANGELOG.md ${doc}/changelog COPYONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog ${doc}/changelog.Debian COPYONLY)
  file(GLOB_RECURSE pages ${root}/man/*.[1-9])
  execute_process(COMMAND gzip -9n ${doc}/changelog ${doc}/changelog.Debian ${pages}
                  COMMAND_ERROR_IS_FATAL ANY)
endforeach()
