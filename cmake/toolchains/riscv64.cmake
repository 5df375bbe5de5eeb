set(CMAKE_SYSTEM_PROCESSOR riscv64)
set(emulator qemu-riscv64)
set(triplet riscv64-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
