#include "Tests/Exploration/StyleExceptions.h"

#include <algorithm>
#include <optional>

#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"

namespace vel::exploration {

namespace {

constexpr NSWindowStyleMask kTakenAway =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;
constexpr NSWindowStyleMask kNothingSaved = ~NSWindowStyleMask{0};
constexpr std::int32_t kHostModeEmbedded = 0;

bool isWithoutControls(const Stage& stage, const NSWindow& window) {
  return window.styleMask() == (stage.givenStyle(window) & ~kTakenAway);
}

bool hasStyleOfAnother(const Stage& stage, const NSWindow& window) {
  return std::ranges::any_of(stage.hostWindows(), [&stage, &window](const auto& other) {
    return other.get() != &window && stage.givenStyle(*other) == window.styleMask();
  });
}

bool hasEveryBit(const Stage& /*stage*/, const NSWindow& window) {
  return window.styleMask() == kNothingSaved;
}

// A presentation that is about to be made.
struct Presentation {
  bool embedded = false;
  Strong<NSWindow> window;
  Strong<LaunchScreenViewController> controller;
};

std::optional<Presentation> presentationOf(const Stage& stage, const host::Step& step) {
  const auto* const present = std::get_if<host::step::Present>(&step.action);
  const auto controller = as<LaunchScreenViewController>(
      send(stage.manager()->content(), &LaunchScreenContent::viewController));
  if (present == nullptr || controller == nullptr || !present->window) {
    return std::nullopt;
  }
  return Presentation{.embedded = present->mode == kHostModeEmbedded,
                      .window = stage.names().window(*present->window),
                      .controller = controller};
}

bool takesAnotherMode(const Stage& stage, const host::Step& step) {
  const auto made = presentationOf(stage, step);
  return made && !made->embedded && made->controller->appWindow() != nullptr;
}

bool takesAnotherWindow(const Stage& stage, const host::Step& step) {
  const auto made = presentationOf(stage, step);
  return made && made->embedded && made->controller->appWindow() != nullptr &&
         made->controller->appWindow() != made->window;
}

bool bringsAnothersStyle(const Stage& stage, const host::Step& step) {
  const auto made = presentationOf(stage, step);
  return made && made->embedded && made->controller->appWindowStyleMask() != kNothingSaved &&
         made->controller->appWindowStyleMask() != stage.givenStyle(*made->window);
}

bool coversACoveredWindow(const Stage& stage, const host::Step& step) {
  const auto made = presentationOf(stage, step);
  return made && made->embedded && made->controller->appWindowStyleMask() == kNothingSaved &&
         made->window->styleMask() != stage.givenStyle(*made->window);
}

bool coversAClosedWindow(const Stage& stage, const host::Step& step) {
  const auto made = presentationOf(stage, step);
  return made && made->embedded && !made->window->isVisible();
}

bool isRemovalPending() {
  return std::ranges::any_of(dispatch_get_main_queue().pending(), [](const auto& work) {
    return work.label == embedded_cover::kRemovalLabel;
  });
}

// The host's windows have no views of their own in their content views.
bool isCoverUp(const Stage& stage) {
  return std::ranges::any_of(stage.hostWindows(),
                             [](const Strong<NSWindow>& window) {
                               return window->isVisible() &&
                                      !window->contentView()->subviews().empty();
                             }) ||
         std::ranges::any_of(NSApp->orderedWindows(), [](const Strong<NSWindow>& window) {
           return window->kind() != WindowKind::Plain;
         });
}

constexpr StyleException kStyleExceptions[] = {
    {"an embedded cover presented once more, as a window of its own",
     "a style is given back in embedded mode alone, and the mode is another by then",
     &takesAnotherMode, &isWithoutControls},
    {"an embedded cover presented once more, over another window",
     "one window is held at a time, and the former is let go without its style",
     &takesAnotherWindow, &isWithoutControls},
    {"a controller's second window",
     "a style is saved once for each controller, and so the second window is given the first one's",
     &bringsAnothersStyle, &hasStyleOfAnother},
    {"a second cover over a covered window",
     "it saves the style that the first has left, and gives that back", &coversACoveredWindow,
     &isWithoutControls},
    {"a cover over a closed window, given back by another controller",
     "no style was saved, and what stands for none is written as it stands", &coversAClosedWindow,
     &hasEveryBit},
};

}  // namespace

bool isUncovered(const Stage& stage) { return !isCoverUp(stage) && !isRemovalPending(); }

bool isStyleForgotten(const Stage& stage) {
  const Strong<NSWindow> player = stage.hostWindows().front();
  return embedded_cover::selfController == nullptr &&
         std::ranges::all_of(stage.controllers(), [&stage, &player](const auto& controller) {
           const NSWindowStyleMask saved = controller->appWindowStyleMask();
           return controller->appWindow() == nullptr &&
                  (saved == kNothingSaved || saved == stage.givenStyle(*player));
         });
}

std::span<const StyleException> styleExceptions() { return kStyleExceptions; }

}  // namespace vel::exploration
