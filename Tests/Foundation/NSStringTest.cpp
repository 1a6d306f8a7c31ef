#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/NSNumber.h"
#include "Platform/Foundation/NSString.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel::test {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

float floatValue(std::string_view text) {
  return NSString::stringWithUTF8String(text)->floatValue();
}

struct FloatValueCase {
  std::string_view text;
  float value;
};

void expectValues(const std::vector<FloatValueCase>& cases) {
  for (const auto& [text, value] : cases) {
    EXPECT_EQ(floatValue(text), value) << '"' << text << '"';
  }
}

TEST(NSStringTest, ReturnsItsText) {
  const auto string = NSString::stringWithUTF8String("größer");
  EXPECT_EQ(string->UTF8String(), "größer");
  EXPECT_EQ(string->length(), 8u);  // in bytes
}

TEST(NSStringTest, MayContainZeroBytes) {
  const auto string = NSString::stringWithUTF8String(std::string_view("a\0b", 3));
  EXPECT_EQ(string->length(), 3u);
  EXPECT_FALSE(string->isEqualToString("a"));
}

TEST(NSStringTest, EqualityIsCaseSensitive) {
  const auto string = NSString::stringWithUTF8String("skip");
  EXPECT_TRUE(string->isEqualToString("skip"));
  EXPECT_FALSE(string->isEqualToString("Skip"));
  EXPECT_FALSE(string->isEqualToString("skip "));
  EXPECT_FALSE(string->isEqualToString(""));
}

TEST(NSStringTest, EqualsOnlyStringsWithTheSameText) {
  const auto string = NSString::stringWithUTF8String("5");
  EXPECT_TRUE(string->isEqual(NSString::stringWithUTF8String("5").get()));
  EXPECT_FALSE(string->isEqual(NSString::stringWithUTF8String("6").get()));
  EXPECT_FALSE(string->isEqual(NSNumber::numberWithInteger(5).get()));
  EXPECT_FALSE(string->isEqual(nullptr));
}

TEST(FloatValueTest, ReadsADecimalNumber) {
  expectValues({{"5", 5.F},
                {"0.1", 0.1F},
                {"12.5", 12.5F},
                {".5", 0.5F},
                {"5.", 5.F},
                {"007", 7.F},
                {"0", 0.F},
                {"16777217", 16777216.F}});
}

TEST(FloatValueTest, ReadsASign) {
  expectValues({{"+5", 5.F}, {"-5", -5.F}, {"-.5", -0.5F}, {"+.5e1", 5.F}});
}

TEST(FloatValueTest, ReadsAnExponent) {
  expectValues({{"5e2", 500.F},
                {"5E2", 500.F},
                {"5e+2", 500.F},
                {"500e-2", 5.F},
                {"1.5e0", 1.5F},
                {"1e0002", 100.F}});
}

TEST(FloatValueTest, SkipsLeadingWhiteSpace) {
  expectValues({{" 5", 5.F}, {"\t\n\v\f\r 5", 5.F}, {"   -5", -5.F}});
}

TEST(FloatValueTest, DoesNotSkipCharactersThatAreNotWhiteSpace) {
  // The literal is split because "\05" is a single character, not a zero byte and a 5.
  expectValues({{std::string_view("\0"
                                  "5",
                                  2),
                 0.F},
                {"\b5", 0.F},
                {"_5", 0.F}});
}

TEST(FloatValueTest, ReadsTheLongestPrefixThatIsANumber) {
  expectValues({{"5 seconds", 5.F},
                {"5s", 5.F},
                {"1.2.3", 1.2F},
                {"1-2", 1.F},
                {"1,5", 1.F},
                {"1_000", 1.F},
                {"5e", 5.F},
                {"5e+", 5.F},
                {"5e-x", 5.F},
                {"5ee2", 5.F},
                {"5.e1", 50.F},
                {"5f", 5.F},
                {"2e3.5", 2000.F}});
}

TEST(FloatValueTest, StopsReadingAtAZeroByte) {
  expectValues({{std::string_view("12\0"
                                  "34",
                                  5),
                 12.F},
                {std::string_view("5\0", 2), 5.F}});
}

TEST(FloatValueTest, IsZeroWithoutANumber) {
  expectValues({{"", 0.F},
                {" ", 0.F},
                {"abc", 0.F},
                {".", 0.F},
                {"-", 0.F},
                {"+", 0.F},
                {"-.", 0.F},
                {"e5", 0.F},
                {".e5", 0.F},
                {"--5", 0.F},
                {"+-5", 0.F},
                {"- 5", 0.F},
                {"x5", 0.F},
                {"$5", 0.F},
                {"\xd9\xa5", 0.F}});  // the Arabic digit five
}

TEST(FloatValueTest, IsPositiveZeroForAMinusSignWithoutANumber) {
  EXPECT_FALSE(std::signbit(floatValue("-")));
  EXPECT_FALSE(std::signbit(floatValue("-abc")));
  EXPECT_TRUE(std::signbit(floatValue("-0")));
}

