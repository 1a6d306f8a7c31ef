// How the parameters of a content request change the default configuration.
#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>

#include "Platform/Foundation/NSNumber.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

constexpr auto kNoParameters =
    "LaunchScreenManager (-[LaunchScreenManager parseParameters:]): "
    "Content request parameters is nil or empty!";
constexpr auto kNoEvent =
    "LaunchScreenManager (-[LaunchScreenManager parseParameters:]): "
    "Next event name is nil or empty!";
constexpr auto kNoDuration =
    "LaunchScreenManager (-[LaunchScreenManager parseParameters:]): "
    "Max duration time is nil or empty!";

/// A value that is neither a string nor a number.
class OtherValue final : public Class<OtherValue, "OtherValue"> {};

Strong<NSString> text(std::string_view value) { return NSString::stringWithUTF8String(value); }
Strong<NSNumber> number(double value) { return NSNumber::numberWithDouble(value); }

class RequestParsingTest : public LaunchScreenTest {
 protected:
  bool parse(NSDictionary::Entries entries) {
    return manager->parseParameters(NSDictionary::dictionaryWithEntries(std::move(entries)));
  }
  /// Parses parameters with an event and `duration`. Omits a null duration.
  bool parseDuration(const Strong<NSObjectProtocol>& duration) {
    NSDictionary::Entries entries{{"event", text("e")}};
    if (duration != nullptr) {
      entries["max_duration_time"] = duration;
    }
    return parse(std::move(entries));
  }
  /// Parses parameters with an event, a duration and `mode`. Omits a null mode. Returns the new
  /// skip mode, and checks that it does not depend on the previous skip mode.
  bool skipModeFrom(const Strong<NSObjectProtocol>& mode) {
    NSDictionary::Entries entries{{"event", text("e")}, {"max_duration_time", number(5)}};
    if (mode != nullptr) {
      entries["mode"] = mode;
    }
    bool results[2] = {};
    for (const bool previousSkipMode : {false, true}) {
      configuration().setSkipMode(previousSkipMode);
      EXPECT_TRUE(parse(entries));
      results[previousSkipMode ? 1 : 0] = configuration().skipMode();
    }
    EXPECT_EQ(results[0], results[1]);
    return results[0];
  }
  [[nodiscard]] std::string_view eventName() const {
    return send(configuration().nextEventName(), &NSString::UTF8String);
  }
};

// Null or empty parameters

TEST_F(RequestParsingTest, NullParametersAreRefusedWithOneLogLine) {
  EXPECT_FALSE(manager->parseParameters(nullptr));
  EXPECT_EQ(platform.log, std::vector<std::string>{kNoParameters});
}

TEST_F(RequestParsingTest, NullParametersDoNotChangeTheConfiguration) {
  configuration().setSkipMode(true);
  configuration().setNextEventName(text("former"));
  configuration().setExpirationTimeInterval(9.0);
  EXPECT_FALSE(manager->parseParameters(nullptr));
  EXPECT_TRUE(configuration().skipMode());
  EXPECT_EQ(eventName(), "former");
  EXPECT_EQ(configuration().expirationTimeInterval(), 9.0);
}

TEST_F(RequestParsingTest, NullParametersDoNotCreateTheDefaultConfiguration) {
  EXPECT_FALSE(manager->parseParameters(nullptr));
  EXPECT_EQ(sDefaultConfiguration, nullptr);
}

TEST_F(RequestParsingTest, AnEmptyDictionaryClearsTheSkipModeAndIsRefused) {
  configuration().setSkipMode(true);
  EXPECT_FALSE(manager->parseParameters(NSDictionary::dictionary()));
  EXPECT_EQ(platform.log, std::vector<std::string>{kNoEvent});
  EXPECT_FALSE(configuration().skipMode());
}

// The mode

TEST_F(RequestParsingTest, TheModeNamedSkipTurnsTheSkipModeOn) {
  EXPECT_TRUE(skipModeFrom(text("skip")));
}

TEST_F(RequestParsingTest, AMissingModeTurnsTheSkipModeOff) { EXPECT_FALSE(skipModeFrom(nullptr)); }

