#pragma once

#include <libdecor.h>

#include <memory>

namespace vel::wayland {

/// The functions of libdecor that the back end calls. libdecor is a library that draws the frames
/// of windows. It is loaded at run time, so that a program whose windows need no frame from
/// libdecor does not load it.
struct Libdecor {
  decltype(&libdecor_new) contextNew = nullptr;
  decltype(&libdecor_unref) contextUnref = nullptr;
  decltype(&libdecor_dispatch) contextDispatch = nullptr;
  decltype(&libdecor_decorate) decorate = nullptr;
  decltype(&libdecor_frame_unref) frameUnref = nullptr;
  decltype(&libdecor_frame_map) frameMap = nullptr;
  decltype(&libdecor_frame_commit) frameCommit = nullptr;
  decltype(&libdecor_frame_set_title) frameSetTitle = nullptr;
  decltype(&libdecor_frame_set_capabilities) frameSetCapabilities = nullptr;
  decltype(&libdecor_frame_unset_capabilities) frameUnsetCapabilities = nullptr;
  decltype(&libdecor_frame_set_min_content_size) frameSetMinContentSize = nullptr;
  decltype(&libdecor_frame_set_max_content_size) frameSetMaxContentSize = nullptr;
  decltype(&libdecor_frame_is_floating) frameIsFloating = nullptr;
  decltype(&libdecor_frame_get_xdg_toplevel) frameGetXdgToplevel = nullptr;
  decltype(&libdecor_state_new) stateNew = nullptr;
  decltype(&libdecor_state_free) stateFree = nullptr;
  decltype(&libdecor_configuration_get_content_size) configurationGetContentSize = nullptr;

  /// Loads libdecor. If this fails, logs the reason and returns null. The library stays loaded,
  /// because its plugins cannot be unloaded.
  static std::unique_ptr<const Libdecor> load();
};

}  // namespace vel::wayland
