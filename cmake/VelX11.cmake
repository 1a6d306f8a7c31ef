# Decides whether the X11 back end is built. Sets VEL_X11_ENABLED, and for Platform/WindowSystem/
# Backends, which chooses the back end at run time, VEL_X11_LAYERS and VEL_X11_DEFINITIONS. The back
# end links PkgConfig::VEL_XCB, which stands for the pkg-config modules in VEL_X11_MODULES.

set(VEL_X11_ENABLED FALSE)
set(VEL_X11_LAYERS "")
set(VEL_X11_DEFINITIONS "")
set(VEL_X11_MODULES xcb xcb-randr xcb-render)

if(VEL_X11)
  find_package(PkgConfig QUIET)
  if(PKG_CONFIG_FOUND)
    pkg_check_modules(VEL_XCB QUIET IMPORTED_TARGET ${VEL_X11_MODULES})
    # Only the constants in its header are used, so the library is not linked.
    pkg_check_modules(VEL_XCB_ICCCM QUIET xcb-icccm)
  endif()
  if(VEL_XCB_FOUND AND VEL_XCB_ICCCM_FOUND)
    target_include_directories(PkgConfig::VEL_XCB INTERFACE ${VEL_XCB_ICCCM_INCLUDE_DIRS})
    set(VEL_X11_ENABLED TRUE)
    set(VEL_X11_LAYERS X11)
    set(VEL_X11_DEFINITIONS VEL_HAS_X11=1)
  elseif(NOT VEL_X11 STREQUAL "AUTO")
    message(FATAL_ERROR "VEL_X11 is ON, but pkg-config does not find all of: ${VEL_X11_MODULES}")
  endif()
endif()

if(NOT VEL_X11_ENABLED)
  set(VEL_X11_MODULES "")
endif()
