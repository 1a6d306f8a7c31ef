// Converts values between Objective-C and the library. The namespace is not inside `vel`, so that
// `NSString` in it means the native class.
#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

#include "Platform/Foundation/NSDictionary.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSString.h"

namespace vel_objc {

/// Returns the string in UTF-8. Returns an empty text for nil.
std::string textOf(NSString* string);
NSString* nativeString(std::string_view text);

// These functions return null for nil, and nil for null.

vel::Strong<vel::NSString> libraryString(NSString* string);
NSString* nativeString(const vel::Strong<vel::NSString>& string);
/// Converts strings and numbers, including booleans. Values of other classes become NSNull, because
/// the library reads only strings and numbers. Keys that are not strings are left out.
vel::Strong<vel::NSDictionary> libraryDictionary(NSDictionary* dictionary);
/// Converts the domain and the code. The native error has no user info.
NSError* nativeError(const vel::Strong<vel::NSError>& error);

}  // namespace vel_objc
