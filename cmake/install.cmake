# Header, library, pkg-config file and CMake package.
include(CMakePackageConfigHelpers)

install(TARGETS orvcv EXPORT orvcvTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/orvcv.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/orvcv.pc.in ${PROJECT_BINARY_DIR}/orvcv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orvcv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/orvcv)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/orvcvConfig.cmake.in
  ${PROJECT_BINARY_DIR}/orvcvConfig.cmake INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvcvConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(EXPORT orvcvTargets NAMESPACE orvcv:: DESTINATION ${packageDir})
install(FILES ${PROJECT_BINARY_DIR}/orvcvConfig.cmake ${PROJECT_BINARY_DIR}/orvcvConfigVersion.cmake
  DESTINATION ${packageDir})
