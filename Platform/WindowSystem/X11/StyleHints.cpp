#include "Platform/WindowSystem/X11/StyleHints.h"

#include <algorithm>
#include <array>

namespace vel::x11 {

namespace {

// _MOTIF_WM_HINTS: flags, functions, decorations, input mode, status.
constexpr std::size_t kMotifFields = 5;
enum MotifField : std::size_t { kMotifFlags, kMotifFunctions, kMotifDecorations };
constexpr std::uint32_t kHasFunctions = 1;
constexpr std::uint32_t kHasDecorations = 2;

// In both sets the first bit turns the others round: all but those.
constexpr std::uint32_t kAllBut = 1;
constexpr std::uint32_t kEveryFunction = 2 | 4 | 8 | 16 | 32;
constexpr std::uint32_t kEveryDecoration = 2 | 4 | 8 | 16 | 32 | 64;
constexpr std::uint32_t kMove = 4;

struct Control {
  NSWindowStyleMask bit;
  std::uint32_t function;  // the one that stands for it, of those in `functions`
  std::uint32_t functions;
  std::uint32_t decorations;
};
constexpr std::array<Control, 3> kMotifControls{{
    {NSWindowStyleMaskResizable, 2, 2 | 16, 4 | 64},  // maximising is resizing
    {NSWindowStyleMaskMiniaturizable, 8, 8, 32},
    {NSWindowStyleMaskClosable, 32, 32, 0},
}};

// WM_NORMAL_HINTS, as far as it is touched.
constexpr std::size_t kNormalFields = 18;
enum NormalField : std::size_t {
  kNormalFlags,
  kLeastWidth = 5,
  kLeastHeight,
  kGreatestWidth,
  kGreatestHeight,
  kGravity = 17,
};
constexpr std::uint32_t kPlacedByProgram = 1 | 2 | 4 | 8;  // USPosition, USSize, PPosition, PSize
constexpr std::uint32_t kHasLeastSize = 16;
constexpr std::uint32_t kHasGreatestSize = 32;
constexpr std::uint32_t kHasGravity = 512;

std::vector<std::uint32_t> fields(const std::optional<Property>& property, std::size_t count) {
  std::vector<std::uint32_t> numbers;
  if (property) {
    numbers = property->numbers();
  }
  numbers.resize(std::max(numbers.size(), count));
  return numbers;
}

std::uint32_t spelledOut(std::uint32_t set, std::uint32_t every) {
  return (set & kAllBut) != 0 ? every & ~set : set;
}

std::uint32_t functionsOf(const std::vector<std::uint32_t>& motif) {
  return (motif[kMotifFlags] & kHasFunctions) != 0
             ? spelledOut(motif[kMotifFunctions], kEveryFunction)
             : kEveryFunction;
}

std::uint32_t decorationsOf(const std::vector<std::uint32_t>& motif) {
  return (motif[kMotifFlags] & kHasDecorations) != 0
             ? spelledOut(motif[kMotifDecorations], kEveryDecoration)
             : kEveryDecoration;
}

bool hasOneSize(const std::vector<std::uint32_t>& normal) {
  constexpr std::uint32_t kBoth = kHasLeastSize | kHasGreatestSize;
  return (normal[kNormalFlags] & kBoth) == kBoth && normal[kLeastWidth] == normal[kGreatestWidth] &&
         normal[kLeastHeight] == normal[kGreatestHeight];
}

// By their lengths: of the five fields of a Motif property three are sets, of the others' one.
std::size_t setsIn(const std::vector<std::uint32_t>& values) {
  return values.size() < kNormalFields ? 3 : 1;
}

// The bits of each field in which ours differs from theirs. Where two sizes differ, they differ as
// wholes.
std::vector<std::uint32_t> changesIn(const Overlay& overlay) {
  const std::vector<std::uint32_t> ours = fields(overlay.ours, 0);
  const std::vector<std::uint32_t> theirs = fields(overlay.theirs, ours.size());
  std::vector<std::uint32_t> changes(ours.size());
  for (std::size_t i = 0; i < ours.size(); ++i) {
    const std::uint32_t difference = ours[i] ^ theirs[i];
    changes[i] = i < setsIn(ours) || difference == 0 ? difference : ~0U;
  }
  return changes;
}

void fixSize(std::vector<std::uint32_t>& normal, PixelRect size) {
  normal[kNormalFlags] |= kHasLeastSize | kHasGreatestSize;
  normal[kLeastWidth] = normal[kGreatestWidth] = static_cast<std::uint32_t>(size.width);
  normal[kLeastHeight] = normal[kGreatestHeight] = static_cast<std::uint32_t>(size.height);
}

}  // namespace

bool isReadFrom(const Overlay& overlay, const Property& found) {
  const std::vector<std::uint32_t> ours = fields(overlay.ours, 0);
  const std::vector<std::uint32_t> changes = changesIn(overlay);
  const std::vector<std::uint32_t> values = found.numbers();
  if (values.size() < ours.size() || overlay.ours == overlay.theirs) {
    return false;
  }
  for (std::size_t i = 0; i < ours.size(); ++i) {
    if (((values[i] ^ ours[i]) & changes[i]) != 0) {
      return false;
    }
  }
  return true;
}

Property withoutOurs(const Overlay& overlay, const Property& found) {
  const std::vector<std::uint32_t> changes = changesIn(overlay);
  const std::vector<std::uint32_t> theirs = fields(overlay.theirs, changes.size());
  std::vector<std::uint32_t> values = found.numbers();
  for (std::size_t i = 0; i < changes.size(); ++i) {
    values[i] = (values[i] & ~changes[i]) | (theirs[i] & changes[i]);
  }
  return Property::ofNumbers(found.type, values);
}

NSWindowStyleMask styleMaskOf(const StyleHints& hints) {
  const auto motif = fields(hints.motif, kMotifFields);
  NSWindowStyleMask styleMask =
      decorationsOf(motif) == 0 ? NSWindowStyleMaskBorderless : NSWindowStyleMaskTitled;
  for (const Control& control : kMotifControls) {
    if ((functionsOf(motif) & control.function) != 0) {
      styleMask |= control.bit;
    }
  }
  if (hasOneSize(fields(hints.normal, kNormalFields))) {
    styleMask &= ~NSWindowStyleMaskResizable;
  }
  return styleMask;
}

StyleHints withControls(const StyleHints& hints, NSWindowStyleMask styleMask, PixelRect size,
                        xcb_atom_t motifType) {
  std::uint32_t functions = 0;
  std::uint32_t decorations = 0;
  for (const Control& control : kMotifControls) {
    if ((styleMask & control.bit) == 0) {
      functions |= control.functions;
      decorations |= control.decorations;
    }
  }
  if ((styleMask & NSWindowStyleMaskTitled) == 0) {
    decorations = kEveryDecoration;
  }

  StyleHints changed = hints;
  if (auto motif = fields(hints.motif, kMotifFields);
      (functionsOf(motif) & functions) != 0 || (decorationsOf(motif) & decorations) != 0) {
    motif[kMotifFunctions] = functionsOf(motif) & ~functions;
    motif[kMotifDecorations] = decorationsOf(motif) & ~decorations;
    motif[kMotifFlags] |= kHasFunctions | kHasDecorations;
    changed.motif = Property::ofNumbers(hints.motif ? hints.motif->type : motifType, motif);
  }
  if (auto normal = fields(hints.normal, kNormalFields);
      (styleMask & NSWindowStyleMaskResizable) == 0 && !hasOneSize(normal)) {
    fixSize(normal, size);
    changed.normal = Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, normal);
  }
  return changed;
}

StyleHints hintsForOwnWindow(NSWindowStyleMask styleMask, WindowKind kind, PixelRect frame,
                             xcb_atom_t motifType) {
  std::vector<std::uint32_t> motif(kMotifFields);
  motif[kMotifFlags] = kHasFunctions | kHasDecorations;
  motif[kMotifFunctions] = kEveryFunction;
  motif[kMotifDecorations] = kEveryDecoration;
  if (kind == WindowKind::Sheet) {  // it stays where it hangs, below its owner's title
    motif[kMotifFunctions] &= ~kMove;
    motif[kMotifDecorations] = 0;
  }

  std::vector<std::uint32_t> normal(kNormalFields);
  normal[kNormalFlags] = kPlacedByProgram | kHasGravity;
  normal[kGravity] = XCB_GRAVITY_STATIC;  // the frame is that of the content, not of the border
  return withControls(
      {Property::ofNumbers(motifType, motif), Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, normal)},
      styleMask, frame, motifType);
}

}  // namespace vel::x11