TEST_F(RequestParsingTest, TheModeNamedForcedTurnsTheSkipModeOff) {
  EXPECT_FALSE(skipModeFrom(text("forced")));
}

TEST_F(RequestParsingTest, AnUnknownModeCountsAsMissing) {
  for (const std::string_view mode : {"Skip", "SKIP", "skip ", " skip", "skipped", "ski", ""}) {
    EXPECT_FALSE(skipModeFrom(text(mode))) << '"' << mode << '"';
  }
}

TEST_F(RequestParsingTest, AModeOfAnotherTypeCountsAsMissing) {
  EXPECT_FALSE(skipModeFrom(number(1)));
  EXPECT_FALSE(skipModeFrom(NSNull::null()));
  EXPECT_FALSE(skipModeFrom(make<OtherValue>()));
}

// The event

TEST_F(RequestParsingTest, ARequestWithoutAnEventIsRefusedButStoresTheSkipMode) {
  configuration().setNextEventName(text("former"));
  configuration().setExpirationTimeInterval(9.0);
  EXPECT_FALSE(parse({{"mode", text("skip")}, {"max_duration_time", number(5)}}));
  EXPECT_EQ(platform.log, std::vector<std::string>{kNoEvent});
  EXPECT_TRUE(configuration().skipMode());
  EXPECT_EQ(eventName(), "former");
  EXPECT_EQ(configuration().expirationTimeInterval(), 9.0);
}

TEST_F(RequestParsingTest, ARequestWithAnEmptyEventIsRefusedButStoresTheSkipMode) {
  configuration().setNextEventName(text("former"));
  EXPECT_FALSE(
      parse({{"mode", text("skip")}, {"event", text("")}, {"max_duration_time", number(5)}}));
  EXPECT_EQ(platform.log, std::vector<std::string>{kNoEvent});
  EXPECT_TRUE(configuration().skipMode());
  EXPECT_EQ(eventName(), "former");
  EXPECT_EQ(configuration().expirationTimeInterval(), 0.0);
}

TEST_F(RequestParsingTest, AnEventOfAnotherTypeCountsAsMissing) {
  const std::initializer_list<Strong<NSObjectProtocol>> events = {
      make<OtherValue>(), number(7), NSNull::null(), NSDictionary::dictionary()};
  for (const auto& event : events) {
    platform.log.clear();
    EXPECT_FALSE(parse({{"event", event}, {"max_duration_time", number(5)}}));
    EXPECT_EQ(platform.log, std::vector<std::string>{kNoEvent}) << event->className();
    EXPECT_EQ(configuration().nextEventName(), nullptr);
  }
}

TEST_F(RequestParsingTest, TheEventIsNotCopied) {
  const auto event = text("launch_end");
  EXPECT_TRUE(parse({{"event", event}, {"max_duration_time", number(5)}}));
  EXPECT_EQ(configuration().nextEventName().get(), event.get());
}

// The duration

TEST_F(RequestParsingTest, ARequestWithoutADurationIsRefusedButStoresModeAndEvent) {
  configuration().setNextEventName(text("former"));
  configuration().setExpirationTimeInterval(9.0);
  EXPECT_FALSE(parse({{"mode", text("skip")}, {"event", text("e")}}));
  EXPECT_EQ(platform.log, std::vector<std::string>{kNoDuration});
  EXPECT_TRUE(configuration().skipMode());
  EXPECT_EQ(eventName(), "e");
  EXPECT_EQ(configuration().expirationTimeInterval(), 9.0);
}

TEST_F(RequestParsingTest, ADurationThatIsZeroOrDoesNotBeginWithANumberIsRefused) {
  // In single precision, 1e-60 is zero.
  const std::initializer_list<Strong<NSObjectProtocol>> durations = {
      number(0),    number(-0.0), number(1e-60), NSNumber::numberWithInteger(0),
      text("0"),    text("-0"),   text("abc"),   text(""),
      text("x5"),   text("nan"),  text("inf"),   text("."),
      text("1e-60")};
  for (const auto& duration : durations) {
    platform.log.clear();
    configuration().setExpirationTimeInterval(9.0);
    EXPECT_FALSE(parseDuration(duration));
    EXPECT_EQ(platform.log, std::vector<std::string>{kNoDuration});
    EXPECT_EQ(configuration().expirationTimeInterval(), 9.0);
  }
}

