# How the sources of the library are optimised. -O2, except for the few that gain by more: the library
# would be a tenth larger.
target_compile_options(zvutil PRIVATE $<$<CONFIG:Release>:-O2>)

function(zvutil_hot_sources)
  set_property(SOURCE ${ARGN} TARGET_DIRECTORY zvutil
      APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-O3>)
endfunction()

# Some kernels exist a second time for x86 processors with AVX2, which the library picks when it
# runs. They stand in source files of their own, and only those are compiled for such processors.
include(CheckIncludeFile)
check_include_file(sys/platform/x86.h ZVUTIL_ASKS_PROCESSOR)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" AND ZVUTIL_ASKS_PROCESSOR)
  target_compile_definitions(zvutil PRIVATE ZVUTIL_AVX2)
endif()

# GCC 12 makes constant blocks anew from numbers wherever they are used, which costs these loops a
# tenth; with this they stand in memory.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-mtune-ctrl=^inter_unit_moves_to_vec ZVUTIL_KEEPS_CONSTANTS)

function(zvutil_avx2_sources)
  get_target_property(definitions zvutil COMPILE_DEFINITIONS)
  if("ZVUTIL_AVX2" IN_LIST definitions)
    target_sources(zvutil PRIVATE ${ARGN})
    set_property(SOURCE ${ARGN} TARGET_DIRECTORY zvutil
        APPEND PROPERTY COMPILE_OPTIONS -mavx2 -mbmi -mbmi2
        $<$<BOOL:${ZVUTIL_KEEPS_CONSTANTS}>:-mtune-ctrl=^inter_unit_moves_to_vec>)
    zvutil_hot_sources(${ARGN})
  endif()
endfunction()
