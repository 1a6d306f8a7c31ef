// Tests numbers, dictionaries, errors, bundles, the version of the operating system, threads and
// the conversion of times.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <thread>

#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSDictionary.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSNumber.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Foundation/NSString.h"
#include "Platform/Foundation/NSThread.h"
#include "Platform/Foundation/Time.h"

namespace vel::test {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(NSNumberTest, ADoubleConvertsToSinglePrecision) {
  EXPECT_EQ(NSNumber::numberWithDouble(5.5)->floatValue(), 5.5F);
  EXPECT_EQ(NSNumber::numberWithDouble(0.1)->floatValue(), 0.1F);
  EXPECT_EQ(NSNumber::numberWithDouble(-0.1)->floatValue(), -0.1F);
  EXPECT_EQ(NSNumber::numberWithDouble(1.00000001)->floatValue(), 1.F);
}

TEST(NSNumberTest, ADoubleOutOfRangeConvertsToInfinityOrZero) {
  EXPECT_EQ(NSNumber::numberWithDouble(1e39)->floatValue(), kInfinity);
  EXPECT_EQ(NSNumber::numberWithDouble(-1e300)->floatValue(), -kInfinity);
  EXPECT_EQ(NSNumber::numberWithDouble(1e-50)->floatValue(), 0.F);
}

TEST(NSNumberTest, NaNStaysNaN) {
  const float value = NSNumber::numberWithDouble(kNaN)->floatValue();
  EXPECT_NE(value, value);
}

TEST(NSNumberTest, AnIntegerConvertsToTheNearestFloat) {
  EXPECT_EQ(NSNumber::numberWithInteger(-7)->floatValue(), -7.F);
  EXPECT_EQ(NSNumber::numberWithInteger(16'777'217)->floatValue(), 16'777'216.F);
  EXPECT_EQ(NSNumber::numberWithInteger(std::numeric_limits<std::int64_t>::min())->floatValue(),
            -9223372036854775808.F);
  EXPECT_EQ(
      NSNumber::numberWithUnsignedInteger(std::numeric_limits<std::uint64_t>::max())->floatValue(),
      18446744073709551616.F);
}

TEST(NSDictionaryTest, ReturnsTheValueOfAKeyOrNull) {
  const auto name = NSString::stringWithUTF8String("launch_end");
  const auto dictionary = NSDictionary::dictionaryWithEntries({{"event", name}});
  EXPECT_EQ(dictionary->objectForKey("event"), name);
  EXPECT_EQ(dictionary->objectForKey("Event"), nullptr);
  EXPECT_EQ(dictionary->objectForKey(""), nullptr);
  EXPECT_EQ(dictionary->count(), 1u);
}

TEST(NSDictionaryTest, AnEmptyDictionaryHasNoValues) {
  EXPECT_EQ(NSDictionary::dictionary()->count(), 0u);
  EXPECT_EQ(NSDictionary::dictionary()->objectForKey("event"), nullptr);
}

TEST(NSDictionaryTest, ValuesMayBeOfAnyClass) {
  const auto dictionary =
      NSDictionary::dictionaryWithEntries({{"text", NSString::stringWithUTF8String("5")},
                                           {"number", NSNumber::numberWithInteger(5)},
                                           {"inner", NSDictionary::dictionary()},
                                           {"nothing", NSNull::null()}});
  EXPECT_EQ(as<NSNumber>(dictionary->objectForKey("text")), nullptr);
  EXPECT_NE(as<NSNumber>(dictionary->objectForKey("number")), nullptr);
  EXPECT_EQ(dictionary->objectForKey("inner")->className(), "NSDictionary");
  EXPECT_EQ(dictionary->objectForKey("nothing")->className(), "NSNull");
}

TEST(NSErrorTest, ReturnsItsDomainAndCodeAndUserInfo) {
  const auto userInfo = NSDictionary::dictionary();
  const auto error = NSError::errorWithDomainCodeUserInfo("No controller!", 404, userInfo);
  EXPECT_EQ(error->domain(), "No controller!");
  EXPECT_EQ(error->code(), 404);
  EXPECT_EQ(error->userInfo(), userInfo);
  EXPECT_EQ(NSError::errorWithDomainCodeUserInfo("", 0, nullptr)->userInfo(), nullptr);
}

TEST(NSBundleTest, BundleForClassHasTheClassAsPrincipalClass) {
  EXPECT_EQ(NSBundle::bundleForClass<NSString>()->principalClass(), "NSString");
}

class NSProcessInfoTest : public testing::Test {
 protected:
  ~NSProcessInfoTest() override { NSProcessInfo::setOperatingSystemVersion(originalVersion); }
  static bool isAtLeast(NSOperatingSystemVersion version) {
    return NSProcessInfo::isOperatingSystemAtLeastVersion(version);
  }

