// The embedded cover over a window without a content view controller.
#pragma once

#include <string_view>

#include "Platform/Foundation/Protocol.h"

namespace vel {

class LaunchScreenViewController;
class NSView;

/// Keeps the embedded cover alive until the cover is removed. The cover has no parent view
/// controller that could own it. All controllers share these variables. A second embedded cover
/// replaces the first. Only the main thread may use these variables.
namespace embedded_cover {

/// The label of the main queue's work that removes the cover after its dismissal.
inline constexpr std::string_view kRemovalLabel = "remove the embedded cover";

extern Strong<NSView> superView;
extern Strong<NSView> selfView;
extern Strong<LaunchScreenViewController> selfController;

/// Sets all three variables to null without notifying a delegate.
void release();

}  // namespace embedded_cover

}  // namespace vel
