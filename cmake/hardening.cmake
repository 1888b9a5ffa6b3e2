# Flags that make a fault in the program, or in what it is given to read, harder to exploit: those
# that Debian builds its packages with, as far as compiler and linker have them. MSVC and the linker
# for Windows have their like by default.
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)
include(CheckPIESupported)

# Some flags need a library, which only a program that uses it shows to be missing.
set(buffer_on_the_stack "
#include <cstdio>
int main() { char text[64]; return std::fgets(text, sizeof text, stdin) == nullptr; }")

# harden_compiler(RESULT FLAG...): FLAGs for compiling and linking, where they work.
function(harden_compiler result)
  set(CMAKE_REQUIRED_FLAGS "-O2 ${ARGN}")
  set(CMAKE_REQUIRED_LINK_OPTIONS ${ARGN})
  check_cxx_source_compiles("${buffer_on_the_stack}" ${result} FAIL_REGEX "warning|warnung")
  if(${result})
    add_compile_options(${ARGN})
    add_link_options(${ARGN})
  endif()
endfunction()

if(NOT MSVC)
  harden_compiler(KOV_STACK_PROTECTOR -fstack-protector-strong)
  add_compile_options(-Wformat-security)
endif()
if(NOT MSVC AND NOT WIN32) # GCC for Windows breaks down over the first of these
  harden_compiler(KOV_STACK_CLASH -fstack-clash-protection)
  harden_compiler(KOV_CONTROL_FLOW -fcf-protection)
  if(NOT KOV_SANITIZE) # the sanitizers check the same, and more
    # Works in an optimised build alone. Some compilers bring a definition of their own.
    add_compile_options($<$<CONFIG:Release>:-U_FORTIFY_SOURCE>
      $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2>)
  endif()
  foreach(flag IN ITEMS relro now)
    check_linker_flag(CXX -Wl,-z,${flag} KOV_LINKER_${flag})
    if(KOV_LINKER_${flag})
      add_link_options(-Wl,-z,${flag})
    endif()
  endforeach()
  # A program at an address that changes; -fPIC would cost its functions their inlining.
  check_pie_supported(LANGUAGES CXX)
  function(position_independent program) # OBJECTS...
    set_target_properties(${program} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    foreach(objects IN LISTS ARGN)
      target_compile_options(${objects} PRIVATE -fPIE)
    endforeach()
  endfunction()
else()
  function(position_independent)
  endfunction()
endif()
