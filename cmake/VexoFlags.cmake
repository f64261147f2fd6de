# SPDX-License-Identifier: MIT
# Compiler and linker flags shared by every libvexo target, each passed only
# to a compiler or linker that understands it.
#
# Results must be identical to the last bit, so floating-point contraction is off
# everywhere and nothing is built with fast-math or -march=native.
include(CheckLinkerFlag)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  set(VEXO_WARNINGS -Wall -Wextra -Wpedantic)
  if(VEXO_WERROR)
    list(APPEND VEXO_WARNINGS -Werror)
  endif()
  add_compile_options(-ffp-contract=off -fno-fast-math)
elseif(MSVC)
  set(VEXO_WARNINGS /W4)
  if(VEXO_WERROR)
    list(APPEND VEXO_WARNINGS /WX)
  endif()
  add_compile_options(/fp:precise)
endif()

if(VEXO_SANITIZE)
  add_compile_options(-fsanitize=${VEXO_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VEXO_SANITIZE})
endif()

# Fuzz builds instrument the library for coverage; the fuzz targets link
# libFuzzer's main themselves.
if(VEXO_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

function(vexo_library_flags target)
  target_compile_options(${target} PRIVATE ${VEXO_WARNINGS})
endfunction()

# The shared library exports only what the version script names, keeps the
# symbols of the static libraries it links to itself, and leaves no symbol
# unresolved.  Each flag is used where the linker accepts it (GNU ld, gold,
# lld); clang's sanitizer and coverage runtimes are resolved only in the
# executable, so sanitized and fuzz clang builds skip the check for
# unresolved symbols.
function(vexo_shared_library_link_flags target map)
  check_linker_flag(CXX "LINKER:--version-script=${map}" VEXO_LD_VERSION_SCRIPT)
  check_linker_flag(CXX "LINKER:--exclude-libs,ALL" VEXO_LD_EXCLUDE_LIBS)
  check_linker_flag(CXX "LINKER:--no-undefined" VEXO_LD_NO_UNDEFINED)
  if(VEXO_LD_VERSION_SCRIPT)
    target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
  endif()
  if(VEXO_LD_EXCLUDE_LIBS)
    target_link_options(${target} PRIVATE "LINKER:--exclude-libs,ALL")
  endif()
  if(VEXO_LD_NO_UNDEFINED AND NOT ((VEXO_SANITIZE OR VEXO_BUILD_FUZZ) AND
                                    CMAKE_CXX_COMPILER_ID MATCHES "Clang"))
    target_link_options(${target} PRIVATE "LINKER:--no-undefined")
  endif()
endfunction()
