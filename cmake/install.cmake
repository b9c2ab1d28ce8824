# Header, library, pkg-config file and CMake package. The installed tree may be moved: both packages find their files
# relative to themselves.
include(CMakePackageConfigHelpers)

install(TARGETS orvcv EXPORT orvcvTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/orvcv.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} OR IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(pkgConfigPrefix ${CMAKE_INSTALL_PREFIX})
  set(pkgConfigLibdir ${CMAKE_INSTALL_FULL_LIBDIR})
  set(pkgConfigIncludedir ${CMAKE_INSTALL_FULL_INCLUDEDIR})
else()
  file(RELATIVE_PATH upwards /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" upwards ${upwards})
  set(pkgConfigPrefix "\${pcfiledir}/${upwards}")
  set(pkgConfigLibdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(pkgConfigIncludedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/orvcv.pc.in ${PROJECT_BINARY_DIR}/orvcv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orvcv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The version file is told to leave the architecture to the package itself, which can say what is wrong.
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/orvcv)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/orvcvConfig.cmake.in
  ${PROJECT_BINARY_DIR}/orvcvConfig.cmake INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvcvConfigVersion.cmake
  COMPATIBILITY SameMinorVersion ARCH_INDEPENDENT)
install(EXPORT orvcvTargets NAMESPACE orvcv:: DESTINATION ${packageDir})
install(FILES ${PROJECT_BINARY_DIR}/orvcvConfig.cmake ${PROJECT_BINARY_DIR}/orvcvConfigVersion.cmake
  DESTINATION ${packageDir})
