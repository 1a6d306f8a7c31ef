// Tests the file to which `launchscreen show` appends each recorded analytics event.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <vector>

#include "Host/Command.h"
#include "Host/Show/EventsFile.h"

namespace vel::host {
namespace {

class EventsFileTest : public testing::Test {
 protected:
  EventsFileTest() { std::filesystem::remove(path); }
  ~EventsFileTest() override { std::filesystem::remove(path); }

  [[nodiscard]] std::vector<std::string> lines() const {
    std::ifstream file(path);
    std::vector<std::string> fileLines;
    for (std::string line; std::getline(file, line);) {
      fileLines.push_back(line);
    }
    return fileLines;
  }

  std::string path = testing::TempDir() + "EventsFileTest." + std::to_string(getpid());
};

TEST_F(EventsFileTest, LineIsAJsonObjectWithEventSecondsAndUtcTime) {
  ASSERT_TRUE(EventsFile(path).append("launch_end", 5.6014));
  ASSERT_EQ(lines().size(), 1U);
  const auto event = nlohmann::json::parse(lines()[0]);
  EXPECT_EQ(event.size(), 3U);
  EXPECT_EQ(event["event"], "launch_end");
  EXPECT_EQ(event["seconds"], 5.601);
  EXPECT_THAT(event["time"].get<std::string>(),
              testing::MatchesRegex(R"(....-..-..T..:..:..\....Z)"));
}

TEST_F(EventsFileTest, ExistingLinesStay) {
  std::ofstream(path) << "{}\n";
  ASSERT_TRUE(EventsFile(path).append("a", 1));
  EventsFile file(path);
  ASSERT_TRUE(file.append("b", 2));
  ASSERT_TRUE(file.append("c", 3));
  EXPECT_THAT(lines(),
              testing::ElementsAre("{}", testing::HasSubstr("\"a\""), testing::HasSubstr("\"b\""),
                                   testing::HasSubstr("\"c\"")));
}

TEST_F(EventsFileTest, EventIsWrittenBeforeTheFileIsClosed) {
  EventsFile file(path);
  ASSERT_TRUE(file.append("a", 1));
  EXPECT_EQ(lines().size(), 1U);
}

TEST_F(EventsFileTest, AnyNameIsWrittenOnOneLine) {
  EventsFile file(path);
  ASSERT_TRUE(file.append("a\nb\"c\xff", 1));
  ASSERT_EQ(lines().size(), 1U);
  // The invalid byte FF becomes U+FFFD, the replacement character.
  EXPECT_EQ(nlohmann::json::parse(lines()[0])["event"], "a\nb\"c\xef\xbf\xbd");
}

TEST_F(EventsFileTest, ConstructorThrowsUsageErrorIfTheFileCannotBeOpened) {
  try {
    EventsFile("/nonexistent/events");
    FAIL() << "the file was opened";
  } catch (const UsageError& error) {
    EXPECT_STREQ(error.what(), "--events: /nonexistent/events: No such file or directory");
  }
}

TEST_F(EventsFileTest, AppendFailsOnAFullDisk) {
  EXPECT_FALSE(EventsFile("/dev/full").append("a", 1));
}

}  // namespace
}  // namespace vel::host
