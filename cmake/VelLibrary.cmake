# The library as a game links it: the layers in one file. Static, or shared with BUILD_SHARED_LIBS.

get_property(layers GLOBAL PROPERTY VEL_LIBRARY_LAYERS)
get_property(dependencies GLOBAL PROPERTY VEL_LIBRARY_DEPENDENCIES)

if(layers)
  set(objects "")
  foreach(layer IN LISTS layers)
    list(APPEND objects "$<TARGET_OBJECTS:${layer}>")
  endforeach()
  add_library(VelLaunchScreen ${objects})
  add_library(VelLaunchScreen::VelLaunchScreen ALIAS VelLaunchScreen)
  set_target_properties(VelLaunchScreen PROPERTIES
    LINKER_LANGUAGE CXX
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
  target_compile_features(VelLaunchScreen PUBLIC cxx_std_20)
  target_include_directories(VelLaunchScreen PUBLIC
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
    "$<INSTALL_INTERFACE:include/VelLaunchScreen>")
  target_link_libraries(VelLaunchScreen
    PUBLIC Threads::Threads
    PRIVATE $<BUILD_INTERFACE:vel::CompilerSettings> ${dependencies})
  if(VEL_INSTALL)
    include(VelInstall)
  endif()
endif()
