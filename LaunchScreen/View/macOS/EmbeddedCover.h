// The embedded cover that has no parent view controller: at most one at a time.
#pragma once

#include "Platform/Foundation/Protocol.h"

namespace vel {

class LaunchScreenViewController;
class NSView;

/// Keeps that cover alive until it is taken down, and lets any controller find its window. Shared
/// by all controllers: a second cover of this kind takes the place of the first. Main thread.
namespace embedded_cover {

extern Strong<NSView> superView;
extern Strong<NSView> selfView;
extern Strong<LaunchScreenViewController> selfController;

/// Lets go of all three without a word to anybody: for whoever ends the whole application.
void release();

}  // namespace embedded_cover

}  // namespace vel
