#include <gtest/gtest.h>

#include "HostInterfaces/DictionaryRequest.h"
#include "Platform/Foundation/NSNumber.h"

namespace vel::test {
namespace {

TEST(DictionaryRequestTest, ParametersAreTheGivenDictionaryOrNull) {
  const auto parameters = NSDictionary::dictionary();
  EXPECT_EQ(DictionaryRequest::requestWithParameters(parameters)->parameters(), parameters);
  EXPECT_EQ(DictionaryRequest::requestWithParameters(nullptr)->parameters(), nullptr);
}

TEST(DictionaryRequestTest, MakesItsParametersFromTheGivenEntries) {
  const auto request = DictionaryRequest::requestWithEntries(
      {{"event", NSString::stringWithUTF8String("launch_end")},
       {"max_duration_time", NSNumber::numberWithDouble(2.5)}});
  const auto parameters = request->parameters();
  EXPECT_EQ(parameters->count(), 2u);
  EXPECT_EQ(as<NSString>(parameters->objectForKey("event"))->UTF8String(), "launch_end");
  EXPECT_EQ(as<NSNumber>(parameters->objectForKey("max_duration_time"))->floatValue(), 2.5f);
}

TEST(DictionaryRequestTest, ConformsToContentRequest) {
  EXPECT_TRUE(conformsTo<ContentRequest>(DictionaryRequest::requestWithEntries({})));
}

}  // namespace
}  // namespace vel::test
