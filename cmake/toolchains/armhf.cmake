set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(emulator qemu-arm)
set(triplet arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
