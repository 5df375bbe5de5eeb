# What makes an attack on the library harder, should a fault be in it after all: checked return
# addresses of functions with arrays, checked calls of the C library, marked targets of indirect
# jumps. How it is linked adds read-only relocations and a stack that holds no code.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)

foreach(flag stack-protector-strong cf-protection)
  string(MAKE_C_IDENTIFIER HAVE_${flag} have)
  check_cxx_compiler_flag(-f${flag} ${have})
  if(${have})
    target_compile_options(zvutil PRIVATE -f${flag})
  endif()
endforeach()

# A distribution's own choice stands, given in the flags or built into the compiler. The checks need
# an optimised build, and the sanitizers make better ones.
set(CMAKE_REQUIRED_FLAGS -O2)
check_cxx_source_compiles("
    #ifdef _FORTIFY_SOURCE
    #error chosen
    #endif
    int main() {}" MAY_CHOOSE_FORTIFY_SOURCE)
unset(CMAKE_REQUIRED_FLAGS)
if(MAY_CHOOSE_FORTIFY_SOURCE AND NOT ZVUTIL_SANITIZE)
  target_compile_definitions(zvutil PRIVATE
      $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=2>)
endif()
