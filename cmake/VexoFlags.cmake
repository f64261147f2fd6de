# SPDX-License-Identifier: MIT
# Compiler flags shared by every libvexo target.
#
# Results must be identical to the last bit, so floating-point contraction is off
# everywhere and nothing is built with fast-math or -march=native.

set(VEXO_WARNINGS -Wall -Wextra -Wpedantic)
if(VEXO_WERROR)
  list(APPEND VEXO_WARNINGS -Werror)
endif()

if(VEXO_SANITIZE)
  add_compile_options(-fsanitize=${VEXO_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VEXO_SANITIZE})
endif()

add_compile_options(-ffp-contract=off -fno-fast-math)

# Fuzz builds instrument the library for coverage; the fuzz targets link
# libFuzzer's main themselves.
if(VEXO_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

function(vexo_library_flags target)
  target_compile_options(${target} PRIVATE ${VEXO_WARNINGS})
endfunction()
