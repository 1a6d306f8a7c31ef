#include "Platform/WindowSystem/X11/Style.h"

#include <utility>

namespace vel::x11 {

Style::Style(Connection& connection, xcb_window_t window, WindowKind kind,
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

Style::Style(Connection& connection, xcb_window_t window, const StyleHints& found)
    : connection_(connection),
      window_(window),
      told_(styleMaskOf(found)),
      mask_(told_),
      motif_{.name = connection.atom(Atom::MotifWmHints),
             .theirs = found.motif,
             .written = found.motif},
      normal_{.name = XCB_ATOM_WM_NORMAL_HINTS, .theirs = found.normal, .written = found.normal} {}

NSWindowStyleMask Style::takenControls() const {
  return (isOwn() ? told_ : styleMaskOf(theirs())) & ~mask_ & kControls;
}

void Style::set(NSWindowStyleMask styleMask, PixelRect frame) {
  mask_ = styleMask;
  if (!isOwn() && (mask_ & kHinted) == (told_ & kHinted)) {
    giveBack();
  } else {
    takenOver_ = !isOwn();
    apply(frame);
  }
}

// Nobody else writes between our reading and our writing: nothing of his is lost unread.
void Style::apply(PixelRect frame) {
  if (isOwn()) {
    write(hintsForOwnWindow(mask_, *kind_, frame, motif_.name));
    return;
  }
  const ServerGrab grab(connection_);
  read();
  write(withControls(theirs(), mask_, frame, motif_.name));
}

void Style::sizeChanged(PixelRect frame) {
  if ((isOwn() || takenOver_) && (mask_ & NSWindowStyleMaskResizable) == 0) {
    apply(frame);
  }
}

// An event bears the number of our latest request that the server had come to. The event of our own
// writing is the first with its number; an earlier one is of something that we have read since.
bool Style::handle(const xcb_generic_event_t& event) {
  const xcb_atom_t name = eventAs<xcb_property_notify_event_t>(event).atom;
  if (isOwn() || (name != motif_.name && name != normal_.name)) {
    return false;
  }
  Hint& hint = name == motif_.name ? motif_ : normal_;
  const int age = static_cast<int>(event.full_sequence - hint.lastWriting);
  if (hint.lastWriting != 0 && age < 0) {
    return false;
  }
  if (age == 0 && std::exchange(hint.writingUnheard, false)) {
    return false;
  }
  hint.writtenByOwner = true;
  return true;
}

void Style::hintsChanged(PixelRect frame) {
  if (takenOver_) {
    apply(frame);
  } else {
    read();
  }
}

std::optional<NSWindowStyleMask> Style::ownersMask() const {
  const NSWindowStyleMask theirMask = styleMaskOf(theirs());
  const bool isNews = !isOwn() && !takenOver_ && theirMask != told_;
  return isNews ? std::optional(theirMask) : std::nullopt;
}

void Style::ownersMaskTold() { mask_ = told_ = styleMaskOf(theirs()); }

void Style::giveBack() {
  if (!takenOver_) {
    return;
  }
  const ServerGrab grab(connection_);
  read();
  write(theirs());
  takenOver_ = false;
}

void Style::read() {
  const auto motif = connection_.askForProperty(window_, motif_.name);
  const auto normal = connection_.askForProperty(window_, normal_.name);
  found(motif_, connection_.property(motif, window_));
  found(normal_, connection_.property(normal, window_));
}

// What its owner writes may be just what we wrote, and is his all the same.
void Style::found(Hint& hint, std::optional<Property> value) {
  if (std::exchange(hint.writtenByOwner, false) || value != hint.written) {
    hint.theirs = value;
    hint.written = std::move(value);
  }
}

void Style::write(const StyleHints& hints) {
  write(motif_, hints.motif);
  write(normal_, hints.normal);
}

void Style::write(Hint& hint, const std::optional<Property>& value) {
  if (value != hint.written) {
    hint.lastWriting = connection_.setProperty(window_, hint.name, value);
    hint.writingUnheard = true;
    hint.written = value;
  }
}

}  // namespace vel::x11
