#pragma once

#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/StyleHints.h"
#include "Platform/WindowSystem/X11/Timing.h"

namespace vel::x11 {

/// The style mask of one window, expressed by the window's hints: _MOTIF_WM_HINTS and
/// WM_NORMAL_HINTS. For a window that we create, this class writes the hints.
///
/// An adopted window was created by its owner: another program or the host. The owner's mask is the
/// style mask that the owner's hints express. The back end reports the owner's mask at the
/// adoption, and again when it has changed. To apply another mask, this class overrides
/// _MOTIF_WM_HINTS. Later, this class restores the owner's value byte for byte.
///
/// This class never changes WM_NORMAL_HINTS of an adopted window: a fixed size in this property
/// would also make window managers refuse the owner's requests for another size. This class never
/// changes WM_PROTOCOLS, so the window manager can still ask the owner to close the window.
///
/// The table shows _MOTIF_WM_HINTS of an adopted window after each write.
/// - A to D are values or "no property".
/// - A value may contain a set of functions, a set of decorations, or both.
/// - "B - controls" is B without the functions and decorations that the mask excludes.
/// - "The event" is the PropertyNotify event for the owner's write.
/// - The last column is the value that restoring would write. `HintOverride` computes it.
/// - In the rows after "owner, while overridden: C", the owner's value is C before the write.
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
///   owner, while overridden: the value that    still C - controls         still C
///     we wrote
///   owner, while overridden: an edit of the    the edit, until the        D: the edit without our
///     value that we wrote                        event comes; then          changes
///                                                D - controls
///   owner, while overridden: deletes the       no property, until the     no property
///     property                                   event comes; then a value
///                                                without the controls
///   we, in restore                             C                          nothing
///   we, in restore, if C does not contain      C and the missing sets,    nothing
///     both sets                                  until `finishRestoring`;
///                                                then C
class WindowStyle final : public NonCopyable {
 public:
  /// For a window that we create. Writes the hints.
  WindowStyle(Connection& connection, xcb_window_t window, WindowKind kind,
              NSWindowStyleMask styleMask, PixelRect frame);
  /// For an adopted window with the hints `ownersHints`. Writes nothing yet.
  WindowStyle(Connection& connection, xcb_window_t window, const StyleHints& ownersHints);
  ~WindowStyle();

  [[nodiscard]] NSWindowStyleMask mask() const { return mask_; }
  /// The controls (close, miniaturise, resize) that the mask does not contain. For an adopted
  /// window, excludes the controls that the owner's hints already remove.
  [[nodiscard]] NSWindowStyleMask removedControls() const;

  /// Sets the style mask. `frame` is the frame of the window. For an adopted window, restores the
  /// hints if `styleMask` is the last reported owner's mask, and overrides the hints otherwise.
  /// Restoring blocks for a round trip to the X server. Overriding does not block, so that a launch
  /// screen appears without delay.
  void setMask(NSWindowStyleMask styleMask, PixelRect frame);
  /// Writes the new size into the hints of a window that we create, if the window is not resizable.
  /// Call this before the window gets another size: with the previous size in the hints, the window
  /// manager could refuse the new size. Does nothing for an adopted window.
  void updateSizeHints(PixelRect frame);
  /// Call this when the hints of an adopted window have changed. Reads the hints. If `isOverridden`
  /// is true, also overrides the value that it has read. Blocks for a round trip. Does nothing for
  /// a window that we create.
  void handleHintChange();

  /// Restores the owner's hints if they are overridden. Blocks for a round trip. If `isRestoring`
  /// is true after this call, the caller must call `finishRestoring` later.
  void restore();
  /// True while the property has a temporary value that `restore` has written. The owner's value
  /// then lacks the set of functions or the set of decorations. The temporary value contains both
  /// sets. The window manager must read the temporary value before `finishRestoring` writes the
  /// owner's value. Otherwise some window managers continue to apply the set that we wrote.
  [[nodiscard]] bool isRestoring() const { return isRestoring_; }
  /// The time on the steady clock at which the hints were last overridden.
  [[nodiscard]] Nanoseconds overrideTime() const { return overrideTime_; }
  /// Replaces the temporary value with the owner's value. Keeps a value that the owner has written
  /// since `restore`. Blocks for a round trip.
  void finishRestoring();

  [[nodiscard]] bool isOverridden() const { return isOverridden_; }
  /// Returns true if the value that we wrote removes the functions for resizing and maximising.
  [[nodiscard]] bool preventsResizing() const;
  /// Call this when the owner needs the functions for resizing and maximising. Until the next
  /// `restore`, the values that we write do not remove these functions. Blocks for a round trip if
  /// the hints are overridden.
  void allowResizing();
  /// True from `allowResizing` until `restore`.
  [[nodiscard]] bool isResizingAllowed() const { return isResizingAllowed_; }

  /// The owner's mask. No value if the back end has already reported this mask, if the hints are
  /// overridden, or if we created the window.
  [[nodiscard]] std::optional<NSWindowStyleMask> unreportedOwnersStyleMask() const;
  /// Call this when the back end reports the owner's mask. `mask` then returns the owner's mask.
  void markOwnersStyleMaskReported();

 private:
  /// The reply to a request for _MOTIF_WM_HINTS that we sent just before we overrode the property.
  /// The reply contains `expectedValue` unless the owner changed the property before our request.
  struct PendingMotifReply {
    xcb_get_property_cookie_t cookie;
    HintValue expectedValue;
  };

  [[nodiscard]] bool isAdopted() const { return !kind_.has_value(); }
  [[nodiscard]] StyleHints ownersHints() const;
  void writeCreatedWindowHints(PixelRect frame);
  void overrideMotif();
  void readHintsAndOverrideMotif();

  void readHints();
  void readPendingMotifReplies();
  // Returns the owner's value without the functions and decorations that we remove.
  [[nodiscard]] HintValue restrictedMotif() const;
  void writeMotif(const HintValue& value);

  Connection& connection_;
  xcb_window_t window_;
  xcb_atom_t motifName_;            // _MOTIF_WM_HINTS: the property's name and also its type
  std::optional<WindowKind> kind_;  // no value for an adopted window
  NSWindowStyleMask mask_;
  NSWindowStyleMask reportedOwnersStyleMask_;
  bool isOverridden_ = false;
  bool isResizingAllowed_ = false;
  bool isRestoring_ = false;
  Nanoseconds overrideTime_ = 0;
  HintOverride motif_;
  HintValue normal_;                                    // the current WM_NORMAL_HINTS
  std::vector<PendingMotifReply> pendingMotifReplies_;  // oldest first
};

}  // namespace vel::x11
