# SPDX-License-Identifier: MIT
# Reads fuzz/targets.txt: sets <out> to the target names and, per name,
# VEXO_FUZZ_FAMILY_<name> and VEXO_FUZZ_MAX_LEN_<name>.
function(vexo_fuzz_targets out)
  file(STRINGS ${PROJECT_SOURCE_DIR}/fuzz/targets.txt _lines REGEX "^[a-z]")
  set(_names)
  foreach(_line ${_lines})
    string(REGEX MATCHALL "[^ \t]+" _fields "${_line}")
    list(GET _fields 0 _name)
    list(GET _fields 1 _family)
    list(GET _fields 2 _max_len)
    list(APPEND _names ${_name})
    set(VEXO_FUZZ_FAMILY_${_name} ${_family} PARENT_SCOPE)
    set(VEXO_FUZZ_MAX_LEN_${_name} ${_max_len} PARENT_SCOPE)
  endforeach()
  set(${out} ${_names} PARENT_SCOPE)
endfunction()
