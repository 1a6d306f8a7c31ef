// Tests of vel_request and vel_request_json.
#include <cmath>
#include <limits>
#include <string_view>

#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"
#include "Tests/Bindings/CScreen.h"

namespace vel::test {
namespace {

class CRequestTest : public CBindingTest {
 protected:
  VelStatus request(const char* event, double seconds, const char* mode = nullptr) {
    const VelRequest velRequest = makeRequest(event, seconds, mode);
    return vel_request(screen, &velRequest);
  }
  VelStatus requestJson(std::string_view json) {
    return vel_request_json(screen, json.data(), json.size());
  }
  static const LaunchScreenConfiguration& configuration() {
    return *LaunchScreenConfiguration::defaultConfiguration();
  }
  static std::string event() { return std::string(configuration().nextEventName()->UTF8String()); }
};

TEST_F(CRequestTest, ARequestIsLoadedAndItsStateIsReported) {
  EXPECT_EQ(state(), VEL_STATE_NONE);
  EXPECT_EQ(request("launch_end", 2.5), VEL_OK);
  EXPECT_EQ(state(), VEL_STATE_LOADED);
  EXPECT_EQ(host.callbackLines, (std::vector<std::string>{"state_changed 3"}));  // loaded
  EXPECT_EQ(secondsLeft(), 2.5);
  EXPECT_EQ(event(), "launch_end");
  EXPECT_FALSE(configuration().skipMode());
}

TEST_F(CRequestTest, TheTimeOfARequestIsRoundedToSinglePrecision) {
  EXPECT_EQ(request("launch_end", 0.1), VEL_OK);
  EXPECT_EQ(secondsLeft(), 0.10000000149011612);
}

TEST_F(CRequestTest, SkipModeIsSetOnlyIfTheModeIsSkip) {
  EXPECT_EQ(request("launch_end", 1, "skip"), VEL_OK);
  EXPECT_TRUE(configuration().skipMode());
  for (const char* mode : {"forced", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(request("launch_end", 1, mode), VEL_OK);
    EXPECT_FALSE(configuration().skipMode());
  }
}

TEST_F(CRequestTest, AnUnknownModeIsRefused) {
  for (const char* mode : {"Skip", "", "skip ", "anything"}) {
    EXPECT_EQ(request("launch_end", 1, mode), VEL_INVALID_ARGUMENT);
    EXPECT_STREQ(vel_last_error(), "unknown mode");
  }
  EXPECT_EQ(state(), VEL_STATE_NONE);
}

TEST_F(CRequestTest, ARequestWithoutAnEventIsRefusedAndTheErrorIsTheLogLine) {
  for (const char* missingEvent : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_EQ(request(missingEvent, 1, "skip"), VEL_REFUSED);
    EXPECT_STREQ(vel_last_error(),
                 "LaunchScreenManager (-[LaunchScreenManager parseParameters:]): "
                 "Next event name is nil or empty!");
  }
  EXPECT_EQ(host.log.size(), 2u);
  EXPECT_EQ(state(), VEL_STATE_NONE);
  EXPECT_TRUE(configuration().skipMode());  // the library has read the mode before the event
}

TEST_F(CRequestTest, ATimeOfZeroIsRefused) {
  EXPECT_EQ(request("launch_end", 0), VEL_REFUSED);
  EXPECT_NE(std::string(vel_last_error()).find("Max duration time is nil or empty!"),
            std::string::npos);
  EXPECT_EQ(request("launch_end", 1e-60), VEL_REFUSED);  // 0 in single precision
  EXPECT_EQ(state(), VEL_STATE_NONE);
}

TEST_F(CRequestTest, ANegativeTimeIsRefusedAndChangesNothing) {
  ASSERT_EQ(request("launch_end", 3), VEL_OK);
  host.callbackLines.clear();
  EXPECT_EQ(request("other_end", -1, "skip"), VEL_REFUSED);
  EXPECT_STREQ(vel_last_error(), "the time is negative");
  for (const char* time : {"-7", "-7.5", "\"-7\""}) {
    EXPECT_EQ(
        requestJson(std::string(R"({"event": "other_end", "max_duration_time": )") + time + "}"),
        VEL_REFUSED)
        << time;
  }
  EXPECT_TRUE(host.callbackLines.empty());
  EXPECT_EQ(state(), VEL_STATE_LOADED);
  EXPECT_EQ(secondsLeft(), 3);
  EXPECT_EQ(event(), "launch_end");
  EXPECT_FALSE(configuration().skipMode());
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_OK);
}

TEST_F(CRequestTest, AnEventWithAZeroByteIsRefusedAndChangesNothing) {
  ASSERT_EQ(request("launch_end", 3), VEL_OK);
  EXPECT_EQ(requestJson(R"({"event": "other\u0000end", "max_duration_time": 5, "mode": "skip"})"),
            VEL_INVALID_ARGUMENT);
  EXPECT_STREQ(vel_last_error(), "the event contains a zero byte");
  EXPECT_EQ(event(), "launch_end");
  EXPECT_EQ(secondsLeft(), 3);
  EXPECT_FALSE(configuration().skipMode());
}

TEST_F(CRequestTest, ATimeCanBeInfiniteButNotNaN) {
  EXPECT_EQ(request("launch_end", std::nan("")), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(state(), VEL_STATE_NONE);
  EXPECT_EQ(request("launch_end", 1e300), VEL_OK);  // infinity in single precision
  EXPECT_EQ(secondsLeft(), std::numeric_limits<double>::infinity());
}

TEST_F(CRequestTest, ANullOrTooSmallVelRequestIsRefused) {
  VelRequest tooSmallRequest = makeRequest("launch_end", 1);
  tooSmallRequest.size = sizeof tooSmallRequest - 1;
  EXPECT_EQ(vel_request(screen, &tooSmallRequest), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(vel_request(screen, nullptr), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(state(), VEL_STATE_NONE);
}

TEST_F(CRequestTest, ARequestIsNotReadWhileALaunchScreenIsShown) {
  for (const int contentController : {0, 1}) {
    VelCreateOptions options = virtualTimeOptions(&callbacks);
    options.content_controller = contentController;
    createAgain(options);
    present(VEL_PRESENT_EMBEDDED, 5);
    host.callbackLines.clear();
    EXPECT_EQ(request("another_end", 9), VEL_STILL_UP);
    EXPECT_EQ(request("", 9), VEL_STILL_UP);
    EXPECT_EQ(secondsLeft(), 5);
    EXPECT_TRUE(host.callbackLines.empty());
    EXPECT_EQ(event(), "launch_end");
  }
}

TEST_F(CRequestTest, ModeEventAndTimeAreReadFromJson) {
  EXPECT_EQ(requestJson(R"({"mode": "skip", "event": "launch_end", "max_duration_time": 3})"),
            VEL_OK)
      << vel_last_error();
  EXPECT_TRUE(configuration().skipMode());
  EXPECT_EQ(event(), "launch_end");
  EXPECT_EQ(secondsLeft(), 3);
}

TEST_F(CRequestTest, EveryJsonModeOtherThanSkipMeansForcedMode) {
  for (const char* mode : {"forced", "Skip", "", "anything"}) {
    EXPECT_EQ(requestJson(std::string(R"({"event": "e", "max_duration_time": 1, "mode": ")") +
                          mode + "\"}"),
              VEL_OK);
    EXPECT_FALSE(configuration().skipMode()) << mode;
  }
}

TEST_F(CRequestTest, AJsonTimeCanBeAStringOrANumberOfAnyKind) {
  EXPECT_EQ(requestJson(R"({"event": "e", "max_duration_time": " 2.5 s"})"), VEL_OK);
  EXPECT_EQ(secondsLeft(), 2.5);
  EXPECT_EQ(requestJson(R"({"event": "e", "max_duration_time": 25e-1})"), VEL_OK);
  EXPECT_EQ(secondsLeft(), 2.5);
  EXPECT_EQ(requestJson(R"({"event": "e", "max_duration_time": 18446744073709551615})"), VEL_OK);
  EXPECT_EQ(secondsLeft(), 18446744073709551616.0);
}

TEST_F(CRequestTest, AJsonValueOfTheWrongTypeCountsAsMissing) {
  for (const char* event :
       {"null", "true", "3", "[\"launch_end\"]", "{\"event\": \"launch_end\"}"}) {
    EXPECT_EQ(requestJson(std::string(R"({"max_duration_time": 1, "event": )") + event + "}"),
              VEL_REFUSED)
        << event;
  }
  for (const char* time : {"null", "[1]", "{\"max_duration_time\": 1}"}) {
    EXPECT_EQ(requestJson(std::string(R"({"event": "e", "max_duration_time": )") + time + "}"),
              VEL_REFUSED)
        << time;
  }
  EXPECT_EQ(requestJson(R"({"mode": ["skip"], "event": "e", "max_duration_time": 1})"), VEL_OK);
  EXPECT_FALSE(configuration().skipMode());
}

TEST_F(CRequestTest, AJsonTimeStringWithoutANumberIsRefused) {
  EXPECT_EQ(requestJson(R"({"event": "e", "max_duration_time": "soon"})"), VEL_REFUSED);
}

TEST_F(CRequestTest, AnEmptyJsonObjectIsRefused) { EXPECT_EQ(requestJson("{}"), VEL_REFUSED); }

TEST_F(CRequestTest, TheJsonTimeTrueMeansOneSecondAndFalseMeansZero) {
  EXPECT_EQ(requestJson(R"({"event": "e", "max_duration_time": true})"), VEL_OK);
  EXPECT_EQ(secondsLeft(), 1);
  EXPECT_EQ(requestJson(R"({"event": "e", "max_duration_time": false})"), VEL_REFUSED);
}

TEST_F(CRequestTest, UnknownJsonMembersAreIgnored) {
  EXPECT_EQ(requestJson(R"({"x": {"event": "inner", "y": [{"event": "deeper"}, 1, null]},
                            "event": "outer", "z": [[], {}], "max_duration_time": 1})"),
            VEL_OK);
  EXPECT_EQ(event(), "outer");
}

TEST_F(CRequestTest, TextThatIsNotAJsonObjectIsRefused) {
  for (const char* json : {"",
                           " ",
                           "[]",
                           "[{}]",
                           "\"event\"",
                           "1",
                           "null",
                           "true",
                           "{",
                           "}",
                           "{]",
                           "{} {}",
                           "{}x",
                           "{\"event\"}",
                           "{'event': 1}",
                           "{\"event\": tru}",
                           "{\"a\": 1,}",
                           "{\"a\": 01}",
                           "{\"a\": 1e999}",
                           "{\"a\": \"\n\"}"}) {
    EXPECT_EQ(requestJson(json), VEL_INVALID_ARGUMENT) << json;
    EXPECT_STRNE(vel_last_error(), "") << json;
  }
  EXPECT_EQ(state(), VEL_STATE_NONE);
  EXPECT_EQ(vel_request_json(screen, nullptr, 0), VEL_INVALID_ARGUMENT);
}

TEST_F(CRequestTest, OnlyTheGivenLengthOfTheJsonIsRead) {
  constexpr std::string_view kJson = R"({"event": "e", "max_duration_time": 1} and the rest)";
  EXPECT_EQ(requestJson(kJson.substr(0, kJson.find('}') + 1)), VEL_OK);
  EXPECT_EQ(requestJson(kJson), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(requestJson(kJson.substr(0, 10)), VEL_INVALID_ARGUMENT);
}

TEST_F(CRequestTest, InvalidUtf8IsNotJson) {
  for (const char* bytes :
       {"\x80", "\xc3", "\xc0\xaf", "\xed\xa0\x80", "\xf5\x80\x80\x80", "\xff"}) {
    EXPECT_EQ(requestJson(std::string(R"({"max_duration_time": 1, "event": ")") + bytes + "\"}"),
              VEL_INVALID_ARGUMENT);
  }
  EXPECT_EQ(requestJson("{\"max_duration_time\": 1, \"event\": \"\xc3\xa9\xf0\x9f\x8e\xae\"}"),
            VEL_OK);
  EXPECT_EQ(event(), "\xc3\xa9\xf0\x9f\x8e\xae");
}

TEST_F(CRequestTest, DeepNestingIsAccepted) {
  constexpr std::size_t kDepth = 200'000;
  std::string lists = R"({"event": "e", "max_duration_time": 1, "x": )" + std::string(kDepth, '[');
  EXPECT_EQ(requestJson(lists), VEL_INVALID_ARGUMENT);  // the lists are not closed
  EXPECT_EQ(requestJson(lists + std::string(kDepth, ']') + "}"), VEL_OK) << vel_last_error();
  std::string objects;
  for (std::size_t depth = 0; depth < kDepth; ++depth) {
    objects += "{\"event\":";
  }
  objects += "0" + std::string(kDepth, '}');
  EXPECT_EQ(requestJson(objects), VEL_REFUSED);  // valid JSON, but the event is not a string
}

}  // namespace
}  // namespace vel::test
