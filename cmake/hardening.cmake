# What makes an attack on the library harder, should a fault be in it after all: checked return
# addresses of functions with arrays, frames that touch each page of the stack, checked calls of the
# C library, marked targets of indirect jumps. How it is linked adds read-only relocations and a
# stack that holds no code.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)

# Clang takes some of them for every processor and warns where they have no meaning.
set(CMAKE_REQUIRED_FLAGS -Werror)
foreach(flag stack-protector-strong stack-clash-protection cf-protection)
  string(MAKE_C_IDENTIFIER HAVE_${flag} have)
  check_cxx_compiler_flag(-f${flag} ${have})
  if(${have})
    target_compile_options(zvutil PRIVATE -f${flag})
  endif()
endforeach()
unset(CMAKE_REQUIRED_FLAGS)

# A process has shadow stacks when all its objects say that they keep to them. The start files lack
# that note, so the linker would drop it. Jump targets are marked too, but not noted: those of the
# start files are not.
check_linker_flag(C -Wl,-z,shstk MAY_NOTE_SHADOW_STACKS)
if(MAY_NOTE_SHADOW_STACKS AND HAVE_cf_protection)
  target_link_options(zvutil PRIVATE -Wl,-z,shstk)
endif()

# A distribution's own choice stands, given in the flags or built into the compiler. The checks need
# an optimised build, and the sanitizers make better ones. The C library warns of a level that the
# compiler does not have.
set(CMAKE_REQUIRED_FLAGS -O2)
check_cxx_source_compiles("
    #ifdef _FORTIFY_SOURCE
    #error chosen
    #endif
    int main() {}" MAY_CHOOSE_FORTIFY_SOURCE)
set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("
    #include <cstring>
    int main() {}" HAS_FORTIFY_SOURCE_3)
unset(CMAKE_REQUIRED_FLAGS)
if(MAY_CHOOSE_FORTIFY_SOURCE AND NOT ZVUTIL_SANITIZE)
  target_compile_definitions(zvutil PRIVATE
      $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=$<IF:$<BOOL:${HAS_FORTIFY_SOURCE_3}>,3,2>>)
endif()
