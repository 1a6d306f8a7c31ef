#include "Bindings/ObjectiveC/NativeValues.h"

#include <utility>

#include "Platform/Foundation/NSNumber.h"

namespace vel_objc {

namespace {

// Keeps the type of the number: floating point, unsigned or signed. A conversion through `double`
// would round large integers.
vel::Strong<vel::NSNumber> libraryNumber(NSNumber* number) {
  switch (*[number objCType]) {
    case 'f':
    case 'd':
      return vel::NSNumber::numberWithDouble([number doubleValue]);
    case 'C':
    case 'S':
    case 'I':
    case 'L':
    case 'Q':
      return vel::NSNumber::numberWithUnsignedInteger([number unsignedLongLongValue]);
    default:
      return vel::NSNumber::numberWithInteger([number longLongValue]);
  }
}

vel::Strong<vel::NSObjectProtocol> libraryValue(id value) {
  if ([value isKindOfClass:[NSString class]]) {
    return libraryString(value);
  }
  if ([value isKindOfClass:[NSNumber class]]) {
    return libraryNumber(value);
  }
  return vel::NSNull::null();
}

}  // namespace

// `UTF8String` would end at a zero byte in the string.
std::string textOf(NSString* string) {
  NSData* const bytes = [string dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
  return bytes != nil ? std::string(static_cast<const char*>([bytes bytes]), [bytes length])
                      : std::string();
}

NSString* nativeString(std::string_view text) {
  NSString* const string = [[[NSString alloc] initWithBytes:text.data()
                                                     length:text.size()
                                                   encoding:NSUTF8StringEncoding] autorelease];
  return string != nil ? string : @"";
}

vel::Strong<vel::NSString> libraryString(NSString* string) {
  return string != nil ? vel::NSString::stringWithUTF8String(textOf(string)) : nullptr;
}

NSString* nativeString(const vel::Strong<vel::NSString>& string) {
  return string != nullptr ? nativeString(string->UTF8String()) : nil;
}

vel::Strong<vel::NSDictionary> libraryDictionary(NSDictionary* dictionary) {
  if (dictionary == nil) {
    return nullptr;
  }
  vel::NSDictionary::Entries entries;
  NSArray* const keys = [dictionary allKeys];
  for (NSUInteger i = 0; i < [keys count]; ++i) {
    id const key = [keys objectAtIndex:i];
    if ([key isKindOfClass:[NSString class]]) {
      entries.insert_or_assign(textOf(key), libraryValue([dictionary objectForKey:key]));
    }
  }
  return vel::NSDictionary::dictionaryWithEntries(std::move(entries));
}

NSError* nativeError(const vel::Strong<vel::NSError>& error) {
  return error != nullptr ? [NSError errorWithDomain:nativeString(error->domain())
                                                code:static_cast<NSInteger>(error->code())
                                            userInfo:nil]
                          : nil;
}

}  // namespace vel_objc
