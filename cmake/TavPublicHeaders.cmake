# SPDX-License-Identifier: Apache-2.0
# Which headers are public: all of tav/ but those that only their own library may see. They are what is installed, and
# what the target headers_alone compiles one by one, as a user would who includes nothing else before.

file(GLOB_RECURSE tav_public_headers RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tav/*.h")
# One pattern a line; tools/include_direction reads the same file.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/internal_headers.txt")
file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/internal_headers.txt" patterns)
foreach(pattern IN LISTS patterns)
  list(FILTER tav_public_headers EXCLUDE REGEX "${pattern}")
endforeach()

set(sources "")
foreach(header IN LISTS tav_public_headers)
  string(REPLACE "/" "_" name "${header}")
  set(source "${PROJECT_BINARY_DIR}/headers_alone/${name}.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "#include <${header}>\n")
  list(APPEND sources "${source}")
endforeach()
add_library(headers_alone OBJECT EXCLUDE_FROM_ALL ${sources})
target_link_libraries(headers_alone PRIVATE tav::tav tav_common)
target_compile_features(headers_alone PRIVATE cxx_std_17)
set_target_properties(headers_alone PROPERTIES CXX_STANDARD 17 CXX_EXTENSIONS OFF)
