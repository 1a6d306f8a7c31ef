// The embedded cover over a window without a content view controller.
#pragma once

#include <string_view>

#include "Platform/Foundation/Protocol.h"

namespace vel {

class LaunchScreenViewController;
class NSView;

/// These variables track the embedded cover. They keep the cover alive until it is removed, because
/// the cover has no parent view controller that could own it. All controllers share these
/// variables. A second embedded cover replaces the first as the tracked cover. Only the main thread
/// may use these variables.
namespace embedded_cover {

/// The label of the work on the main queue that removes the tracked cover after its dismissal.
inline constexpr std::string_view kRemovalLabel = "remove the embedded cover";

extern Strong<NSView> superView;
extern Strong<NSView> selfView;
extern Strong<LaunchScreenViewController> selfController;

/// Sets the three references to null without notifying a delegate.
void release();

}  // namespace embedded_cover

}  // namespace vel
