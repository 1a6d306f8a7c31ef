# The optional back ends: the folders in Platform/WindowSystem that need libraries of the system. A new
# back end needs a call of vel_find_backend below and a case in Platform/WindowSystem/Backends.
#
# vel_find_backend(<folder> MODULES <pkg-config module>... [HEADERS <pkg-config module>...])
#
# Adds the option VEL_<FOLDER> (ON, OFF, or AUTO: ON if pkg-config finds all modules). If the back end
# is built, sets VEL_<FOLDER>_ENABLED and creates PkgConfig::VEL_<FOLDER>, which the back end links.
# Of the modules in HEADERS, only the headers are used. Appends to these lists:
#   VEL_OPTIONAL_BACKENDS    every optional back end
#   VEL_BACKENDS             the back ends that are built
#   VEL_BACKEND_DEFINITIONS  VEL_HAS_<FOLDER>=1 for each back end that is built
#   VEL_BACKEND_MODULES      the modules that a program must link too if it links the static library
# Also sets VEL_<FOLDER>_MODULES to the given MODULES.

set(VEL_OPTIONAL_BACKENDS "")
set(VEL_BACKENDS "")
set(VEL_BACKEND_DEFINITIONS "")
set(VEL_BACKEND_MODULES "")

macro(vel_find_backend folder)
  cmake_parse_arguments(backend "" "" "MODULES;HEADERS" ${ARGN})
  string(TOUPPER "VEL_${folder}" backend_option)
  set(${backend_option} "AUTO" CACHE STRING "Build the ${folder} back end: ON, OFF or AUTO")
  set_property(CACHE ${backend_option} PROPERTY STRINGS AUTO ON OFF)
  set(${backend_option}_ENABLED FALSE)
  list(APPEND VEL_OPTIONAL_BACKENDS ${folder})
  set(backend_required ${backend_MODULES} ${backend_HEADERS})
  list(JOIN backend_required " " backend_required)

  if(${backend_option})
    find_package(PkgConfig QUIET)
    if(PKG_CONFIG_FOUND)
      pkg_check_modules(${backend_option} QUIET IMPORTED_TARGET ${backend_MODULES})
      set(${backend_option}_HEADERS_FOUND TRUE)
      if(backend_HEADERS)
        pkg_check_modules(${backend_option}_HEADERS QUIET ${backend_HEADERS})
      endif()
    endif()
    set(${backend_option}_MODULES ${backend_MODULES})
    if(${backend_option}_FOUND AND ${backend_option}_HEADERS_FOUND)
      set(${backend_option}_ENABLED TRUE)
      target_include_directories(PkgConfig::${backend_option}
        INTERFACE ${${backend_option}_HEADERS_INCLUDE_DIRS})
      list(APPEND VEL_BACKENDS ${folder})
      string(TOUPPER "VEL_HAS_${folder}=1" backend_definition)
      list(APPEND VEL_BACKEND_DEFINITIONS ${backend_definition})
      list(APPEND VEL_BACKEND_MODULES ${backend_MODULES})
    elseif(NOT ${backend_option} STREQUAL "AUTO")
      message(FATAL_ERROR "${backend_option} is ON, but pkg-config does not find all of: "
        "${backend_required}")
    else()
      message(STATUS "The ${folder} back end is left out: pkg-config does not find all of: "
        "${backend_required}")
    endif()
  endif()
endmacro()

vel_find_backend(X11 MODULES xcb xcb-randr xcb-render xcb-shape HEADERS xcb-icccm)
# The Wayland back end loads libdecor at run time, so it needs only the header of libdecor.
vel_find_backend(Wayland
  MODULES wayland-client
  HEADERS wayland-protocols wayland-scanner libdecor-0)
