// Converts between a style mask and the window properties that express the mask.
#pragma once

#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/HintOverride.h"
#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

/// The bits of a style mask that give a window its controls.
inline constexpr NSWindowStyleMask kControls =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;
/// The bits of a style mask that hints can express.
inline constexpr NSWindowStyleMask kStyleInHints = kControls | NSWindowStyleMaskTitled;

/// The first three elements of _MOTIF_WM_HINTS are sets of bits: flags, functions and decorations.
inline constexpr std::size_t kMotifBitSetCount = 3;

/// The properties of a window that express its style mask.
struct StyleHints {
  HintValue motif;   // _MOTIF_WM_HINTS
  HintValue normal;  // WM_NORMAL_HINTS
  bool operator==(const StyleHints&) const = default;
};

/// The style mask that `hints` give a window. A window without the properties has a title and all
/// controls.
[[nodiscard]] NSWindowStyleMask styleMaskOf(const StyleHints& hints);

/// Returns a copy of `motif` that allows only the controls in `styleMask`. If `styleMask` does not
/// contain the title, the copy has no decorations. If nothing needs to be removed, the copy equals
/// `motif`. `typeIfMissing` is the type of the copy if `motif` has no value.
[[nodiscard]] HintValue restrictMotif(const HintValue& motif, NSWindowStyleMask styleMask,
                                      xcb_atom_t typeIfMissing);

/// Returns a copy of `motif` with both a set of functions and a set of decorations. If `motif` does
/// not contain a set, the set in the copy allows everything. `typeIfMissing` is the type of the
/// copy if `motif` has no value.
///
/// If a set is missing in a new value, some window managers continue to apply the previous set. So
/// `WindowStyle` writes the copy before it restores the value `motif`.
[[nodiscard]] Property motifWithFunctionsAndDecorations(const HintValue& motif,
                                                        xcb_atom_t typeIfMissing);

/// The hints of a window that we create. The hints say that both the user and the program have set
/// the position and the size.
[[nodiscard]] StyleHints hintsForCreatedWindow(NSWindowStyleMask styleMask, WindowKind kind,
                                               PixelRect frame, xcb_atom_t motifType);

}  // namespace vel::x11
