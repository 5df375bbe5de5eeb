# The Debian packages, one a component; script/package builds and checks them. Version, revision and
# maintainer are those of the newest entry of packaging/changelog.
file(STRINGS packaging/changelog changelog)
list(GET changelog 0 newest)
string(REGEX MATCH "\\((.*)-(.*)\\)" newest "${newest}")
if(NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "packaging/changelog begins with ${newest}, not with ${PROJECT_VERSION}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})
set(full_version ${PROJECT_VERSION}-${CMAKE_MATCH_2})
string(REGEX MATCH " -- ([^>]*>)" signature "${changelog}")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${CMAKE_MATCH_1})

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development tools documentation)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# A cross compiler's C library stands apart.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
if(CMAKE_CROSSCOMPILING)
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_FIND_ROOT_PATH}/lib)
endif()
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/packaging/contents.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/packaging/control.cmake)

# The summary of each package stands in its own description.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(about "zvutil keeps the text of server programs in one multibyte code set and
converts it: Japanese, Chinese, Cyrillic and Central European encodings,
mail subjects and bodies. It has streams, lists, locks and paths besides.")
# zvutil_package(COMPONENT NAME SECTION SUMMARY WHAT [DEPENDS])
function(zvutil_package component name section summary what)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_COMPONENT_${key}_DESCRIPTION "${summary}\n${about}\n\n${what}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${ARGN}" PARENT_SCOPE)
endfunction()
set(library libzvutil${PROJECT_VERSION_MAJOR})
set(services "services for server programs")
zvutil_package(runtime ${library} libs "internationalisation and portability ${services}"
    "This package holds the shared library.")
zvutil_package(development libzvutil-dev libdevel "internationalisation ${services} (development)"
    "This package holds what compiling a host needs, the static library among
it, and the manual pages."
    "${library} (= ${full_version})")
zvutil_package(tools zvutil-tools utils "converter of text files and mail subjects"
    "This package holds zvconv, which converts files with it."
    "${library} (>= ${PROJECT_VERSION})")
zvutil_package(documentation zvutil-doc doc "internationalisation ${services} (documentation)"
    "This package holds the reference, the guides and example hosts.")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/packaging/triggers)

set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
