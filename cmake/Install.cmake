# SPDX-License-Identifier: BSD-2-Clause
include(CMakePackageConfigHelpers)

install(TARGETS Kovanta EXPORT KovantaTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/Kovanta DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Kovanta)
install(EXPORT KovantaTargets NAMESPACE Kovanta:: DESTINATION ${package_dir})
configure_package_config_file(cmake/KovantaConfig.cmake.in KovantaConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(KovantaConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KovantaConfig.cmake ${PROJECT_BINARY_DIR}/KovantaConfigVersion.cmake
  DESTINATION ${package_dir})
# Relative to the file itself, so that the package can be installed anywhere.
file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
configure_file(cmake/kovanta.pc.in kovanta.pc @ONLY)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${PROJECT_BINARY_DIR}/kovanta.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
