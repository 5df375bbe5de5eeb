# What every target of the project is compiled with.
add_library(zvutil_options INTERFACE)
# Files beyond 2 GiB and inode numbers of 64 bits, on 32-bit machines too. No public header depends
# on it, so a host's choice is its own.
target_compile_definitions(zvutil_options INTERFACE _FILE_OFFSET_BITS=64)
target_compile_options(zvutil_options INTERFACE -Wall -Wextra -Wconversion -Wshadow)
if(ZVUTIL_WERROR)
  target_compile_options(zvutil_options INTERFACE -Werror)
endif()
if(ZVUTIL_SANITIZE)
  add_compile_options(-fsanitize=${ZVUTIL_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZVUTIL_SANITIZE})
  if(ZVUTIL_SANITIZE MATCHES "undefined")
    # The vptr check needs run-time type information, which the library is built without.
    add_compile_options(-fno-sanitize-recover=undefined -fno-sanitize=vptr)
  endif()
endif()
