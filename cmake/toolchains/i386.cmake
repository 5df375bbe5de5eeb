set(CMAKE_SYSTEM_PROCESSOR i686)
set(emulator qemu-i386)
set(triplet i686-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
# A 64-bit processor of the family runs such programs itself; only their loader is not in its place.
if(CMAKE_HOST_SYSTEM_PROCESSOR STREQUAL "x86_64")
  set(CMAKE_CROSSCOMPILING_EMULATOR
      /usr/${triplet}/lib/ld-linux.so.2 --library-path /usr/${triplet}/lib)
endif()
