# SPDX-License-Identifier: MIT
# Installation: header, library with SONAME links, CMake package, pkg-config,
# and the licence and README beside the documentation.
include(CMakePackageConfigHelpers)

# Before 1.0 a new minor version may change the interface (docs/abi-policy.md),
# so a host asking for 0.2 accepts 0.2.x only; from 1.0 on, the same major.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(VEXO_PACKAGE_COMPATIBILITY SameMinorVersion)
else()
  set(VEXO_PACKAGE_COMPATIBILITY SameMajorVersion)
endif()

install(TARGETS vexo EXPORT vexoTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/vexo.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vexoTargets NAMESPACE vexo::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexo)
install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

# The static library names what it links to; the package finds those again.
if(TARGET vexo_static)
  install(TARGETS vexo_static EXPORT vexoStaticTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(EXPORT vexoStaticTargets NAMESPACE vexo::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexo)
endif()

configure_package_config_file(cmake/vexoConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/vexoConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexo)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/vexoConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY ${VEXO_PACKAGE_COMPATIBILITY})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vexoConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vexoConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexo)

file(RELATIVE_PATH VEXO_PC_TO_PREFIX
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/vexo.pc.in ${CMAKE_CURRENT_BINARY_DIR}/vexo.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vexo.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
