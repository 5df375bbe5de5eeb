# Debian's musl, with the system's GCC: its C++ headers suffice, since the library needs nothing of the
# C++ run-time library.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${CMAKE_HOST_SYSTEM_PROCESSOR})
set(CMAKE_C_COMPILER musl-gcc)
set(CMAKE_CXX_COMPILER musl-gcc)
execute_process(COMMAND g++ -print-multiarch OUTPUT_VARIABLE triplet OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND g++ -dumpversion OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE)
string(REPLACE "gnu" "musl" musl ${triplet})
set(CMAKE_CXX_FLAGS_INIT "-isystem ${CMAKE_CURRENT_LIST_DIR}/musl \
-isystem /usr/include/c++/${version} -isystem /usr/include/${triplet}/c++/${version} \
-isystem /usr/include/${musl}")
