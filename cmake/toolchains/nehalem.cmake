# An x86-64 processor that has no wide vectors, emulated; all else is as on this machine.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-x86_64 -cpu Nehalem)