TEST(FloatValueTest, IsZeroForAWordSuchAsInfinity) {
  expectValues({{"nan", 0.F},
                {"NaN", 0.F},
                {"nan(5)", 0.F},
                {"inf", 0.F},
                {"-inf", 0.F},
                {"Infinity", 0.F},
                {"+INF", 0.F},
                {"true", 0.F}});
}

TEST(FloatValueTest, ReadsNoHexadecimalOrBinaryNotation) {
  expectValues({{"0x10", 0.F}, {"0X1p3", 0.F}, {"-0x10", 0.F}, {"1p3", 1.F}, {"0b11", 0.F}});
}

TEST(FloatValueTest, IsInfinityIfTheNumberIsTooLarge) {
  expectValues({{"1e39", kInfinity},
                {"-1e39", -kInfinity},
                {"3.5e38", kInfinity},
                {"1e999999999999999999999", kInfinity},
                {"1e9223372036854775807", kInfinity},
                {"0.001e50", kInfinity},
                {"-00012e38", -kInfinity}});
}

TEST(FloatValueTest, IsZeroIfTheNumberIsTooSmall) {
  expectValues({{"1e-46", 0.F},
                {"1e-999999999999999999999", 0.F},
                {"-1e-50", 0.F},
                {"0.0001e-45", 0.F},
                {"1000e-100", 0.F},
                {"1e-9223372036854775808", 0.F}});
}

TEST(FloatValueTest, IsZeroForZeroWithAnyExponent) {
  expectValues({{"0e99", 0.F}, {"0.000e999999999999999999999", 0.F}, {"0e-99", 0.F}});
}

TEST(FloatValueTest, RoundsToTheNearestFloatAtTheLimitsOfTheRange) {
  expectValues({{"3.40282346638528859811704183484516925440e38", std::numeric_limits<float>::max()},
                {"1.17549435e-38", std::numeric_limits<float>::min()},
                {"1e-45", std::numeric_limits<float>::denorm_min()},
                {"1.4e-45", std::numeric_limits<float>::denorm_min()},
                {"1e-40", 1e-40F}});
}

TEST(FloatValueTest, RoundsOnceToSinglePrecision) {
  // The first number is just above the midpoint between 1 and the next float. The second is just
  // below the midpoint. A conversion to double would round both numbers to the midpoint.
  expectValues({{"1.000000059604644775390625000000000000001", 1.00000012F},
                {"1.00000005960464477539062", 1.F},
                {"0.1", 0.1F}});
}

TEST(FloatValueTest, ReadsAnyNumberOfDigits) {
  const std::string zeros(5000, '0');
  EXPECT_EQ(floatValue("1" + zeros), kInfinity);
  EXPECT_EQ(floatValue("-1" + zeros), -kInfinity);
  EXPECT_EQ(floatValue("1" + zeros + "e-5000"), 1.F);
  EXPECT_EQ(floatValue("0." + zeros + "1"), 0.F);
  EXPECT_EQ(floatValue("0." + zeros + "1e5001"), 1.F);
  EXPECT_EQ(floatValue(zeros + "2.5" + zeros), 2.5F);
  EXPECT_EQ(floatValue("1." + std::string(5000, '9')), 2.F);
}

/// Sets the global C++ locale to one with a decimal comma. The destructor restores the previous
/// global C++ locale and resets the locale of the C library.
class CommaLocale : NonCopyable {
 public:
  CommaLocale() : previousLocale_(std::locale::global(std::locale(std::locale(), new Comma))) {}
  ~CommaLocale() {
    std::locale::global(previousLocale_);
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
  }

  // Sets the locale of the C library to a German one. Builds the locale if the system does not
  // have it. Returns false on failure.
  static bool setGermanLocaleOfCLibrary() {
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) {
      const std::string folder = testing::TempDir();
      const std::string command =
          "localedef -i de_DE -f UTF-8 '" + folder + "de_DE.UTF-8' >/dev/null 2>&1";
      if (std::system(command.c_str()) == -1) {
        return false;
      }
      setenv("LOCPATH", folder.c_str(), 1);
      std::setlocale(LC_ALL, "de_DE.UTF-8");
    }
    return std::string_view(std::localeconv()->decimal_point) == ",";
  }

 private:
  class Comma final : public std::numpunct<char> {
    [[nodiscard]] char do_decimal_point() const override { return ','; }
  };
  std::locale previousLocale_;
};

TEST(FloatValueTest, DoesNotDependOnTheGlobalCppLocale) {
  const CommaLocale locale;
  expectValues({{"1.5", 1.5F}, {"1,5", 1.F}});
}

TEST(FloatValueTest, DoesNotDependOnTheLocaleOfTheCLibrary) {
  const CommaLocale locale;
  if (!CommaLocale::setGermanLocaleOfCLibrary()) {
    GTEST_SKIP() << "no locale with a decimal comma is available";
  }
  ASSERT_EQ(std::strtof("1,5", nullptr), 1.5F);
  expectValues({{"1.5", 1.5F}, {"1,5", 1.F}, {"1.000,5", 1.F}});
}

}  // namespace
}  // namespace vel::test
