# vel_add_layer(<name> [RECURSIVE] [OUTSIDE_LIBRARY] [SOURCES <source>...] [DEPENDS <layer>...]
#               [LIBRARIES <target>...] [DEFINITIONS <definition>...])
#
# Creates the target vel::<name> from the sources of the current folder. RECURSIVE adds the sources of
# its subfolders. OUTSIDE_LIBRARY leaves the folder out of the library VelLaunchScreen. SOURCES adds the
# listed sources. DEPENDS lists the layers whose headers the folder includes. LIBRARIES (targets from
# outside the project) and DEFINITIONS apply to the folder's own sources only. A folder without sources
# becomes an interface target.
function(vel_add_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 layer "RECURSIVE;OUTSIDE_LIBRARY" "" "SOURCES;DEPENDS;LIBRARIES;DEFINITIONS")
  if(layer_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "vel_add_layer(${name}): unknown argument '${layer_UNPARSED_ARGUMENTS}'")
  endif()

  set(glob GLOB)
  if(layer_RECURSIVE)
    set(glob GLOB_RECURSE)
  endif()
  file(${glob} sources CONFIGURE_DEPENDS "*.cpp" "*.mm")
  list(APPEND sources ${layer_SOURCES})
  list(TRANSFORM layer_DEPENDS PREPEND "vel::")

  if(sources)
    add_library(Vel${name}Layer STATIC ${sources})
    set(scope PUBLIC)
    target_link_libraries(Vel${name}Layer PRIVATE vel::CompilerSettings ${layer_LIBRARIES})
    target_compile_definitions(Vel${name}Layer PRIVATE ${layer_DEFINITIONS})
    if(WIN32 AND BUILD_SHARED_LIBS)
      target_compile_definitions(Vel${name}Layer PRIVATE VEL_DLL_EXPORTS)
    endif()
    if(NOT layer_OUTSIDE_LIBRARY)
      set_property(GLOBAL APPEND PROPERTY VEL_LIBRARY_LAYERS Vel${name}Layer)
      set_property(GLOBAL APPEND PROPERTY VEL_LIBRARY_DEPENDENCIES ${layer_LIBRARIES})
    endif()
  else()
    add_library(Vel${name}Layer INTERFACE)
    set(scope INTERFACE)
  endif()
  add_library(vel::${name} ALIAS Vel${name}Layer)

  # #include paths are relative to the project's root.
  target_include_directories(Vel${name}Layer ${scope} "${PROJECT_SOURCE_DIR}")
  target_compile_features(Vel${name}Layer ${scope} cxx_std_20)
  target_link_libraries(Vel${name}Layer ${scope} Threads::Threads ${layer_DEPENDS})
endfunction()
