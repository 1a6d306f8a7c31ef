// Defines macros that the headers of macOS also define. The headers of the library must compile
// before and after this file.
#pragma once

// <dispatch/dispatch.h>
#define NSEC_PER_SEC 1000000000ull
#define NSEC_PER_MSEC 1000000ull
#define USEC_PER_SEC 1000000ull
#define NSEC_PER_USEC 1000ull
#define DISPATCH_TIME_NOW (0ull)
#define DISPATCH_TIME_FOREVER (~0ull)
#define DISPATCH_EXPORT extern
#define DISPATCH_QUEUE_SERIAL NULL
#define dispatch_once _dispatch_once

// <objc/objc.h> and <objc/NSObjCRuntime.h>
#define YES ((bool)1)
#define NO ((bool)0)
#define nil NULL
#define Nil NULL
#define NSIntegerMax 0x7fffffffffffffff
#define NSIntegerMin (-NSIntegerMax - 1)
#define NSUIntegerMax 0xffffffffffffffff
#define NSINTEGER_DEFINED 1
#define NS_ENUM(type, name) enum name : type
#define NS_OPTIONS(type, name) enum name : type

// <Foundation/Foundation.h> and <AppKit/AppKit.h>
#define FOUNDATION_EXPORT extern "C"
#define FOUNDATION_EXTERN extern "C"
#define APPKIT_EXTERN extern "C"
#define MIN(a, b) ((a) < (b) ? (a) : (b))
#define MAX(a, b) ((a) > (b) ? (a) : (b))
#define ABS(a) ((a) < 0 ? -(a) : (a))
#define NSAssert(condition, description) ((void)0)
#define NSLocalizedString(key, comment) (key)
#define NSFoundationVersionNumber10_0 397.40
#define NSAppKitVersionNumber10_0 577
#define CGFLOAT_TYPE double
#define CGFLOAT_IS_DOUBLE 1
#define CGFLOAT_MIN 2.2250738585072014e-308
#define CGFLOAT_MAX 1.7976931348623157e+308
#define CG_EXTERN extern "C"
#define CG_INLINE static inline

// <AssertMacros.h>
#define check(assertion) ((void)0)
#define require(assertion, label) ((void)0)
#define verify(assertion) ((void)0)

// <TargetConditionals.h>
#define TARGET_OS_MAC 1
#define TARGET_OS_OSX 1
#define TARGET_OS_IPHONE 0
