#include "Tests/Exploration/StyleExceptions.h"

#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/Message.h"

namespace vel::exploration {

namespace {

constexpr NSWindowStyleMask kTakenAway =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;
constexpr NSWindowStyleMask kNothingSaved = ~NSWindowStyleMask{0};
constexpr std::int32_t kHostModeEmbedded = 0;

NSWindowStyleMask withoutControls(NSWindowStyleMask given) { return given & ~kTakenAway; }

Strong<LaunchScreenViewController> mainController(const Stage& stage) {
  return as<LaunchScreenViewController>(
      send(stage.manager()->content(), &LaunchScreenContent::viewController));
}

bool presentsInAnotherMode(const Stage& stage, const host::Step& step) {
  const auto* const present = std::get_if<host::step::Present>(&step.action);
  const auto controller = mainController(stage);
  return present != nullptr && present->mode != kHostModeEmbedded &&
         send(controller, &LaunchScreenViewController::appWindow) != nullptr;
}

bool coversACoveredWindow(const Stage& stage, const host::Step& step) {
  const auto* const present = std::get_if<host::step::Present>(&step.action);
  const auto controller = mainController(stage);
  if (present == nullptr || present->mode != kHostModeEmbedded || controller == nullptr ||
      controller->appWindowStyleMask() != kNothingSaved || !present->window) {
    return false;
  }
  const Strong<NSWindow> window = stage.names().window(*present->window);
  return window != nullptr && window->styleMask() != stage.givenStyle(*window);
}

constexpr StyleException kStyleExceptions[] = {
    {"an embedded cover presented once more, as a window of its own",
     "only in embedded mode is a style given back, and the mode is another by then",
     &presentsInAnotherMode, &withoutControls},
    {"a second cover over a covered window",
     "it saves the style that the first has left, and gives that back", &coversACoveredWindow,
     &withoutControls},
};

}  // namespace

std::span<const StyleException> styleExceptions() { return kStyleExceptions; }

}  // namespace vel::exploration
