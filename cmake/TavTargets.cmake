# SPDX-License-Identifier: Apache-2.0
# What every target of this tree shares: language level, visibility, warnings, sanitizers.

add_library(tav_common INTERFACE)
target_compile_options(tav_common INTERFACE
  $<$<BOOL:${TAV_WERROR}>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror>)
# GCC 12 sees an overlap in every "text" + std::string that it inlines (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(tav_common INTERFACE -Wno-restrict)
endif()
# What nobody calls is left out, and code and data share pages: many small processes run on one small gateway.
target_compile_options(tav_common INTERFACE -ffunction-sections -fdata-sections)
target_link_options(tav_common INTERFACE -Wl,--gc-sections -Wl,-z,noseparate-code)
include(CheckLinkerFlag)
check_linker_flag(CXX -Wl,-z,pack-relative-relocs TAV_PACKS_RELOCATIONS)
if(TAV_PACKS_RELOCATIONS)
  target_link_options(tav_common INTERFACE -Wl,-z,pack-relative-relocs)
endif()
if(TAV_SANITIZE)
  target_compile_options(tav_common INTERFACE -fsanitize=${TAV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tav_common INTERFACE -fsanitize=${TAV_SANITIZE})
endif()
if(TAV_BUILD_FUZZ)
  target_compile_options(tav_common INTERFACE -fsanitize=fuzzer-no-link)
endif()

# The sources of one folder; a folder is a subsystem, so its sources need no list beside it.
function(tav_folder_sources out)
  set(all "")
  foreach(folder IN LISTS ARGN)
    file(GLOB found CONFIGURE_DEPENDS "${folder}/*.cpp")
    list(APPEND all ${found})
  endforeach()
  set(${out} "${all}" PARENT_SCOPE)
endfunction()

function(tav_target name)
  target_compile_features(${name} PRIVATE cxx_std_20)
  set_target_properties(${name} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:tav_common>)
endfunction()
