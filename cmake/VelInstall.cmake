# Installs the library, its headers and the package that find_package(VelLaunchScreen) finds.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/VelLaunchScreen")

install(TARGETS VelLaunchScreen EXPORT VelLaunchScreenTargets)
install(
  DIRECTORY Platform HostInterfaces LaunchScreen Bindings
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/VelLaunchScreen"
  FILES_MATCHING PATTERN "*.h"
  PATTERN "Platform/WindowSystem/X11" EXCLUDE)
install(EXPORT VelLaunchScreenTargets NAMESPACE VelLaunchScreen:: DESTINATION "${package_folder}")

configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/VelLaunchScreenConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/VelLaunchScreenConfig.cmake"
  INSTALL_DESTINATION "${package_folder}")
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/VelLaunchScreenConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(
  FILES
    "${PROJECT_BINARY_DIR}/VelLaunchScreenConfig.cmake"
    "${PROJECT_BINARY_DIR}/VelLaunchScreenConfigVersion.cmake"
  DESTINATION "${package_folder}")
install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}")
