# SPDX-License-Identifier: Apache-2.0
# What is installed: the public headers, both libraries, their CMake package and pkg-config files, and the programs.
include(CMakePackageConfigHelpers)

foreach(header IN LISTS tav_public_headers)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES "${PROJECT_SOURCE_DIR}/${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}")
endforeach()

# Found from wherever the prefix is: libtav beside libvorn, programs from their own folder.
set_target_properties(vorn PROPERTIES INSTALL_RPATH "")  # needs none of ours
set_target_properties(tav PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS vorn tav EXPORT tavTargets LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
foreach(program tav-gateway ehzif mbif mbussim tavctl)
  if(TARGET ${program})
    set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    install(TARGETS ${program} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  endif()
endforeach()

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/tav")
install(EXPORT tavTargets NAMESPACE tav:: DESTINATION "${package_dir}")
configure_package_config_file(cmake/tavConfig.cmake.in "${PROJECT_BINARY_DIR}/tavConfig.cmake"
  INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tavConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/tavConfig.cmake" "${PROJECT_BINARY_DIR}/tavConfigVersion.cmake"
  DESTINATION "${package_dir}")

# pkg-config finds the prefix from where its own file lies.
file(RELATIVE_PATH pc_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")
foreach(library tav vorn)
  configure_file(cmake/${library}.pc.in "${PROJECT_BINARY_DIR}/${library}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${library}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()

install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}")
