// What a style mask says, in the properties that window managers read.
#pragma once

#include <optional>

#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/ScreenCoordinates.h"

namespace vel::x11 {

/// The controls that a style mask takes away or gives, and all of the mask that hints can say.
inline constexpr NSWindowStyleMask kControls =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;
inline constexpr NSWindowStyleMask kHinted = kControls | NSWindowStyleMaskTitled;

/// The two properties of a window that its style mask speaks for; none is an absent property.
struct StyleHints {
  std::optional<Property> motif;   // _MOTIF_WM_HINTS
  std::optional<Property> normal;  // WM_NORMAL_HINTS
  bool operator==(const StyleHints&) const = default;
};

/// What we wrote over one of these properties, and what its owner had there.
struct Overlay {
  std::optional<Property> theirs;
  std::optional<Property> ours;
};

/// Whether a value that the owner has written since has all that we changed in it still: then he
/// has changed what he read from us, as many programs do, and means the rest as it was.
[[nodiscard]] bool isReadFrom(const Overlay& overlay, const Property& found);
/// Such a value with what stood for our changes.
[[nodiscard]] Property withoutOurs(const Overlay& overlay, const Property& found);

/// The style mask that the properties amount to. Absent ones leave a window every control.
[[nodiscard]] NSWindowStyleMask styleMaskOf(const StyleHints& hints);

/// The hints of a window of `size` without the title and the controls that `styleMask` lacks; what
/// it has more than `hints` is not added, and a property from which nothing is taken away stays as
/// it is, to the byte. `motifType` is the type of a Motif property that is made new.
[[nodiscard]] StyleHints withControls(const StyleHints& hints, NSWindowStyleMask styleMask,
                                      PixelRect size, xcb_atom_t motifType);

/// The hints of a window of our own, placed and sized by the program.
[[nodiscard]] StyleHints hintsForOwnWindow(NSWindowStyleMask styleMask, WindowKind kind,
                                           PixelRect frame, xcb_atom_t motifType);

}  // namespace vel::x11
