#include "Tests/Exploration/KnownWrongStyles.h"

#include <algorithm>
#include <optional>

#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"

namespace vel::exploration {

namespace {

// An embedded cover removes these controls from its window.
constexpr NSWindowStyleMask kRemovedControls =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;
constexpr NSWindowStyleMask kNoSavedStyle = ~NSWindowStyleMask{0};
constexpr std::int32_t kHostModeEmbedded = 0;

bool isWithoutControls(const ObservedPlay& play, const NSWindow& window) {
  return window.styleMask() == (play.originalStyle(window) & ~kRemovedControls);
}

bool hasStyleOfAnotherWindow(const ObservedPlay& play, const NSWindow& window) {
  return std::ranges::any_of(play.hostWindows(), [&play, &window](const auto& otherWindow) {
    return otherWindow.get() != &window && play.originalStyle(*otherWindow) == window.styleMask();
  });
}

bool hasEveryBit(const ObservedPlay& /*play*/, const NSWindow& window) {
  return window.styleMask() == kNoSavedStyle;
}

struct Presentation {
  bool isEmbedded = false;
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
  return Presentation{.isEmbedded = present->mode == kHostModeEmbedded,
                      .window = play.names().window(*present->window),
                      .controller = controller};
}

// Before the step, the controller's `appWindow` is null or the window of its latest embedded
// presentation.
bool presentsInAnotherMode(const ObservedPlay& play, const host::Step& step) {
  const auto presentation = presentationOf(play, step);
  return presentation && !presentation->isEmbedded &&
         presentation->controller->appWindow() != nullptr;
}

bool presentsOverAnotherWindow(const ObservedPlay& play, const host::Step& step) {
  const auto presentation = presentationOf(play, step);
  return presentation && presentation->isEmbedded &&
         presentation->controller->appWindow() != nullptr &&
         presentation->controller->appWindow() != presentation->window;
}

bool presentsWithSavedStyleOfAnotherWindow(const ObservedPlay& play, const host::Step& step) {
  const auto presentation = presentationOf(play, step);
  return presentation && presentation->isEmbedded &&
         presentation->controller->appWindowStyleMask() != kNoSavedStyle &&
         presentation->controller->appWindowStyleMask() !=
             play.originalStyle(*presentation->window);
}

bool presentsOverCoveredWindow(const ObservedPlay& play, const host::Step& step) {
  const auto presentation = presentationOf(play, step);
  return presentation && presentation->isEmbedded &&
         presentation->controller->appWindowStyleMask() == kNoSavedStyle &&
         presentation->window->styleMask() != play.originalStyle(*presentation->window);
}

bool presentsOverClosedWindow(const ObservedPlay& play, const host::Step& step) {
  const auto presentation = presentationOf(play, step);
  return presentation && presentation->isEmbedded && !presentation->window->isVisible();
}

bool isCoverRemovalPending() {
  return std::ranges::any_of(dispatch_get_main_queue().pendingWork(), [](const auto& work) {
    return work.label == embedded_cover::kRemovalLabel;
  });
}

// The host opens only plain windows, and adds no views to their content views. So any subview, any
// modal window and any sheet is a cover.
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

constexpr KnownWrongStyle kKnownWrongStyles[] = {
    // A controller restores a style only in embedded mode. The second presentation uses another
    // mode.
    {"an embedded cover presented again, as a window of its own", &presentsInAnotherMode,
     &isWithoutControls},
    // A controller refers to one window at a time. It does not restore the style of the previous
    // window.
    {"an embedded cover presented again, over another window", &presentsOverAnotherWindow,
     &isWithoutControls},
    // A controller saves a style only once. So the second window gets the style of the first
    // window.
    {"a second window of a controller that has saved the style of its first window",
     &presentsWithSavedStyleOfAnotherWindow, &hasStyleOfAnotherWindow},
    // The second cover saves and restores the style that the first cover has set.
    {"a second cover over a covered window", &presentsOverCoveredWindow, &isWithoutControls},
    // A cover over a closed window does not appear, so its controller saves no style. The
    // dismissal of another controller then sets the style of the closed window to `kNoSavedStyle`.
    {"a closed window whose style another controller restores", &presentsOverClosedWindow,
     &hasEveryBit},
};

}  // namespace

bool isUncovered(const ObservedPlay& play) { return !isCoverUp(play) && !isCoverRemovalPending(); }

bool canEarlierCoverChangeStyle(const ObservedPlay& play) {
  const Strong<NSWindow> playerWindow = play.hostWindows().front();
  return embedded_cover::selfController != nullptr ||
         std::ranges::any_of(play.controllers(), [&play, &playerWindow](const auto& controller) {
           const NSWindowStyleMask savedStyle = controller->appWindowStyleMask();
           return controller->appWindow() != nullptr ||
                  (savedStyle != kNoSavedStyle && savedStyle != play.originalStyle(*playerWindow));
         });
}

std::span<const KnownWrongStyle> knownWrongStyles() { return kKnownWrongStyles; }

}  // namespace vel::exploration
