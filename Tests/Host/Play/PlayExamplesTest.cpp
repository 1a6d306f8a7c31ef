// `launchscreen play` plays a scenario and prints a trace. These tests play each scenario in
// Examples/scenarios and compare the trace with the expected trace in golden/. The expected trace
// of SCENARIO.json is SCENARIO--SUMMARY.jsonl. SUMMARY says what the trace shows.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Host/Play/PlayCommand.h"

namespace vel::host {
namespace {

namespace fs = std::filesystem;

// CTest runs the tests in the root folder of the project.
constexpr const char* kScenarios = "Examples/scenarios";
constexpr const char* kExpectedTraces = "Tests/Host/Play/golden";

// Returns the names of the files with the extension `extension`. The names are sorted and do not
// include the extension.
std::vector<std::string> fileNamesIn(const fs::path& folder, std::string_view extension) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() == extension) {
      names.push_back(entry.path().stem().string());
    }
  }
  std::ranges::sort(names);
  return names;
}

std::string readFile(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

std::string scenarioNameOf(const std::string& traceName) {
  return traceName.substr(0, traceName.find("--"));
}

class PlayExamplesTest : public testing::TestWithParam<std::string> {};

TEST_P(PlayExamplesTest, PlayPrintsTheExpectedTrace) {
  const std::string expected = readFile(fs::path(kExpectedTraces) / (GetParam() + ".jsonl"));
  const std::string scenarioFile =
      (fs::path(kScenarios) / (scenarioNameOf(GetParam()) + ".json")).string();
  const int expectedStatus =
      expected.find("\"fatal\":") == std::string::npos ? kExitSuccess : kExitPlayAborted;
  // The second play fails if the first play has left state in the process.
  for (int round = 0; round < 2; ++round) {
    std::istringstream input;
    std::ostringstream trace;
    EXPECT_EQ(play({.file = scenarioFile}, input, trace), expectedStatus);
    EXPECT_EQ(trace.str(), expected);
  }
}

std::string testNameOf(const testing::TestParamInfo<std::string>& testInfo) {
  std::string name = scenarioNameOf(testInfo.param);
  std::ranges::replace_if(
      name, [](char character) { return std::isalnum(character) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, PlayExamplesTest,
                         testing::ValuesIn(fileNamesIn(kExpectedTraces, ".jsonl")), testNameOf);

TEST(PlayExampleListTest, EachScenarioHasOneExpectedTrace) {
  std::vector<std::string> scenariosWithTraces;
  std::ranges::transform(fileNamesIn(kExpectedTraces, ".jsonl"),
                         std::back_inserter(scenariosWithTraces), &scenarioNameOf);
  EXPECT_EQ(scenariosWithTraces, fileNamesIn(kScenarios, ".json"));
}

TEST(PlayExampleListTest, ReadmeListsEachScenario) {
  const std::string readme = readFile(fs::path(kScenarios) / "README.md");
  for (const std::string& scenario : fileNamesIn(kScenarios, ".json")) {
    EXPECT_THAT(readme, testing::HasSubstr("\n| [" + scenario + "](" + scenario + ".json) |"));
  }
}

}  // namespace
}  // namespace vel::host
