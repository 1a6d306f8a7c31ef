# The library that a game links: all layers in one file, shared or static (BUILD_SHARED_LIBS).

include(GNUInstallDirs)

get_property(layers GLOBAL PROPERTY VEL_LIBRARY_LAYERS)
get_property(dependencies GLOBAL PROPERTY VEL_LIBRARY_DEPENDENCIES)

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
# Hosts write #include <VelLaunchScreen/...>. Paths of #include in the headers are relative to the
# project's root.
target_include_directories(VelLaunchScreen PUBLIC
  "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR};${PROJECT_SOURCE_DIR}/include>"
  "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR};${CMAKE_INSTALL_INCLUDEDIR}/VelLaunchScreen>")
target_link_libraries(VelLaunchScreen
  PUBLIC Threads::Threads
  PRIVATE $<BUILD_INTERFACE:vel::CompilerSettings> ${dependencies})

get_target_property(VEL_LIBRARY_TYPE VelLaunchScreen TYPE)
if(VEL_LIBRARY_TYPE STREQUAL "SHARED_LIBRARY" AND WIN32)
  target_compile_definitions(VelLaunchScreen INTERFACE VEL_DLL)
endif()
if(VEL_LIBRARY_TYPE STREQUAL "SHARED_LIBRARY" AND APPLE)
  set(exports "${PROJECT_SOURCE_DIR}/cmake/exports.mach-o")
  target_link_options(VelLaunchScreen PRIVATE "LINKER:-exported_symbols_list,${exports}")
  set_target_properties(VelLaunchScreen PROPERTIES LINK_DEPENDS "${exports}")
elseif(VEL_LIBRARY_TYPE STREQUAL "SHARED_LIBRARY" AND UNIX)
  # Hidden visibility does not apply to instantiations of the standard library's templates.
  set(exports "${PROJECT_SOURCE_DIR}/cmake/exports.map")
  target_link_options(VelLaunchScreen PRIVATE "LINKER:--version-script=${exports}")
  set_target_properties(VelLaunchScreen PROPERTIES LINK_DEPENDS "${exports}")

  # Calls within the library do not go through the PLT; unused sections are removed.
  target_link_options(VelLaunchScreen PRIVATE "LINKER:-Bsymbolic-functions,--gc-sections")
  if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_link_options(VelLaunchScreen PRIVATE
      -flto-partition=one -ffunction-sections -fdata-sections)
  endif()
  # Most relocations are in vtables. Packed relocations take a hundredth of the space.
  include(CheckLinkerFlag)
  check_linker_flag(CXX "LINKER:-z,pack-relative-relocs" VEL_PACKS_RELOCATIONS)
  if(VEL_PACKS_RELOCATIONS)
    target_link_options(VelLaunchScreen PRIVATE "LINKER:-z,pack-relative-relocs")
  endif()
endif()

if(VEL_COCOA_ENABLED)
  # For AppKit hosts: the library and the AppKit back end. The back end is added as objects, because
  # nothing refers to it: it registers its display itself.
  add_library(VelLaunchScreenAppKit INTERFACE)
  add_library(VelLaunchScreen::AppKit ALIAS VelLaunchScreenAppKit)
  target_sources(VelLaunchScreenAppKit
    INTERFACE $<TARGET_OBJECTS:VelCocoaLayer> $<TARGET_OBJECTS:VelWindowSystemLayer>)
  target_link_libraries(VelLaunchScreenAppKit INTERFACE VelLaunchScreen vel::AppKitFramework)

  # For hosts in Objective-C: the classes and protocols, with everything that they need.
  add_library(VelLaunchScreenObjectiveC INTERFACE)
  add_library(VelLaunchScreen::ObjectiveC ALIAS VelLaunchScreenObjectiveC)
  target_sources(VelLaunchScreenObjectiveC
    INTERFACE $<TARGET_OBJECTS:VelObjectiveCBindingLayer>)
  target_link_libraries(VelLaunchScreenObjectiveC INTERFACE VelLaunchScreenAppKit)
endif()

if(VEL_INSTALL)
  include(VelInstall)
endif()
