# How the sources of the library are optimised. -O2, except for the few that gain by more: the library
# would be a tenth larger. Padding before loops and jumps would make it larger by 12 KiB.
target_compile_options(zvutil PRIVATE $<$<CONFIG:Release>:-O2;-falign-loops=1>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(zvutil PRIVATE $<$<CONFIG:Release>:-falign-jumps=1>)
endif()

function(zvutil_hot_sources)
  set_property(SOURCE ${ARGN} TARGET_DIRECTORY zvutil
      APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-O3>)
endfunction()

# Kernels are compiled for vectors of 16 bytes, and for x86 processors with wider ones once more for
# each width, which the library picks when it runs. Nothing else is compiled for such processors.
include(CheckIncludeFile)
check_include_file(sys/platform/x86.h ZVUTIL_ASKS_PROCESSOR)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" AND ZVUTIL_ASKS_PROCESSOR)
  target_compile_definitions(zvutil PRIVATE ZVUTIL_WIDE_KERNELS)
  set(ZVUTIL_OPTIONS_32 -mavx2 -mbmi -mbmi2 -mpopcnt -mlzcnt)
  set(ZVUTIL_OPTIONS_64 ${ZVUTIL_OPTIONS_32} -mavx512f -mavx512bw -mavx512vl -mavx512vbmi -mavx512vbmi2)
  # GCC 12 makes constant blocks anew from numbers wherever they are used, which costs these loops a
  # tenth; with this they stand in memory.
  include(CheckCXXCompilerFlag)
  check_cxx_compiler_flag(-mtune-ctrl=^inter_unit_moves_to_vec ZVUTIL_KEEPS_CONSTANTS)
  if(ZVUTIL_KEEPS_CONSTANTS)
    list(APPEND ZVUTIL_OPTIONS_32 -mtune-ctrl=^inter_unit_moves_to_vec)
    list(APPEND ZVUTIL_OPTIONS_64 -mtune-ctrl=^inter_unit_moves_to_vec)
  endif()
endif()

# zvutil_kernels(FILE WIDTH...): the widths beside 16 that pay. What they store in a row from a table
# would be put together in a vector first, which takes longer.
function(zvutil_kernels file)
  target_sources(zvutil PRIVATE ${file})
  cmake_path(GET file STEM name)
  set(all ${file})
  foreach(width IN LISTS ARGN)
    if(ZVUTIL_OPTIONS_${width})
      set(copy ${CMAKE_CURRENT_BINARY_DIR}/${name}_${width}.cpp)
      file(CONFIGURE OUTPUT ${copy} CONTENT "#include \"${CMAKE_CURRENT_SOURCE_DIR}/${file}\"\n")
      target_sources(zvutil PRIVATE ${copy})
      set_property(SOURCE ${copy} TARGET_DIRECTORY zvutil
          APPEND PROPERTY COMPILE_OPTIONS ${ZVUTIL_OPTIONS_${width}} $<$<CONFIG:Release>:-O3>)
      list(APPEND all ${copy})
    endif()
  endforeach()
  set_property(SOURCE ${all} TARGET_DIRECTORY zvutil
      APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-fno-tree-slp-vectorize>)
endfunction()
