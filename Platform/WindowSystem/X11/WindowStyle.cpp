#include "Platform/WindowSystem/X11/WindowStyle.h"

#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

WindowStyle::WindowStyle(Connection& connection, xcb_window_t window, WindowKind kind,
                         NSWindowStyleMask styleMask, PixelRect frame)
    : connection_(connection),
      window_(window),
      motifName_(connection.atom(Atom::MotifWmHints)),
      kind_(kind),
      mask_(styleMask),
      reportedOwnersStyleMask_(styleMask),
      motif_(std::nullopt, kMotifBitSetCount) {
  writeCreatedWindowHints(frame);
}

WindowStyle::WindowStyle(Connection& connection, xcb_window_t window, const StyleHints& ownersHints)
    : connection_(connection),
      window_(window),
      motifName_(connection.atom(Atom::MotifWmHints)),
      mask_(styleMaskOf(ownersHints)),
      reportedOwnersStyleMask_(mask_),
      motif_(ownersHints.motif, kMotifBitSetCount),
      normal_(ownersHints.normal) {}

// Each reply must be read: XCB keeps it in memory until then.
WindowStyle::~WindowStyle() { readPendingMotifReplies(); }

StyleHints WindowStyle::ownersHints() const {
  return {.motif = motif_.ownersValue(), .normal = normal_};
}

NSWindowStyleMask WindowStyle::removedControls() const {
  return (isAdopted() ? styleMaskOf(ownersHints()) : kControls) & ~mask_ & kControls;
}

void WindowStyle::setMask(NSWindowStyleMask styleMask, PixelRect frame) {
  mask_ = styleMask;
  if (!isAdopted()) {
    writeCreatedWindowHints(frame);
  } else if ((mask_ & kStyleInHints) == (reportedOwnersStyleMask_ & kStyleInHints)) {
    // A caller that sets the last reported mask wants the owner's style, even if the owner has
    // changed the style since.
    restore();
  } else {
    overrideMotif();
  }
}

void WindowStyle::updateSizeHints(PixelRect frame) {
  // The hints of a resizable window do not contain its size.
  if (!isAdopted() && (mask_ & NSWindowStyleMaskResizable) == 0) {
    writeCreatedWindowHints(frame);
  }
}

void WindowStyle::handleHintChange() {
  if (!isAdopted()) {
    return;
  }
  if (isOverridden_) {
    readHintsAndOverrideMotif();
  } else {
    readHints();
  }
}

bool WindowStyle::preventsResizing() const {
  return isOverridden_ && !isResizingAllowed_ && (mask_ & NSWindowStyleMaskResizable) == 0;
}

void WindowStyle::allowResizing() {
  isResizingAllowed_ = true;
  if (isOverridden_) {
    readHintsAndOverrideMotif();
  }
}

std::optional<NSWindowStyleMask> WindowStyle::unreportedOwnersStyleMask() const {
  if (!isAdopted() || isOverridden_) {
    return std::nullopt;
  }
  const NSWindowStyleMask ownersMask = styleMaskOf(ownersHints());
  return ownersMask != reportedOwnersStyleMask_ ? std::optional(ownersMask) : std::nullopt;
}

void WindowStyle::markOwnersStyleMaskReported() {
  mask_ = reportedOwnersStyleMask_ = styleMaskOf(ownersHints());
}

void WindowStyle::writeCreatedWindowHints(PixelRect frame) {
  const StyleHints hints = hintsForCreatedWindow(mask_, *kind_, frame, motifName_);
  writeMotif(hints.motif);
  if (normal_ != hints.normal) {
    normal_ = hints.normal;
    changeProperty(connection_, window_, XCB_ATOM_WM_NORMAL_HINTS, normal_);
  }
}

// In the next four functions, the server grab guarantees that the owner does not write the hints
// between our read and our write.

// Requests the value that we replace, but does not block for the reply. Our write causes a
// PropertyNotify event. On this event, `handleHintChange` reads the reply.
void WindowStyle::overrideMotif() {
  isOverridden_ = true;
  isRestoring_ = false;
  overrideTime_ = steadyNow();
  const ServerGrab grab(connection_);
  pendingMotifReplies_.push_back({.cookie = connection_.requestProperty(window_, motifName_),
                                  .expectedValue = motif_.currentValue()});
  writeMotif(restrictedMotif());
}

void WindowStyle::readHintsAndOverrideMotif() {
  overrideTime_ = steadyNow();
  const ServerGrab grab(connection_);
  readPendingMotifReplies();
  readHints();
  writeMotif(restrictedMotif());
}

void WindowStyle::restore() {
  isResizingAllowed_ = false;
  if (!std::exchange(isOverridden_, false)) {
    return;
  }
  const ServerGrab grab(connection_);
  readPendingMotifReplies();
  readHints();
  const HintValue valueWithBothSets =
      motifWithFunctionsAndDecorations(motif_.ownersValue(), motifName_);
  if (motif_.currentValue() == motif_.ownersValue() || valueWithBothSets == motif_.ownersValue()) {
    writeMotif(motif_.ownersValue());
    motif_.forgetWrites();
  } else {
    // The owner's value lacks the set of functions or the set of decorations. With this value, some
    // window managers would continue to apply the set that we wrote. So we write a value with both
    // sets, and `finishRestoring` later writes the owner's value.
    writeMotif(valueWithBothSets);
    isRestoring_ = true;
  }
}

void WindowStyle::finishRestoring() {
  if (!std::exchange(isRestoring_, false)) {
    return;
  }
  const ServerGrab grab(connection_);
  readHints();
  writeMotif(motif_.ownersValue());
  motif_.forgetWrites();
}

void WindowStyle::readHints() {
  const auto motif = connection_.requestProperty(window_, motifName_);
  const auto normal = connection_.requestProperty(window_, XCB_ATOM_WM_NORMAL_HINTS);
  motif_.recordCurrentValue(connection_.readProperty(motif, window_));
  normal_ = connection_.readProperty(normal, window_);
}

void WindowStyle::readPendingMotifReplies() {
  for (const auto& [cookie, expectedValue] : std::exchange(pendingMotifReplies_, {})) {
    motif_.recordReplacedValue(expectedValue, connection_.readProperty(cookie, window_));
  }
}

HintValue WindowStyle::restrictedMotif() const {
  const NSWindowStyleMask allowedMask =
      isResizingAllowed_ ? mask_ | NSWindowStyleMaskResizable : mask_;
  return restrictMotif(motif_.ownersValue(), allowedMask, motifName_);
}

void WindowStyle::writeMotif(const HintValue& value) {
  const bool isRequestNeeded = motif_.recordWrite(value);
  if (isRequestNeeded) {
    changeProperty(connection_, window_, motifName_, value);
  }
}

}  // namespace vel::x11
