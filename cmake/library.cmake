# How libzvutil is linked: libc alone at run time, and exactly the names of the version script.
target_compile_options(zvutil PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions;-fno-rtti;-fno-threadsafe-statics>)
# On a 32-bit processor without vector registers GCC tells that vectors are handed on in another way
# than with them. None leaves the library. Clang tells of loops that it does not unroll where asked to,
# which for some processors does not pay.
target_compile_options(zvutil PRIVATE -Wno-psabi -Wno-pass-failed)
include(cmake/hardening.cmake)
if(ZVUTIL_COVERAGE)
  # Unoptimised, so that the branches are those of the source; the counts are shared by threads.
  target_compile_options(zvutil PRIVATE --coverage -fprofile-update=atomic -O0)
  target_link_options(zvutil PRIVATE --coverage)
  target_sources(zvutil PRIVATE tests/support/counts.cpp)
endif()
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
      # A host may have functions of the same names: the library calls its own.
      -Wl,-Bsymbolic-functions
      -Wl,-z,relro,-z,now
      -Wl,-z,noexecstack)
  if(NOT ZVUTIL_SANITIZE)
    target_link_options(zvutil PRIVATE -Wl,--no-undefined)
  endif()
  set_target_properties(zvutil PROPERTIES LINK_DEPENDS ${version_script})
endif()