  NSOperatingSystemVersion originalVersion = NSProcessInfo::operatingSystemVersion();
};

TEST_F(NSProcessInfoTest, TheDefaultVersionIsAtLeastTenFourteen) {
  EXPECT_TRUE(isAtLeast({10, 14, 0}));
}

TEST_F(NSProcessInfoTest, IsAtLeastIsTrueForTheCurrentVersionAndEarlierVersions) {
  NSProcessInfo::setOperatingSystemVersion({10, 14, 3});
  EXPECT_TRUE(isAtLeast({10, 14, 3}));
  EXPECT_TRUE(isAtLeast({10, 14, 0}));
  EXPECT_TRUE(isAtLeast({10, 13, 9}));
  EXPECT_TRUE(isAtLeast({9, 99, 99}));
}

TEST_F(NSProcessInfoTest, IsAtLeastIsFalseForLaterVersions) {
  NSProcessInfo::setOperatingSystemVersion({10, 14, 3});
  EXPECT_FALSE(isAtLeast({10, 14, 4}));
  EXPECT_FALSE(isAtLeast({10, 15, 0}));
  EXPECT_FALSE(isAtLeast({11, 0, 0}));
}

TEST(NSThreadTest, AnotherThreadIsNotTheMainThread) {
  EXPECT_TRUE(NSThread::isMainThread());
  bool isMainThread = true;
  std::thread([&isMainThread] { isMainThread = NSThread::isMainThread(); }).join();
  EXPECT_FALSE(isMainThread);
}

TEST(NSThreadTest, AnotherThreadMayBecomeTheMainThread) {
  bool isMainThread = false;
  std::thread([&isMainThread] {
    NSThread::becomeMainThread();
    isMainThread = NSThread::isMainThread();
  }).join();
  EXPECT_TRUE(isMainThread);
  EXPECT_FALSE(NSThread::isMainThread());
  NSThread::becomeMainThread();
}

TEST(TimeTest, SecondsAreRoundedToTheNearestNanosecond) {
  EXPECT_EQ(nanosecondsFromSeconds(0.1), 100'000'000);
  EXPECT_EQ(nanosecondsFromSeconds(0.3), 300'000'000);
  EXPECT_EQ(nanosecondsFromSeconds(1.4e-9), 1);
  EXPECT_EQ(nanosecondsFromSeconds(1.5e-9), 2);
  EXPECT_EQ(nanosecondsFromSeconds(-1.6e-9), -2);
  EXPECT_EQ(nanosecondsFromSeconds(1e6), 1'000'000'000'000'000);
}

TEST(TimeTest, SecondsOutOfRangeConvertToTheNearestLimitAndNaNConvertsToZero) {
  EXPECT_EQ(nanosecondsFromSeconds(1e10), kNever);
  EXPECT_EQ(nanosecondsFromSeconds(std::numeric_limits<double>::infinity()), kNever);
  EXPECT_EQ(nanosecondsFromSeconds(-1e10), -kNever);
  EXPECT_EQ(nanosecondsFromSeconds(kNaN), 0);
}

TEST(TimeTest, NanosecondsConvertToSeconds) {
  EXPECT_EQ(secondsFromNanoseconds(1'500'000'000), 1.5);
  EXPECT_EQ(secondsFromNanoseconds(0), 0.0);
}

}  // namespace
}  // namespace vel::test
