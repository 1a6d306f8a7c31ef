// The embedded cover (the launch screen's view as a subview of the host window) over a window
// without a content view controller.
#pragma once

#include <string_view>

#include "Platform/Foundation/Protocol.h"

namespace vel {

class LaunchScreenViewController;
class NSView;

/// These variables refer to one embedded cover, the tracked cover. They keep the cover and its
/// controller alive until the cover is removed, because no parent view controller owns them. All
/// launch screens share these variables: a second embedded cover becomes the tracked cover instead
/// of the first. Only the main thread may use these variables.
namespace embedded_cover {

/// The label of the work on the main queue that removes the tracked cover after its dismissal.
inline constexpr std::string_view kRemovalLabel = "remove the embedded cover";

extern Strong<NSView> superView;                           // the view that contains the cover
extern Strong<NSView> selfView;                            // the cover
extern Strong<LaunchScreenViewController> selfController;  // the controller of the cover

/// Sets the three references to null without notifying a delegate.
void release();

}  // namespace embedded_cover

}  // namespace vel
