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
      reportedOwnersMask_(styleMask),
      motif_(std::nullopt, kMotifBitSetCount),
      normal_(std::nullopt, kNormalBitSetCount) {
  writeOwnHints(frame);
}

WindowStyle::WindowStyle(Connection& connection, xcb_window_t window, const StyleHints& ownersHints)
    : connection_(connection),
      window_(window),
      motifName_(connection.atom(Atom::MotifWmHints)),
      mask_(styleMaskOf(ownersHints)),
      reportedOwnersMask_(mask_),
      motif_(ownersHints.motif, kMotifBitSetCount),
      normal_(ownersHints.normal, kNormalBitSetCount) {}

// Each reply must be read: XCB keeps it in memory until then.
WindowStyle::~WindowStyle() { reconcileReplacedHints(); }

StyleHints WindowStyle::ownersHints() const {
  return {.motif = motif_.ownersValue(), .normal = normal_.ownersValue()};
}

StyleHints WindowStyle::currentHints() const {
  return {.motif = motif_.currentValue(), .normal = normal_.currentValue()};
}

NSWindowStyleMask WindowStyle::removedControls() const {
  return (isOwn() ? kControls : styleMaskOf(ownersHints())) & ~mask_ & kControls;
}

void WindowStyle::setMask(NSWindowStyleMask styleMask, PixelRect frame) {
  mask_ = styleMask;
  if (isOwn()) {
    writeOwnHints(frame);
  } else if ((mask_ & kStyleInHints) == (reportedOwnersMask_ & kStyleInHints)) {
    restore();
  } else {
    overrideHints(frame);
  }
}

void WindowStyle::sizeChanged(PixelRect frame) {
  if ((mask_ & NSWindowStyleMaskResizable) != 0) {
    return;  // the hints do not contain the size
  }
  if (isOwn()) {
    writeOwnHints(frame);
  } else if (isOverridden_) {
    reconcileAndOverrideHints(frame);
  }
}

void WindowStyle::hintsChanged(PixelRect frame) {
  if (isOwn()) {
    return;
  }
  if (isOverridden_) {
    reconcileAndOverrideHints(frame);
  } else {
    reconcileCurrentHints();
  }
}

std::optional<NSWindowStyleMask> WindowStyle::unreportedOwnersMask() const {
  if (isOwn() || isOverridden_) {
    return std::nullopt;
  }
  const NSWindowStyleMask ownersMask = styleMaskOf(ownersHints());
  return ownersMask != reportedOwnersMask_ ? std::optional(ownersMask) : std::nullopt;
}

void WindowStyle::markOwnersMaskReported() {
  mask_ = reportedOwnersMask_ = styleMaskOf(ownersHints());
}

void WindowStyle::writeOwnHints(PixelRect frame) {
  writeHints(hintsForOwnWindow(mask_, *kind_, frame, motifName_));
}

// In the next three functions, the server grab guarantees that the owner does not write between our
// reading and our writing: we never overwrite a value that we have not read or requested.

// Does not block, because the replies are read later. Our write causes a PropertyNotify event, and
// `hintsChanged` then reads them.
void WindowStyle::overrideHints(PixelRect frame) {
  isOverridden_ = true;
  const ServerGrab grab(connection_);
  replacedHints_.push_back({.pendingReplies = requestHints(), .expectedHints = currentHints()});
  writeHints(restrictHints(ownersHints(), mask_, frame, motifName_));
}

void WindowStyle::reconcileAndOverrideHints(PixelRect frame) {
  const ServerGrab grab(connection_);
  reconcileReplacedHints();
  reconcileCurrentHints();
  writeHints(restrictHints(ownersHints(), mask_, frame, motifName_));
}

void WindowStyle::restore() {
  if (!isOverridden_) {
    return;
  }
  const ServerGrab grab(connection_);
  reconcileReplacedHints();
  reconcileCurrentHints();
  writeHints(ownersHints());
  motif_.forgetWrites();
  normal_.forgetWrites();
  isOverridden_ = false;
}

WindowStyle::PendingReplies WindowStyle::requestHints() const {
  return {.motif = connection_.requestProperty(window_, motifName_),
          .normal = connection_.requestProperty(window_, XCB_ATOM_WM_NORMAL_HINTS)};
}

void WindowStyle::reconcileCurrentHints() {
  const PendingReplies pending = requestHints();
  motif_.reconcile(connection_.readProperty(pending.motif, window_));
  normal_.reconcile(connection_.readProperty(pending.normal, window_));
}

void WindowStyle::reconcileReplacedHints() {
  for (const auto& [pending, expected] : std::exchange(replacedHints_, {})) {
    motif_.reconcileReplaced(expected.motif, connection_.readProperty(pending.motif, window_));
    normal_.reconcileReplaced(expected.normal, connection_.readProperty(pending.normal, window_));
  }
}

void WindowStyle::writeHints(const StyleHints& hints) {
  if (motif_.recordWrite(hints.motif)) {
    changeProperty(connection_, window_, motifName_, hints.motif);
  }
  if (normal_.recordWrite(hints.normal)) {
    changeProperty(connection_, window_, XCB_ATOM_WM_NORMAL_HINTS, hints.normal);
  }
}

}  // namespace vel::x11
