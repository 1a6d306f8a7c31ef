#pragma once

#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/StyleHints.h"

namespace vel::x11 {

/// The style mask of one window, expressed by the window's hints: _MOTIF_WM_HINTS and
/// WM_NORMAL_HINTS. For a window that we create, this class writes the hints. For an adopted
/// window, it overrides the owner's hints while the style mask differs from the owner's mask, and
/// then restores the owner's hints to the byte. It never changes WM_PROTOCOLS: the window manager
/// still asks the owner to close the window.
///
/// The hints of an adopted window, after each write (A to D are values; "A - controls" is A without
/// the title and the controls that the mask removes; `HintOverride` computes the last column):
///
///   who writes, and when                       the window has             restoring writes
///   -----------------------------------------  -------------------------  ----------------------
///   owner, before the adoption: A              A                          nothing
///   owner, while not overridden: B             B                          nothing
///   we, in setMask                             B - controls               B
///   owner, just before setMask: C; we          B - controls, until the    C
///     receive the event after setMask            event comes; then
///                                                C - controls
///   owner, while overridden: C                 C, until the event comes;  C
///                                                then C - controls
///   owner, while overridden: what we wrote     C - controls               C
///   owner, while overridden: what we wrote,    the edited value,          D, the edited value with
///     edited                                     D - controls               our changes taken out
///   owner, while overridden: deletes the       no property, until the     no property
///     property                                   event comes; then ours
///   we, when the window is resized             C - controls, with the     C
///                                                new fixed size
///   we, in restore                             C                          nothing
class WindowStyle final : public NonCopyable {
 public:
  /// For a window that we create. Writes the hints.
  WindowStyle(Connection& connection, xcb_window_t window, WindowKind kind,
              NSWindowStyleMask styleMask, PixelRect frame);
  /// For an adopted window with the hints `ownersHints`. Writes nothing yet.
  WindowStyle(Connection& connection, xcb_window_t window, const StyleHints& ownersHints);
  ~WindowStyle();

  [[nodiscard]] NSWindowStyleMask mask() const { return mask_; }
  /// The controls that the owner's hints allow and the mask removes.
  [[nodiscard]] NSWindowStyleMask removedControls() const;

  /// Blocks for a round trip to the X server only to restore hints. Overriding does not block, so
  /// that a launch screen appears without delay.
  void setMask(NSWindowStyleMask styleMask, PixelRect frame);
  /// The window has another size, or is about to get it. Can block for a round trip if the window
  /// is adopted.
  void sizeChanged(PixelRect frame);
  /// A program has written the hints. Blocks for a round trip if the window is adopted.
  void hintsChanged(PixelRect frame);
  /// Restores the owner's hints if they are overridden. Blocks for a round trip.
  void restore();

  /// The style mask that the owner has given the window, if it was not reported yet. No value while
  /// the hints are overridden.
  [[nodiscard]] std::optional<NSWindowStyleMask> unreportedOwnersMask() const;
  void markOwnersMaskReported();

 private:
  struct PendingReplies {
    xcb_get_property_cookie_t motif;
    xcb_get_property_cookie_t normal;
  };
  /// A request for the hints that we sent just before overriding them, and the values expected
  /// then.
  struct ReplacedHints {
    PendingReplies pendingReplies;
    StyleHints expectedHints;
  };

  [[nodiscard]] bool isOwn() const { return kind_.has_value(); }
  [[nodiscard]] StyleHints ownersHints() const;
  [[nodiscard]] StyleHints currentHints() const;
  void writeOwnHints(PixelRect frame);
  void overrideHints(PixelRect frame);
  void reconcileAndOverrideHints(PixelRect frame);

  [[nodiscard]] PendingReplies requestHints() const;
  void reconcileCurrentHints();
  void reconcileReplacedHints();
  void writeHints(const StyleHints& hints);

  Connection& connection_;
  xcb_window_t window_;
  xcb_atom_t motifName_;
  std::optional<WindowKind> kind_;  // only of a window that we created
  NSWindowStyleMask mask_;
  NSWindowStyleMask reportedOwnersMask_;
  bool isOverridden_ = false;
  HintOverride motif_;
  HintOverride normal_;
  std::vector<ReplacedHints> replacedHints_;  // oldest first
};

}  // namespace vel::x11
