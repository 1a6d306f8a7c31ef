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
  # vel_add_appkit_library(<name> LAYERS <layer>... DEPENDS <target>...)
  #
  # Creates the target VelLaunchScreen::<name>: the layers in a static library, and the targets that it
  # needs. The linker takes all objects of the static library, because nothing refers to the back end or to a
  # class that the host finds by its name.
  function(vel_add_appkit_library name)
    cmake_parse_arguments(PARSE_ARGV 1 library "" "" "LAYERS;DEPENDS")
    list(TRANSFORM library_LAYERS REPLACE "(.+)" "$<TARGET_OBJECTS:Vel\\1Layer>")
    set(archive VelLaunchScreen${name}Archive)
    add_library(${archive} STATIC ${library_LAYERS})
    set_target_properties(${archive} PROPERTIES
      LINKER_LANGUAGE CXX
      EXPORT_NAME ${name}Archive
      OUTPUT_NAME VelLaunchScreen${name})
    if(NOT VEL_INSTALL)
      set_target_properties(${archive} PROPERTIES EXCLUDE_FROM_ALL TRUE)
    endif()

    set(target VelLaunchScreen${name})
    add_library(${target} INTERFACE)
    add_library(VelLaunchScreen::${name} ALIAS ${target})
    set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
    target_link_libraries(${target} INTERFACE
      "$<BUILD_INTERFACE:$<LINK_LIBRARY:WHOLE_ARCHIVE,${archive}>>"
      "$<INSTALL_INTERFACE:$<LINK_LIBRARY:WHOLE_ARCHIVE,VelLaunchScreen::${name}Archive>>"
      ${library_DEPENDS})
  endfunction()

  # For AppKit hosts: the library and the AppKit back end.
  vel_add_appkit_library(AppKit
    LAYERS Cocoa WindowSystem
    DEPENDS VelLaunchScreen VelLaunchScreen::AppKitFramework)
  # For hosts in Objective-C: the classes and protocols, with everything that they need.
  vel_add_appkit_library(ObjectiveC LAYERS ObjectiveCBinding DEPENDS VelLaunchScreenAppKit)
endif()

if(VEL_INSTALL)
  include(VelInstall)
endif()
