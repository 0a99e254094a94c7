# SPDX-License-Identifier: Apache-2.0
# Installs into a fresh prefix and builds and runs the stranger's project against it twice: with find_package, and with
# nothing but pkg-config and a compiler.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\nended with ${result}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_output text)
  string(FIND "${output}" "${text}" found)
  if(found EQUAL -1)
    message(FATAL_ERROR "expected '${text}' in the stranger's output, found:\n${output}")
  endif()
endfunction()

# Runs a stranger with a directory for its sockets; short, since a socket's path has at most 107 bytes.
function(run_stranger program)
  execute_process(COMMAND mktemp -d OUTPUT_VARIABLE sockets OUTPUT_STRIP_TRAILING_WHITESPACE)
  run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${program} ${sockets})
  file(REMOVE_RECURSE ${sockets})
  expect_output("12345678")
  expect_output("1-0:1.8.0")
  expect_output("stored")
endfunction()

set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${CXX}
    -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK}/build)
run_stranger(${WORK}/build/stranger)

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
run(${PKG_CONFIG} --cflags --libs tav)
string(STRIP "${output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX} -std=c++17 ${SOURCE}/stranger.cpp -o ${WORK}/stranger ${flags})
run_stranger(${WORK}/stranger)

file(GLOB_RECURSE internal ${prefix}/include/*_impl.h ${prefix}/include/tav/unit_tav.h
     ${prefix}/include/tav/framework/detail/*)
if(internal)
  message(FATAL_ERROR "internal headers were installed: ${internal}")
endif()
