# How libzvutil is linked: libc alone at run time, and exactly the names of the version script.
target_compile_options(zvutil PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions;-fno-rtti;-fno-threadsafe-statics>)
include(cmake/hardening.cmake)
# More than -O2 makes the library larger, not faster: its kernels are blocks already.
target_compile_options(zvutil PRIVATE $<$<CONFIG:Release>:-O2>)
set_target_properties(zvutil PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON
    # The C driver does not add the C++ run-time library.
    LINKER_LANGUAGE C)
if(BUILD_SHARED_LIBS)
  set(version_script ${CMAKE_CURRENT_SOURCE_DIR}/common/zvutil.map)
  target_link_options(zvutil PRIVATE
      -Wl,--version-script=${version_script}
      # A name in the script that nothing defines is an error.
      -Wl,--no-undefined-version
      -Wl,-z,relro,-z,now
      -Wl,-z,noexecstack)
  if(NOT ZVUTIL_SANITIZE)
    target_link_options(zvutil PRIVATE -Wl,--no-undefined)
  endif()
  set_target_properties(zvutil PROPERTIES LINK_DEPENDS ${version_script})
endif()
