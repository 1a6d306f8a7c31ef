#include "Platform/WindowSystem/X11/StyleHints.h"

#include <xcb/xcb_icccm.h>

#include <array>
#include <cstddef>

namespace vel::x11 {

namespace {

// The indices of the elements of _MOTIF_WM_HINTS. The last two elements, input mode and status, are
// not used.
enum MotifElement : std::size_t { kMotifFlags, kMotifFunctions, kMotifDecorations };
constexpr std::size_t kMotifElementCount = 5;

enum MotifFlag : std::uint32_t { kHasFunctions = 1, kHasDecorations = 2 };

// If a set contains this bit, the window has every function or decoration that is not in the set.
constexpr std::uint32_t kAllExcept = 1;

enum MotifFunction : std::uint32_t {
  kFunctionResize = 2,
  kFunctionMove = 4,
  kFunctionMinimize = 8,
  kFunctionMaximize = 16,
  kFunctionClose = 32,
  kEveryFunction = 62,
};

enum MotifDecoration : std::uint32_t {
  kDecorationBorder = 2,
  kDecorationResizeHandles = 4,
  kDecorationTitle = 8,
  kDecorationMenu = 16,
  kDecorationMinimize = 32,
  kDecorationMaximize = 64,
  kEveryDecoration = 126,
};

// How _MOTIF_WM_HINTS expresses a control of a window.
struct MotifControl {
  NSWindowStyleMask styleBit;
  std::uint32_t function;            // a window that has this function has the control
  std::uint32_t removedFunctions;    // removing the control removes these functions
  std::uint32_t removedDecorations;  // removing the control removes these decorations
};
constexpr std::array<MotifControl, 3> kMotifControls{{
    {NSWindowStyleMaskResizable, kFunctionResize,
     kFunctionResize | kFunctionMaximize,  // maximising changes the size
     kDecorationResizeHandles | kDecorationMaximize},
    {NSWindowStyleMaskMiniaturizable, kFunctionMinimize, kFunctionMinimize, kDecorationMinimize},
    {NSWindowStyleMaskClosable, kFunctionClose, kFunctionClose, 0},
}};

constexpr std::size_t elementIndex(std::size_t byteOffset) {
  return byteOffset / sizeof(std::uint32_t);
}
// The indices of the elements of WM_NORMAL_HINTS that are used here.
constexpr std::size_t kNormalFlags = elementIndex(offsetof(xcb_size_hints_t, flags));
constexpr std::size_t kMinWidth = elementIndex(offsetof(xcb_size_hints_t, min_width));
constexpr std::size_t kMinHeight = elementIndex(offsetof(xcb_size_hints_t, min_height));
constexpr std::size_t kMaxWidth = elementIndex(offsetof(xcb_size_hints_t, max_width));
constexpr std::size_t kMaxHeight = elementIndex(offsetof(xcb_size_hints_t, max_height));
constexpr std::size_t kWinGravity = elementIndex(offsetof(xcb_size_hints_t, win_gravity));
constexpr std::size_t kNormalElementCount = XCB_ICCCM_NUM_WM_SIZE_HINTS_ELEMENTS;

// Returns a set that has the same meaning as `set` but does not contain `kAllExcept`.
std::uint32_t withoutAllExceptBit(std::uint32_t set, std::uint32_t allBits) {
  return (set & kAllExcept) != 0 ? allBits & ~set : set;
}

std::uint32_t functionsOf(const std::vector<std::uint32_t>& motif) {
  return (motif[kMotifFlags] & kHasFunctions) != 0
             ? withoutAllExceptBit(motif[kMotifFunctions], kEveryFunction)
             : kEveryFunction;
}

std::uint32_t decorationsOf(const std::vector<std::uint32_t>& motif) {
  return (motif[kMotifFlags] & kHasDecorations) != 0
             ? withoutAllExceptBit(motif[kMotifDecorations], kEveryDecoration)
             : kEveryDecoration;
}

bool hasFixedSize(const std::vector<std::uint32_t>& normal) {
  constexpr std::uint32_t kMinAndMax =
      XCB_ICCCM_SIZE_HINT_P_MIN_SIZE | XCB_ICCCM_SIZE_HINT_P_MAX_SIZE;
  return (normal[kNormalFlags] & kMinAndMax) == kMinAndMax &&
         normal[kMinWidth] == normal[kMaxWidth] && normal[kMinHeight] == normal[kMaxHeight];
}

void fixSize(std::vector<std::uint32_t>& normal, PixelRect frame) {
  normal[kNormalFlags] |= XCB_ICCCM_SIZE_HINT_P_MIN_SIZE | XCB_ICCCM_SIZE_HINT_P_MAX_SIZE;
  normal[kMinWidth] = normal[kMaxWidth] = static_cast<std::uint32_t>(frame.width);
  normal[kMinHeight] = normal[kMaxHeight] = static_cast<std::uint32_t>(frame.height);
}

}  // namespace

HintValue restrictMotif(const HintValue& motif, NSWindowStyleMask styleMask,
                        xcb_atom_t typeIfMissing) {
  std::uint32_t removedFunctions = 0;
  std::uint32_t removedDecorations = 0;
  for (const MotifControl& control : kMotifControls) {
    if ((styleMask & control.styleBit) == 0) {
      removedFunctions |= control.removedFunctions;
      removedDecorations |= control.removedDecorations;
    }
  }
  if ((styleMask & NSWindowStyleMaskTitled) == 0) {
    removedDecorations = kEveryDecoration;
  }
  auto elements = elementsOf(motif, kMotifElementCount);
  const std::uint32_t functions = functionsOf(elements);
  const std::uint32_t decorations = decorationsOf(elements);
  if ((functions & removedFunctions) == 0 && (decorations & removedDecorations) == 0) {
    return motif;
  }
  elements[kMotifFlags] |= kHasFunctions | kHasDecorations;
  elements[kMotifFunctions] = functions & ~removedFunctions;
  elements[kMotifDecorations] = decorations & ~removedDecorations;
  return Property::ofNumbers(motif ? motif->type : typeIfMissing, elements);
}

Property motifWithFunctionsAndDecorations(const HintValue& motif, xcb_atom_t typeIfMissing) {
  auto elements = elementsOf(motif, kMotifElementCount);
  if ((elements[kMotifFlags] & kHasFunctions) == 0) {
    elements[kMotifFunctions] = kAllExcept;  // every function
  }
  if ((elements[kMotifFlags] & kHasDecorations) == 0) {
    elements[kMotifDecorations] = kAllExcept;  // every decoration
  }
  elements[kMotifFlags] |= kHasFunctions | kHasDecorations;
  return Property::ofNumbers(motif ? motif->type : typeIfMissing, elements);
}

NSWindowStyleMask styleMaskOf(const StyleHints& hints) {
  const auto motif = elementsOf(hints.motif, kMotifElementCount);
  NSWindowStyleMask styleMask =
      decorationsOf(motif) == 0 ? NSWindowStyleMaskBorderless : NSWindowStyleMaskTitled;
  for (const MotifControl& control : kMotifControls) {
    if ((functionsOf(motif) & control.function) != 0) {
      styleMask |= control.styleBit;
    }
  }
  if (hasFixedSize(elementsOf(hints.normal, kNormalElementCount))) {
    styleMask &= ~NSWindowStyleMaskResizable;
  }
  return styleMask;
}

StyleHints hintsForCreatedWindow(NSWindowStyleMask styleMask, WindowKind kind, PixelRect frame,
                                 xcb_atom_t motifType) {
  std::vector<std::uint32_t> motif(kMotifElementCount);
  motif[kMotifFlags] = kHasFunctions | kHasDecorations;
  motif[kMotifFunctions] = kEveryFunction;
  motif[kMotifDecorations] = kEveryDecoration;
  if (kind == WindowKind::Sheet) {  // the user cannot move a sheet
    motif[kMotifFunctions] &= ~std::uint32_t{kFunctionMove};
    motif[kMotifDecorations] = 0;
  }

  std::vector<std::uint32_t> normal(kNormalElementCount);
  normal[kNormalFlags] = XCB_ICCCM_SIZE_HINT_US_POSITION | XCB_ICCCM_SIZE_HINT_US_SIZE |
                         XCB_ICCCM_SIZE_HINT_P_POSITION | XCB_ICCCM_SIZE_HINT_P_SIZE |
                         XCB_ICCCM_SIZE_HINT_P_WIN_GRAVITY;
  normal[kWinGravity] = XCB_GRAVITY_STATIC;  // the position is that of the client area
  if ((styleMask & NSWindowStyleMaskResizable) == 0) {
    fixSize(normal, frame);
  }
  return {.motif = restrictMotif(Property::ofNumbers(motifType, motif), styleMask, motifType),
          .normal = Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, normal)};
}

}  // namespace vel::x11
