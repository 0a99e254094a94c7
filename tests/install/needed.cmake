# SPDX-License-Identifier: Apache-2.0
# The dynamic section of both libraries: their names, and that they load nothing but the C++ run time and each other.
set(runtime "libstdc\\+\\+\\.so\\.6|libm\\.so\\.6|libgcc_s\\.so\\.1|libc\\.so\\.6|ld-linux.*")

function(check library soname allowed)
  execute_process(COMMAND ${READELF} -dW ${library} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
  if(NOT dynamic MATCHES "\\(SONAME\\)[^\n]*\\[${soname}\\]")
    message(FATAL_ERROR "${library}: expected the name ${soname}, found\n${dynamic}")
  endif()
  string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*\\[[^]]+\\]" lines "${dynamic}")
  if(NOT lines)
    message(FATAL_ERROR "${library}: no needed library was found in\n${dynamic}")
  endif()
  foreach(line IN LISTS lines)
    string(REGEX REPLACE ".*\\[(.*)\\]" "\\1" needed "${line}")
    if(NOT needed MATCHES "^(${allowed})$")
      message(FATAL_ERROR "${library} needs ${needed}")
    endif()
  endforeach()
endfunction()

check(${VORN} "libvorn.so.1" "${runtime}")
check(${TAV} "libtav.so.3" "${runtime}|libvorn\\.so\\.1")