TEST_F(RequestParsingTest, ADurationOfAnotherTypeCountsAsMissing) {
  const std::initializer_list<Strong<NSObjectProtocol>> durations = {
      make<OtherValue>(), NSNull::null(), NSDictionary::dictionary()};
  for (const auto& duration : durations) {
    platform.log.clear();
    EXPECT_FALSE(parseDuration(duration));
    EXPECT_EQ(platform.log, std::vector<std::string>{kNoDuration}) << duration->className();
    EXPECT_EQ(configuration().expirationTimeInterval(), 0.0);
  }
}

TEST_F(RequestParsingTest, ADurationIsANumberOrTextAndIsRoundedToSinglePrecision) {
  const std::initializer_list<std::pair<Strong<NSObjectProtocol>, double>> durations = {
      {number(5), 5.0},
      {NSNumber::numberWithInteger(5), 5.0},
      {text("5"), 5.0},
      {number(0.3), 0.30000001192092896},
      {text("0.3"), 0.30000001192092896},
      {number(0.1), 0.10000000149011612},
      {text("0.1"), 0.10000000149011612},
      {text("  2.5 seconds"), 2.5},
      {text("1e1"), 10.0},
      {number(-3), -3.0},
      {text("-3"), -3.0},
      {number(std::numeric_limits<double>::infinity()), std::numeric_limits<double>::infinity()},
  };
  for (const auto& [duration, seconds] : durations) {
    EXPECT_TRUE(parseDuration(duration));
    EXPECT_EQ(configuration().expirationTimeInterval(), seconds);
  }
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(RequestParsingTest, TheNumberNaNIsAcceptedAsADuration) {
  EXPECT_TRUE(parseDuration(number(std::numeric_limits<double>::quiet_NaN())));
  EXPECT_TRUE(std::isnan(configuration().expirationTimeInterval()));
  EXPECT_TRUE(platform.log.empty());
}

// Accepted requests

TEST_F(RequestParsingTest, AnAcceptedRequestChangesTheDefaultConfiguration) {
  const auto newConfiguration = LaunchScreenConfiguration::init();
  LaunchScreenConfiguration::setDefaultConfiguration(newConfiguration);
  EXPECT_TRUE(
      parse({{"mode", text("skip")}, {"event", text("e")}, {"max_duration_time", number(5)}}));
  EXPECT_EQ(LaunchScreenConfiguration::defaultConfiguration(), newConfiguration);
  EXPECT_TRUE(newConfiguration->skipMode());
  EXPECT_EQ(newConfiguration->nextEventName()->UTF8String(), "e");
  EXPECT_EQ(newConfiguration->expirationTimeInterval(), 5.0);
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(RequestParsingTest, AnAcceptedRequestCreatesTheDefaultConfigurationIfNecessary) {
  ASSERT_EQ(sDefaultConfiguration, nullptr);
  EXPECT_TRUE(parseDuration(number(5)));
  ASSERT_NE(sDefaultConfiguration, nullptr);
  EXPECT_EQ(sDefaultConfiguration->expirationTimeInterval(), 5.0);
}

TEST_F(RequestParsingTest, ParsingChangesNeitherTheContentNorTheExpirationTimeLeft) {
  EXPECT_TRUE(parseDuration(number(5)));
  EXPECT_EQ(manager->content()->contentRequest(), nullptr);
  EXPECT_EQ(manager->content()->state(), 0u);
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), 0.0);
}

TEST_F(RequestParsingTest, UnknownParametersAreIgnored) {
  EXPECT_TRUE(parse({{"event", text("e")},
                     {"max_duration_time", number(5)},
                     {"skip", text("skip")},
                     {"Mode", text("skip")}}));
  EXPECT_FALSE(configuration().skipMode());
}

}  // namespace
}  // namespace vel::test
