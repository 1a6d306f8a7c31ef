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

/// The string in UTF-8. Empty for nil.
std::string textOf(NSString* string);
NSString* nativeString(std::string_view text);

// These functions return null for nil, and nil for null.

vel::Strong<vel::NSString> libraryString(NSString* string);
NSString* nativeString(const vel::Strong<vel::NSString>& string);
/// Converts strings and numbers, booleans too. Values of other classes become NSNull, because the
/// library reads only strings and numbers. Skips keys that are not strings.
vel::Strong<vel::NSDictionary> libraryDictionary(NSDictionary* dictionary);
/// The domain and the code of the error.
NSError* nativeError(const vel::Strong<vel::NSError>& error);

}  // namespace vel_objc
