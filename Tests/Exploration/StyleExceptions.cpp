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

constexpr NSWindowStyleMask kRemovedControls =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;
constexpr NSWindowStyleMask kNothingSaved = ~NSWindowStyleMask{0};
constexpr std::int32_t kHostModeEmbedded = 0;

bool isWithoutControls(const ObservedPlay& play, const NSWindow& window) {
  return window.styleMask() == (play.givenStyle(window) & ~kRemovedControls);
}

bool hasStyleOfAnother(const ObservedPlay& play, const NSWindow& window) {
  return std::ranges::any_of(play.hostWindows(), [&play, &window](const auto& other) {
    return other.get() != &window && play.givenStyle(*other) == window.styleMask();
  });
}

bool hasEveryBit(const ObservedPlay& /*play*/, const NSWindow& window) {
  return window.styleMask() == kNothingSaved;
}

// A presentation that a step is about to make.
struct Presentation {
  bool embedded = false;
  Strong<NSWindow> window;
  Strong<LaunchScreenViewController> controller;
};

std::optional<Presentation> presentationOf(const ObservedPlay& play, const host::Step& step) {
  const auto* const present = std::get_if<host::step::Present>(&step.action);
  const auto controller = as<LaunchScreenViewController>(
      send(play.manager()->content(), &LaunchScreenContent::viewController));
  if (present == nullptr || controller == nullptr || !present->window) {
    return std::nullopt;
  }
  return Presentation{.embedded = present->mode == kHostModeEmbedded,
                      .window = play.names().window(*present->window),
                      .controller = controller};
}

bool takesAnotherMode(const ObservedPlay& play, const host::Step& step) {
  const auto made = presentationOf(play, step);
  return made && !made->embedded && made->controller->appWindow() != nullptr;
}

bool takesAnotherWindow(const ObservedPlay& play, const host::Step& step) {
  const auto made = presentationOf(play, step);
  return made && made->embedded && made->controller->appWindow() != nullptr &&
         made->controller->appWindow() != made->window;
}

bool bringsAnothersStyle(const ObservedPlay& play, const host::Step& step) {
  const auto made = presentationOf(play, step);
  return made && made->embedded && made->controller->appWindowStyleMask() != kNothingSaved &&
         made->controller->appWindowStyleMask() != play.givenStyle(*made->window);
}

bool coversACoveredWindow(const ObservedPlay& play, const host::Step& step) {
  const auto made = presentationOf(play, step);
  return made && made->embedded && made->controller->appWindowStyleMask() == kNothingSaved &&
         made->window->styleMask() != play.givenStyle(*made->window);
}

bool coversAClosedWindow(const ObservedPlay& play, const host::Step& step) {
  const auto made = presentationOf(play, step);
  return made && made->embedded && !made->window->isVisible();
}

bool isRemovalPending() {
  return std::ranges::any_of(dispatch_get_main_queue().pending(), [](const auto& work) {
    return work.label == embedded_cover::kRemovalLabel;
  });
}

// The host adds no views to its content views, so any subview is a cover.
bool isCoverUp(const ObservedPlay& play) {
  return std::ranges::any_of(play.hostWindows(),
                             [](const Strong<NSWindow>& window) {
                               return window->isVisible() &&
                                      !window->contentView()->subviews().empty();
                             }) ||
         std::ranges::any_of(NSApp->orderedWindows(), [](const Strong<NSWindow>& window) {
           return window->kind() != WindowKind::Plain;
         });
}

constexpr StyleException kStyleExceptions[] = {
    {"an embedded cover presented again, as a window of its own",
     "only embedded mode restores a style, and the mode has changed", &takesAnotherMode,
     &isWithoutControls},
    {"an embedded cover presented again, over another window",
     "a controller keeps one window at a time, and does not restore the style of the previous one",
     &takesAnotherWindow, &isWithoutControls},
    {"a controller's second window",
     "a controller saves a style once, so the second window gets the style of the first",
     &bringsAnothersStyle, &hasStyleOfAnother},
    {"a second cover over a covered window",
     "it saves the style that the first cover has set, and restores that style",
     &coversACoveredWindow, &isWithoutControls},
    {"a cover over a closed window, restored by another controller",
     "no style was saved, and the value that means so is written as a style", &coversAClosedWindow,
     &hasEveryBit},
};

}  // namespace

bool isUncovered(const ObservedPlay& play) { return !isCoverUp(play) && !isRemovalPending(); }

bool isStyleForgotten(const ObservedPlay& play) {
  const Strong<NSWindow> player = play.hostWindows().front();
  return embedded_cover::selfController == nullptr &&
         std::ranges::all_of(play.controllers(), [&play, &player](const auto& controller) {
           const NSWindowStyleMask saved = controller->appWindowStyleMask();
           return controller->appWindow() == nullptr &&
                  (saved == kNothingSaved || saved == play.givenStyle(*player));
         });
}

std::span<const StyleException> styleExceptions() { return kStyleExceptions; }

}  // namespace vel::exploration
