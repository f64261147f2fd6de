# SPDX-License-Identifier: MIT
# Installation: header, library with SONAME links, CMake package, pkg-config.
include(CMakePackageConfigHelpers)

install(TARGETS vexo EXPORT vexoTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/vexo.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vexoTargets NAMESPACE vexo::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexo)

configure_package_config_file(cmake/vexoConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/vexoConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexo)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/vexoConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vexoConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vexoConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexo)

file(RELATIVE_PATH VEXO_PC_TO_PREFIX
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/vexo.pc.in ${CMAKE_CURRENT_BINARY_DIR}/vexo.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vexo.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
