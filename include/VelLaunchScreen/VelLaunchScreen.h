// Includes every header that a host in C++ uses.
#pragma once

#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Foundation/NSNumber.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Foundation/NSThread.h"
#include "Platform/Foundation/ReleasePool.h"
#include "Platform/WindowSystem/Backends/Backends.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"
