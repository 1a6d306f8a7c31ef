# Decides whether the X11 back end is built: sets VEL_X11_ENABLED, and VEL_X11_LAYERS and
# VEL_X11_DEFINITIONS for the folder that chooses the back end. The back end's own folder links
# PkgConfig::VEL_XCB, which stands for VEL_X11_MODULES (none without the back end):
#
#     vel_add_layer(X11 DEPENDS WindowSystem Foundation LIBRARIES PkgConfig::VEL_XCB)

set(VEL_X11_ENABLED FALSE)
set(VEL_X11_LAYERS "")
set(VEL_X11_DEFINITIONS "")
set(VEL_X11_MODULES xcb xcb-randr xcb-render)

if(VEL_X11 AND EXISTS "${PROJECT_SOURCE_DIR}/Platform/WindowSystem/X11/CMakeLists.txt")
  find_package(PkgConfig QUIET)
  if(PKG_CONFIG_FOUND)
    pkg_check_modules(VEL_XCB QUIET IMPORTED_TARGET ${VEL_X11_MODULES})
  endif()
  if(VEL_XCB_FOUND)
    set(VEL_X11_ENABLED TRUE)
    set(VEL_X11_LAYERS X11)
    set(VEL_X11_DEFINITIONS VEL_HAS_X11=1)
  endif()
endif()

if(NOT VEL_X11_ENABLED)
  set(VEL_X11_MODULES "")
endif()
if(NOT VEL_X11_ENABLED AND VEL_X11 AND NOT VEL_X11 STREQUAL "AUTO")
  message(FATAL_ERROR "VEL_X11 is ON, but the X11 back end or its libraries are missing")
endif()
