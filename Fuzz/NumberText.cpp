// Fuzzes `NSString::floatValue`: for every input it must return the same number as a slow and
// simple implementation.
#include "Fuzz/Fuzz.h"
#include "Fuzz/SlowNumber.h"
#include "Platform/Foundation/NSString.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = vel::fuzz::textOf(data, size);
  const float value = vel::NSString::stringWithUTF8String(text)->floatValue();
  const float expected = vel::fuzz::slowFloatValue(text);
  vel::fuzz::require(value == expected, "expected ", expected, " but floatValue returned ", value);
  return 0;
}
