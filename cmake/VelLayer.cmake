# vel_add_layer(<name> [RECURSIVE] [DEPENDS <layer>...] [LIBRARIES <target>...]
#               [DEFINITIONS <definition>...])
#
# Makes the current folder a layer: the target vel::<name>, from every source in it (with RECURSIVE
# also from the folders in it). DEPENDS names the layers whose headers it may include; LIBRARIES are
# targets from outside the project and DEFINITIONS preprocessor definitions, both for its own
# sources only. A folder without sources gives a target that only passes its dependencies on.
function(vel_add_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 layer "RECURSIVE" "" "DEPENDS;LIBRARIES;DEFINITIONS")
  if(layer_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "vel_add_layer(${name}): what is '${layer_UNPARSED_ARGUMENTS}'?")
  endif()

  if(layer_RECURSIVE)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "*.cpp")
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS "*.h")
  else()
    file(GLOB sources CONFIGURE_DEPENDS "*.cpp")
    file(GLOB headers CONFIGURE_DEPENDS "*.h")
  endif()
  list(TRANSFORM layer_DEPENDS PREPEND "vel::")

  if(sources)
    add_library(Vel${name}Layer STATIC ${sources} ${headers})
    set(scope PUBLIC)
    target_link_libraries(Vel${name}Layer PRIVATE vel::CompilerSettings ${layer_LIBRARIES})
    target_compile_definitions(Vel${name}Layer PRIVATE ${layer_DEFINITIONS})
    set_property(GLOBAL APPEND PROPERTY VEL_LIBRARY_LAYERS Vel${name}Layer)
    set_property(GLOBAL APPEND PROPERTY VEL_LIBRARY_DEPENDENCIES ${layer_LIBRARIES})
  else()
    add_library(Vel${name}Layer INTERFACE ${headers})
    set(scope INTERFACE)
  endif()
  add_library(vel::${name} ALIAS Vel${name}Layer)

  # Includes are written from the project's root.
  target_include_directories(Vel${name}Layer ${scope} "${PROJECT_SOURCE_DIR}")
  target_compile_features(Vel${name}Layer ${scope} cxx_std_20)
  target_link_libraries(Vel${name}Layer ${scope} Threads::Threads ${layer_DEPENDS})
endfunction()

# Adds a folder that need not be there.
function(vel_add_optional_subdirectory folder)
  if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/CMakeLists.txt")
    add_subdirectory(${folder})
  endif()
endfunction()
