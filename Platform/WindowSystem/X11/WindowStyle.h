#pragma once

#include <deque>
#include <vector>

#include "Platform/WindowSystem/X11/StyleHints.h"

namespace vel::x11 {

/// The style mask of one window, as its hints say it. Of a window that is not ours, the hints are
/// taken over with the first change and given back, to the byte, when the mask is again what it
/// was. Its owner may write them at any time: what he wrote last is what is given back, and until
/// then what the mask takes away stays away. Where he has read them meanwhile, changed a part and
/// written them back, what we had taken away is given back in the rest. The window's protocols are
/// never touched: a host keeps being asked to close by who may ask.
class WindowStyle {
 public:
  /// Of a window of ours: writes the hints.
  WindowStyle(Connection& connection, xcb_window_t window, WindowKind kind,
              NSWindowStyleMask styleMask, PixelRect frame);
  /// Of somebody else's, as it was found.
  WindowStyle(Connection& connection, xcb_window_t window, const StyleHints& found);
  WindowStyle(const WindowStyle&) = delete;
  WindowStyle& operator=(const WindowStyle&) = delete;
  WindowStyle(WindowStyle&&) = delete;
  WindowStyle& operator=(WindowStyle&&) = delete;
  ~WindowStyle();

  [[nodiscard]] NSWindowStyleMask mask() const { return mask_; }
  /// The controls that the window would have, were they not taken away.
  [[nodiscard]] NSWindowStyleMask takenControls() const;

  /// Waits only to give hints back: who shows a launch screen is not to be held up.
  void set(NSWindowStyleMask styleMask, PixelRect frame);
  /// The window has, or is about to have, another size. Waits, where the window is
  /// somebody else's.
  void sizeChanged(PixelRect frame);
  /// Somebody has written the hints. Waits, where the window is somebody else's.
  void hintsChanged(PixelRect frame);
  /// Another mask that the window's owner has given it; none while his hints are taken over, or
  /// once it has been told.
  [[nodiscard]] std::optional<NSWindowStyleMask> ownersMask() const;
  void ownersMaskTold();
  /// Gives back what was taken over. Waits.
  void giveBack();

 private:
  /// One of the two properties.
  struct Hint {
    xcb_atom_t name = XCB_ATOM_NONE;
    /// As the window's owner set it last; to be given back.
    std::optional<Property> theirs = std::nullopt;
    /// As it stands there, by us or by him.
    std::optional<Property> written = std::nullopt;
    /// Our latest writings; its owner may have read any of them.
    std::deque<Overlay> overlays{};
  };

  struct Asked {
    xcb_get_property_cookie_t motif;
    xcb_get_property_cookie_t normal;
  };

  /// What stood there before a writing of ours, to be compared with what we thought stood there.
  struct Unread {
    Asked asked;
    StyleHints written;
  };

  [[nodiscard]] bool isOwn() const { return kind_.has_value(); }
  [[nodiscard]] StyleHints theirs() const { return {motif_.theirs, normal_.theirs}; }
  void takeOver(PixelRect frame);
  [[nodiscard]] Asked ask() const;
  void read();
  void takeAnswers();
  static void stood(Hint& hint, const std::optional<Property>& written,
                    const std::optional<Property>& value);
  static void found(Hint& hint, std::optional<Property> value);
  /// What the owner means by a value that he has written.
  static std::optional<Property> meantBy(const Hint& hint, const std::optional<Property>& value);
  void write(const StyleHints& hints);
  void write(Hint& hint, const std::optional<Property>& value);
  void apply(PixelRect frame);

  Connection& connection_;
  xcb_window_t window_;
  std::optional<WindowKind> kind_;  // of a window of ours
  NSWindowStyleMask told_;          // what others know as the mask that the owner gave it
  NSWindowStyleMask mask_;
  bool takenOver_ = false;
  std::vector<Unread> unread_;
  Hint motif_;
  Hint normal_;
};

}  // namespace vel::x11
