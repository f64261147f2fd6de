# SPDX-License-Identifier: MIT
# Fails when a file in SOURCE_DIR/<family>/ includes "<other>/..." of a
# family <other> that is neither <family> itself nor reachable through the
# DEPS in RULES ("family:dep,dep|family:...").
cmake_minimum_required(VERSION 3.24)
if(NOT SOURCE_DIR OR NOT DEFINED RULES)
  message(FATAL_ERROR "usage: cmake -DSOURCE_DIR=<src> -DRULES=<rules> -P ${CMAKE_CURRENT_LIST_FILE}")
endif()

get_filename_component(SOURCE_DIR "${SOURCE_DIR}" ABSOLUTE)
if(NOT IS_DIRECTORY "${SOURCE_DIR}")
  message(FATAL_ERROR "no source folder ${SOURCE_DIR}")
endif()

string(REPLACE "|" ";" _rules "${RULES}")
set(_families "")
foreach(_rule ${_rules})
  if(NOT _rule MATCHES "^([A-Za-z0-9_]+):([A-Za-z0-9_,]*)$")
    message(FATAL_ERROR "rule not understood: ${_rule}")
  endif()
  set(_family ${CMAKE_MATCH_1})
  string(REPLACE "," ";" _deps_${_family} "${CMAKE_MATCH_2}")
  list(APPEND _families ${_family})
endforeach()

# Everything a family reaches through its DEPS, transitively.
function(reachable family out)
  set(_seen "")
  set(_todo ${_deps_${family}})
  while(_todo)
    list(POP_FRONT _todo _next)
    if(NOT _next IN_LIST _seen)
      list(APPEND _seen ${_next})
      list(APPEND _todo ${_deps_${_next}})
    endif()
  endwhile()
  set(${out} ${_seen} PARENT_SCOPE)
endfunction()

set(_bad 0)
set(_scanned 0)
foreach(_family ${_families})
  reachable(${_family} _allowed)
  file(GLOB _files RELATIVE ${SOURCE_DIR} ${SOURCE_DIR}/${_family}/*.cpp
       ${SOURCE_DIR}/${_family}/*.hpp ${SOURCE_DIR}/${_family}/*.h ${SOURCE_DIR}/${_family}/*.c)
  foreach(_file ${_files})
    math(EXPR _scanned "${_scanned} + 1")
    file(STRINGS ${SOURCE_DIR}/${_file} _lines)
    set(_number 0)
    foreach(_line IN LISTS _lines)
      math(EXPR _number "${_number} + 1")
      if(_line MATCHES "^[ \t]*#[ \t]*include[ \t]*\"([A-Za-z0-9_]+)/[^\"]*\"")
        set(_target ${CMAKE_MATCH_1})
        if(_target IN_LIST _families AND NOT _target STREQUAL _family
           AND NOT _target IN_LIST _allowed)
          string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*" "" _what "${_line}")
          message("${_file}:${_number} includes ${_what}, but ${_family} may include only: "
                  "${_family} ${_allowed}")
          set(_bad 1)
        endif()
      endif()
    endforeach()
  endforeach()
endforeach()

# A wrong folder would otherwise pass with nothing read.
if(_scanned EQUAL 0)
  message(FATAL_ERROR "no source file found under ${SOURCE_DIR}")
endif()
if(_bad)
  message(FATAL_ERROR "a family includes a family it is not built on (see CONTRIBUTING.md)")
endif()
