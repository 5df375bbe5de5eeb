# What `cmake --install` puts where. The components are those of the packages: runtime, development,
# tools and documentation. Everything finds its neighbours from its own place, so that the prefix may
# be moved. tools/ installs the programs.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zvutil)
set(example_dir ${CMAKE_INSTALL_DOCDIR}/examples)

set(libraries zvutil)
if(BUILD_SHARED_LIBS)
  # The same objects for hosts that want no shared library.
  add_library(zvutil_static STATIC $<TARGET_OBJECTS:zvutil>)
  set_target_properties(zvutil_static PROPERTIES OUTPUT_NAME zvutil LINKER_LANGUAGE C)
  target_include_directories(zvutil_static
      INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/zvutil>)
  list(APPEND libraries zvutil_static)
endif()
install(TARGETS ${libraries} EXPORT zvutil
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
                COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY common/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zvutil
        COMPONENT development FILES_MATCHING PATTERN "*.h")
install(EXPORT zvutil NAMESPACE zvutil:: DESTINATION ${package_dir} FILE zvutilConfig.cmake
        COMPONENT development)
write_basic_package_version_file(zvutilConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zvutilConfigVersion.cmake DESTINATION ${package_dir}
        COMPONENT development)

set(pc_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pc ${pc_dir} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" prefix_from_pc ${prefix_from_pc})
file(RELATIVE_PATH includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR}/zvutil)
file(RELATIVE_PATH libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
configure_file(cmake/zvutil.pc.in zvutil.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zvutil.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)

install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE SECURITY.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN manual EXCLUDE)
install(DIRECTORY examples/ DESTINATION ${example_dir} COMPONENT documentation
        PATTERN CMakeLists.txt EXCLUDE)
if(ZVUTIL_MANUAL)
  set(manual ${PROJECT_BINARY_DIR}/manual)
  install(DIRECTORY ${manual}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT development)
  install(DIRECTORY ${manual}/html DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
endif()

if(PROJECT_IS_TOP_LEVEL)
  add_custom_target(uninstall
      COMMAND ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_SOURCE_DIR}/cmake/uninstall.cmake
      WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
      COMMENT "Removing what was installed from here" VERBATIM)
endif()
