# Debian's cross compiler for `triplet`, and the emulator for what it makes.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${triplet}-gcc CACHE STRING "")
set(CMAKE_CXX_COMPILER ${triplet}-g++ CACHE STRING "")
foreach(language C CXX)
  set(CMAKE_${language}_COMPILER_TARGET ${triplet}) # for Clang
endforeach()
set(CMAKE_FIND_ROOT_PATH /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(CMAKE_CROSSCOMPILING_EMULATOR ${emulator} -L /usr/${triplet})
