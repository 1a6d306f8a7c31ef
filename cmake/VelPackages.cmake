# The Debian packages that CPack builds: the library, its development files, and the program.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The VelLaunchScreen authors <authors@vellaunchscreen.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(library libvellaunchscreen)
set(CPACK_COMPONENTS_ALL development)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${library}-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Headers for C++ and C, and the CMake and pkg-config packages.")

if(VEL_LIBRARY_TYPE STREQUAL "SHARED_LIBRARY")
  list(APPEND CPACK_COMPONENTS_ALL runtime)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library}${PROJECT_VERSION_MAJOR})
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
  set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "A white cover over the window for a bounded time while the game loads.
The time counts down only while the user can see it.")
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
  if(VEL_WAYLAND_ENABLED)
    # The Wayland back end loads libdecor if a window of the library needs a frame.
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS libdecor-0-0)
  endif()
endif()

if(VEL_HOST)
  list(APPEND CPACK_COMPONENTS_ALL program)
  set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME launchscreen)
  set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION games)
  set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
    "The program launchscreen shows a launch screen.
It also plays scenarios in virtual time.")
endif()

# EXCLUDE_FROM_ALL: `cmake --install` does not install the copyright files. CPack installs each
# component by name.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} name)
  install(
    FILES LICENSE
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME}"
    RENAME copyright
    COMPONENT ${component}
    EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
