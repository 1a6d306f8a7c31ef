// The atoms that the X11 back end uses.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace vel::x11 {

enum class Atom : std::size_t {
  Utf8String,
  WmState,
  WmProtocols,
  WmDeleteWindow,
  WmChangeState,
  MotifWmHints,
  NetSupported,
  NetSupportingWmCheck,
  NetClientListStacking,
  NetActiveWindow,
  NetWmName,
  NetWmPid,
  NetWmState,
  NetWmStateModal,
  NetWmStateFullscreen,
  NetWmStateMaximizedVert,
  NetWmStateMaximizedHorz,
  NetFrameExtents,
  NetRequestFrameExtents,
  NetWmWindowType,
  NetWmWindowTypeNormal,
  NetWmWindowTypeDialog,
  NetWmAllowedActions,
  NetWmActionClose,
  NetWmActionMinimize,
  NetWmActionResize,
  VelTime,  // our own property, see `Connection::serverTime`
  Count,    // the number of atoms
};

/// The names of the atoms, in the order of `Atom`.
inline constexpr std::array<std::string_view, static_cast<std::size_t>(Atom::Count)> kAtomNames{
    "UTF8_STRING",
    "WM_STATE",
    "WM_PROTOCOLS",
    "WM_DELETE_WINDOW",
    "WM_CHANGE_STATE",
    "_MOTIF_WM_HINTS",
    "_NET_SUPPORTED",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_CLIENT_LIST_STACKING",
    "_NET_ACTIVE_WINDOW",
    "_NET_WM_NAME",
    "_NET_WM_PID",
    "_NET_WM_STATE",
    "_NET_WM_STATE_MODAL",
    "_NET_WM_STATE_FULLSCREEN",
    "_NET_WM_STATE_MAXIMIZED_VERT",
    "_NET_WM_STATE_MAXIMIZED_HORZ",
    "_NET_FRAME_EXTENTS",
    "_NET_REQUEST_FRAME_EXTENTS",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_NORMAL",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_WM_ALLOWED_ACTIONS",
    "_NET_WM_ACTION_CLOSE",
    "_NET_WM_ACTION_MINIMIZE",
    "_NET_WM_ACTION_RESIZE",
    "_VEL_TIME",
};

/// The window manager chooses the size of a window that has one of these states.
inline constexpr std::array kMaximizedAndFullscreenStates{
    Atom::NetWmStateFullscreen, Atom::NetWmStateMaximizedVert, Atom::NetWmStateMaximizedHorz};

}  // namespace vel::x11
