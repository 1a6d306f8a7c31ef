# Installs the library, its headers, and the CMake and pkg-config packages. The component `runtime`
# contains what a program needs to run. The component `development` contains what a build of a program
# needs. The component `appkit` contains what a build of an AppKit host needs in addition; the Debian
# packages do not contain it.

include(CMakePackageConfigHelpers)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/VelLaunchScreen")
set(header_folder "${CMAKE_INSTALL_INCLUDEDIR}/VelLaunchScreen")

install(TARGETS VelLaunchScreen EXPORT VelLaunchScreenTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development)
install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT license)

set(backend_patterns "")
foreach(backend IN LISTS VEL_OPTIONAL_BACKENDS)
  list(APPEND backend_patterns PATTERN "${backend}" EXCLUDE)
endforeach()
# The headers that VelLaunchScreen.h includes, in the folders of the source tree, and the C header.
install(
  DIRECTORY Platform HostInterfaces LaunchScreen
  DESTINATION "${header_folder}"
  COMPONENT development
  FILES_MATCHING PATTERN "*.h"
  ${backend_patterns}
  PATTERN "EmbeddedCover.h" EXCLUDE
  PATTERN "FromChars" EXCLUDE
  PATTERN "Linux" EXCLUDE
  PATTERN "MacOS" EXCLUDE
  PATTERN "NearestFloat.h" EXCLUDE
  PATTERN "Posix" EXCLUDE
  PATTERN "ProcessFacts.h" EXCLUDE
  PATTERN "RealClock.h" EXCLUDE
  PATTERN "WaitSet.h" EXCLUDE
  PATTERN "ReportQueue.h" EXCLUDE
  PATTERN "ViewLifeCycle.h" EXCLUDE)
install(
  FILES include/VelLaunchScreen/VelLaunchScreen.h Bindings/C/vel_launch_screen.h
  DESTINATION "${header_folder}"
  COMPONENT development)

# The pkg-config file derives the prefix from its own location, so the installation can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
  OUTPUT_VARIABLE pc_prefix)
cmake_path(APPEND pc_libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND pc_includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
# Programs that link the static library also link the dependencies of the library.
set(pc_requires_private "")
set(pc_libs_private "")
set(find_backend_libraries "")
if(VEL_LIBRARY_TYPE STREQUAL "STATIC_LIBRARY")
  set(pc_requires_private "${VEL_BACKEND_MODULES}")
  list(JOIN pc_requires_private " " pc_requires_private)
  set(standard_library stdc++)
  if("c++" IN_LIST CMAKE_CXX_IMPLICIT_LINK_LIBRARIES)
    set(standard_library c++)
  endif()
  set(pc_libs_private "-l${standard_library} -lm -pthread")
  foreach(library IN LISTS CMAKE_DL_LIBS)
    string(APPEND pc_libs_private " -l${library}")
  endforeach()
  foreach(backend IN LISTS VEL_BACKENDS)
    string(TOUPPER "VEL_${backend}" backend)
    list(JOIN ${backend}_MODULES " " modules)
    string(APPEND find_backend_libraries
      "find_dependency(PkgConfig)\npkg_check_modules(${backend} REQUIRED IMPORTED_TARGET ${modules})\n")
  endforeach()
endif()
configure_file(
  "${PROJECT_SOURCE_DIR}/cmake/vellaunchscreen.pc.in" "${PROJECT_BINARY_DIR}/vellaunchscreen.pc"
  @ONLY)
install(
  FILES "${PROJECT_BINARY_DIR}/vellaunchscreen.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT development)

install(
  EXPORT VelLaunchScreenTargets
  NAMESPACE VelLaunchScreen::
  DESTINATION "${package_folder}"
  COMPONENT development)
if(VEL_COCOA_ENABLED)
  install(
    TARGETS VelLaunchScreenAppKitArchive VelLaunchScreenObjectiveCArchive VelLaunchScreenAppKit
      VelLaunchScreenObjectiveC
    EXPORT VelLaunchScreenAppKitTargets
    ARCHIVE COMPONENT appkit)
  install(
    EXPORT VelLaunchScreenAppKitTargets
    NAMESPACE VelLaunchScreen::
    DESTINATION "${package_folder}"
    COMPONENT appkit)
  install(FILES cmake/VelFindAppKit.cmake DESTINATION "${package_folder}" COMPONENT appkit)
  # ObjectiveC.h includes the other headers.
  install(FILES include/VelLaunchScreen/ObjectiveC.h
    DESTINATION "${header_folder}"
    COMPONENT appkit)
  set(objective_c_headers
    ContentBroker.h LaunchScreenConfiguration.h LaunchScreenConstants.h LaunchScreenContent.h
    LaunchScreenManager.h)
  list(TRANSFORM objective_c_headers PREPEND "Bindings/ObjectiveC/")
  install(FILES ${objective_c_headers}
    DESTINATION "${header_folder}/Bindings/ObjectiveC"
    COMPONENT appkit)
endif()
configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/VelLaunchScreenConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/VelLaunchScreenConfig.cmake"
  INSTALL_DESTINATION "${package_folder}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/VelLaunchScreenConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(
  FILES
    "${PROJECT_BINARY_DIR}/VelLaunchScreenConfig.cmake"
    "${PROJECT_BINARY_DIR}/VelLaunchScreenConfigVersion.cmake"
  DESTINATION "${package_folder}"
  COMPONENT development)
