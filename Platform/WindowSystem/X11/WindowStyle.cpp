#include "Platform/WindowSystem/X11/WindowStyle.h"

#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

namespace {

// More than are made while a window's owner reads one and writes his own.
constexpr std::size_t kWritingsRemembered = 4;

}  // namespace

WindowStyle::WindowStyle(Connection& connection, xcb_window_t window, WindowKind kind,
                         NSWindowStyleMask styleMask, PixelRect frame)
    : connection_(connection),
      window_(window),
      kind_(kind),
      told_(kControls),
      mask_(styleMask),
      motif_{.name = connection.atom(Atom::MotifWmHints)},
      normal_{.name = XCB_ATOM_WM_NORMAL_HINTS} {
  apply(frame);
}

WindowStyle::WindowStyle(Connection& connection, xcb_window_t window, const StyleHints& found)
    : connection_(connection),
      window_(window),
      told_(styleMaskOf(found)),
      mask_(told_),
      motif_{.name = connection.atom(Atom::MotifWmHints),
             .theirs = found.motif,
             .written = found.motif},
      normal_{.name = XCB_ATOM_WM_NORMAL_HINTS, .theirs = found.normal, .written = found.normal} {}

WindowStyle::~WindowStyle() { takeAnswers(); }

NSWindowStyleMask WindowStyle::takenControls() const {
  return (isOwn() ? told_ : styleMaskOf(theirs())) & ~mask_ & kControls;
}

void WindowStyle::set(NSWindowStyleMask styleMask, PixelRect frame) {
  mask_ = styleMask;
  if (!isOwn() && (mask_ & kHinted) == (told_ & kHinted)) {
    giveBack();
  } else if (isOwn()) {
    apply(frame);
  } else {
    takeOver(frame);
  }
}

// Here as below, nobody else writes between our reading and our writing: nothing of his is lost
// unread. But the answer is looked at when the event of the writing has come.
void WindowStyle::takeOver(PixelRect frame) {
  takenOver_ = true;
  const ServerGrab grab(connection_);
  unread_.push_back({.asked = ask(), .written = {motif_.written, normal_.written}});
  write(withControls(theirs(), mask_, frame, motif_.name));
}

void WindowStyle::apply(PixelRect frame) {
  if (isOwn()) {
    write(hintsForOwnWindow(mask_, *kind_, frame, motif_.name));
    return;
  }
  const ServerGrab grab(connection_);
  takeAnswers();
  read();
  write(withControls(theirs(), mask_, frame, motif_.name));
}

void WindowStyle::sizeChanged(PixelRect frame) {
  if ((isOwn() || takenOver_) && (mask_ & NSWindowStyleMaskResizable) == 0) {
    apply(frame);
  }
}

void WindowStyle::hintsChanged(PixelRect frame) {
  if (takenOver_) {
    apply(frame);
  } else if (!isOwn()) {
    read();
  }
}

std::optional<NSWindowStyleMask> WindowStyle::ownersMask() const {
  const NSWindowStyleMask theirMask = styleMaskOf(theirs());
  const bool isNews = !isOwn() && !takenOver_ && theirMask != told_;
  return isNews ? std::optional(theirMask) : std::nullopt;
}

void WindowStyle::ownersMaskTold() { mask_ = told_ = styleMaskOf(theirs()); }

void WindowStyle::giveBack() {
  if (!takenOver_) {
    return;
  }
  const ServerGrab grab(connection_);
  takeAnswers();
  read();
  write(theirs());
  motif_.overlays.clear();
  normal_.overlays.clear();
  takenOver_ = false;
}

WindowStyle::Asked WindowStyle::ask() const {
  return {.motif = connection_.requestProperty(window_, motif_.name),
          .normal = connection_.requestProperty(window_, normal_.name)};
}

void WindowStyle::read() {
  const Asked asked = ask();
  found(motif_, connection_.readProperty(asked.motif, window_));
  found(normal_, connection_.readProperty(asked.normal, window_));
}

void WindowStyle::takeAnswers() {
  for (const Unread& unread : std::exchange(unread_, {})) {
    stood(motif_, unread.written.motif, connection_.readProperty(unread.asked.motif, window_));
    stood(normal_, unread.written.normal, connection_.readProperty(unread.asked.normal, window_));
  }
}

void WindowStyle::stood(Hint& hint, const std::optional<Property>& written,
                        const std::optional<Property>& value) {
  if (value == written) {
    return;
  }
  hint.theirs = meantBy(hint, value);
  for (Overlay& overlay : hint.overlays) {
    overlay.theirs = hint.theirs;
  }
}

void WindowStyle::found(Hint& hint, std::optional<Property> value) {
  if (value != hint.written) {
    hint.theirs = meantBy(hint, value);
    hint.written = std::move(value);
  }
}

std::optional<Property> WindowStyle::meantBy(const Hint& hint,
                                             const std::optional<Property>& value) {
  std::optional<Property> meant = value;
  for (const Overlay& overlay : hint.overlays) {
    if (value && isReadFrom(overlay, *value)) {
      meant = value == overlay.ours ? overlay.theirs : withoutOurs(overlay, *value);
    }
  }
  return meant;
}

void WindowStyle::write(const StyleHints& hints) {
  write(motif_, hints.motif);
  write(normal_, hints.normal);
}

void WindowStyle::write(Hint& hint, const std::optional<Property>& value) {
  if (value == hint.written) {
    return;
  }
  changeProperty(connection_, window_, hint.name, value);
  hint.written = value;
  if (hint.overlays.size() == kWritingsRemembered) {
    hint.overlays.pop_front();
  }
  hint.overlays.push_back({.theirs = hint.theirs, .ours = value});
}

}  // namespace vel::x11
