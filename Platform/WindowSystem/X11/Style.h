#pragma once

#include "Platform/WindowSystem/X11/StyleHints.h"

namespace vel::x11 {

/// The style mask of one window, as its hints say it. Of a window that is not ours, the hints are
/// taken over with the first change and given back, to the byte, when the mask is again what it
/// was. The window's protocols are never touched: a host keeps being asked to close by who may ask.
class Style {
 public:
  /// Of a window of ours: writes the hints.
  Style(Connection& connection, xcb_window_t window, WindowKind kind, NSWindowStyleMask styleMask,
        PixelRect frame);
  /// Of somebody else's, as it was found.
  Style(Connection& connection, xcb_window_t window, const StyleHints& found);

  [[nodiscard]] NSWindowStyleMask mask() const { return mask_; }
  /// The controls that the window would have, were they not taken away.
  [[nodiscard]] NSWindowStyleMask takenControls() const { return initial_ & ~mask_ & kControls; }

  void set(NSWindowStyleMask styleMask, PixelRect frame);
  /// The window has, or is about to have, another size.
  void sizeChanged(PixelRect frame);
  /// Somebody has written the window's hints. Where it was the window's owner, the new values are
  /// what will be given back. Waits.
  void hintsChanged(PixelRect frame);
  /// Gives back what was taken over. Waits.
  void giveBack();

 private:
  [[nodiscard]] bool isOwn() const { return kind_.has_value(); }
  [[nodiscard]] StyleHints read() const;
  void write(const StyleHints& hints);
  void apply(PixelRect frame);

  Connection& connection_;
  xcb_window_t window_;
  std::optional<WindowKind> kind_;  // of a window of ours
  NSWindowStyleMask initial_;
  NSWindowStyleMask mask_;
  bool takenOver_ = false;
  StyleHints theirs_;   // to be given back
  StyleHints written_;  // what we wrote last
};

}  // namespace vel::x11
