include(CMakePackageConfigHelpers)

install(TARGETS dorl standin vesk
  EXPORT VeskTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(DIRECTORY
  ${PROJECT_SOURCE_DIR}/include/vesk
  ${PROJECT_SOURCE_DIR}/dorl/include/dorl
  ${PROJECT_SOURCE_DIR}/platform/include/standin
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(VESK_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Vesk)

install(EXPORT VeskTargets
  NAMESPACE Vesk::
  DESTINATION ${VESK_CMAKE_DIR})

configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/VeskConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VeskConfig.cmake
  INSTALL_DESTINATION ${VESK_CMAKE_DIR})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/VeskConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/VeskConfig.cmake
  ${PROJECT_BINARY_DIR}/VeskConfigVersion.cmake
  DESTINATION ${VESK_CMAKE_DIR})

# The .pc file finds the prefix from its own place, so an installed tree can be moved.
file(RELATIVE_PATH VESK_PC_TO_PREFIX
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/vesk.pc.in ${PROJECT_BINARY_DIR}/vesk.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vesk.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
