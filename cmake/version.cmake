# The version has one source, the public header. Sets zvutil_version.
set(version_header ${CMAKE_CURRENT_LIST_DIR}/../common/include/zvutil_version.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${version_header})
file(STRINGS ${version_header} version_lines REGEX "define ZVUTIL_VERSION_(MAJOR|MINOR|PATCH) ")
string(REGEX MATCHALL "[0-9]+" zvutil_version "${version_lines}")
list(JOIN zvutil_version "." zvutil_version)
