#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "HostInterfaces/MetricsCenter.h"
#include "Platform/Foundation/NSLog.h"

namespace vel::test {
namespace {

class MetricsCenterTest : public testing::Test {
 protected:
  MetricsCenterTest() {
    setNSLogSink([this](std::string_view line) { logLines.emplace_back(line); });
    MetricsCenter::setSink([this](std::string_view event) { events.emplace_back(event); });
  }
  ~MetricsCenterTest() override {
    MetricsCenter::setSink(nullptr);
    setNSLogSink(nullptr);
  }

  std::vector<std::string> logLines;
  std::vector<std::string> events;
};

TEST_F(MetricsCenterTest, LogEventPassesTheEventToTheSinkAndNotToTheLog) {
  MetricsCenter::logEvent(NSString::stringWithUTF8String("launch_end"));
  EXPECT_EQ(events, std::vector<std::string>{"launch_end"});
  EXPECT_TRUE(logLines.empty());
}

TEST_F(MetricsCenterTest, LogEventPassesNullToTheSinkAsAnEmptyString) {
  MetricsCenter::logEvent(nullptr);
  EXPECT_EQ(events, std::vector<std::string>{""});
}

TEST_F(MetricsCenterTest, LogEventWritesToTheLogIfThereIsNoSink) {
  MetricsCenter::setSink(nullptr);
  MetricsCenter::logEvent(NSString::stringWithUTF8String("launch_end"));
  MetricsCenter::logEvent(nullptr);
  EXPECT_TRUE(events.empty());
  EXPECT_EQ(logLines,
            (std::vector<std::string>{"MetricsCenter (+[MetricsCenter logEvent:]): launch_end",
                                      "MetricsCenter (+[MetricsCenter logEvent:]): "}));
}

TEST_F(MetricsCenterTest, SetSinkReturnsThePreviousSink) {
  const MetricsCenter::Sink previousSink = MetricsCenter::setSink(nullptr);
  previousSink("launch_end");
  EXPECT_EQ(events, std::vector<std::string>{"launch_end"});
}

TEST_F(MetricsCenterTest, ASinkMayRemoveItself) {
  MetricsCenter::setSink([this](std::string_view event) {
    MetricsCenter::setSink(nullptr);
    events.emplace_back(event);
  });
  MetricsCenter::logEvent(NSString::stringWithUTF8String("last"));
  EXPECT_EQ(events, std::vector<std::string>{"last"});
}

}  // namespace
}  // namespace vel::test
