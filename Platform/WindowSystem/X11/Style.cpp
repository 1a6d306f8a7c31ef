#include "Platform/WindowSystem/X11/Style.h"

namespace vel::x11 {

Style::Style(Connection& connection, xcb_window_t window, WindowKind kind,
             NSWindowStyleMask styleMask, PixelRect frame)
    : connection_(connection), window_(window), kind_(kind), initial_(kControls), mask_(styleMask) {
  apply(frame);
}

Style::Style(Connection& connection, xcb_window_t window, const StyleHints& found)
    : connection_(connection),
      window_(window),
      initial_(styleMaskOf(found)),
      mask_(initial_),
      written_(found) {}

void Style::set(NSWindowStyleMask styleMask, PixelRect frame) {
  mask_ = styleMask;
  if (isOwn()) {
    apply(frame);
  } else if ((mask_ & kHinted) == (initial_ & kHinted)) {
    giveBack();
  } else {
    if (!takenOver_) {
      theirs_ = read();
      takenOver_ = true;
    }
    apply(frame);
  }
}

void Style::apply(PixelRect frame) {
  const xcb_atom_t motif = connection_.atom(Atom::MotifWmHints);
  write(kind_.has_value() ? hintsForOwnWindow(mask_, *kind_, frame, motif)
                          : withControls(theirs_, mask_, frame, motif));
}

void Style::sizeChanged(PixelRect frame) {
  if ((isOwn() || takenOver_) && (mask_ & NSWindowStyleMaskResizable) == 0) {
    apply(frame);
  }
}

void Style::hintsChanged(PixelRect frame) {
  if (!takenOver_) {
    return;
  }
  const StyleHints found = read();
  if (found == written_) {
    return;
  }
  if (found.motif != written_.motif) {
    theirs_.motif = found.motif;
  }
  if (found.normal != written_.normal) {
    theirs_.normal = found.normal;
  }
  written_ = found;
  apply(frame);
}

void Style::giveBack() {
  if (!takenOver_) {
    return;
  }
  takenOver_ = false;
  // What the owner has written meanwhile, unnoticed so far, is as good as given back.
  const StyleHints ours = written_;
  written_ = read();
  write({written_.motif == ours.motif ? theirs_.motif : written_.motif,
         written_.normal == ours.normal ? theirs_.normal : written_.normal});
}

StyleHints Style::read() const {
  const auto motif = connection_.askForProperty(window_, connection_.atom(Atom::MotifWmHints));
  const auto normal = connection_.askForProperty(window_, XCB_ATOM_WM_NORMAL_HINTS);
  StyleHints hints;
  hints.motif = connection_.property(motif, window_);
  hints.normal = connection_.property(normal, window_);
  return hints;
}

void Style::write(const StyleHints& hints) {
  if (hints.motif != written_.motif) {
    connection_.setProperty(window_, connection_.atom(Atom::MotifWmHints), hints.motif);
  }
  if (hints.normal != written_.normal) {
    connection_.setProperty(window_, XCB_ATOM_WM_NORMAL_HINTS, hints.normal);
  }
  written_ = hints;
}

}  // namespace vel::x11
