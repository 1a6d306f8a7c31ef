// Compares the trace of each scenario in Examples/scenarios with the expected trace in golden/. The
// trace is what `launchscreen play` prints. The name of the expected trace is the name of the
// scenario, two dashes, and what the trace shows.
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

// Returns the sorted names of the files with this extension, without the extension.
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

// Returns the name of the scenario that belongs to the expected trace with this name.
std::string scenarioOf(const std::string& traceName) {
  return traceName.substr(0, traceName.find("--"));
}

class PlayExamplesTest : public testing::TestWithParam<std::string> {};

TEST_P(PlayExamplesTest, HasTheExpectedTrace) {
  const std::string expected = readFile(fs::path(kExpectedTraces) / (GetParam() + ".jsonl"));
  const std::string scenarioFile =
      (fs::path(kScenarios) / (scenarioOf(GetParam()) + ".json")).string();
  const int status =
      expected.find("\"fatal\":") == std::string::npos ? kExitSuccess : kExitPlayAborted;
  // The second play shows that the first play has left no state in the process.
  for (int round = 0; round < 2; ++round) {
    std::istringstream input;
    std::ostringstream trace;
    EXPECT_EQ(play({.file = scenarioFile}, input, trace), status);
    EXPECT_EQ(trace.str(), expected);
  }
}

std::string testNameOf(const testing::TestParamInfo<std::string>& testInfo) {
  std::string name = scenarioOf(testInfo.param);
  std::ranges::replace_if(
      name, [](char character) { return std::isalnum(character) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, PlayExamplesTest,
                         testing::ValuesIn(fileNamesIn(kExpectedTraces, ".jsonl")), testNameOf);

TEST(PlayExampleListTest, EachScenarioHasOneExpectedTrace) {
  std::vector<std::string> scenariosWithTraces;
  std::ranges::transform(fileNamesIn(kExpectedTraces, ".jsonl"),
                         std::back_inserter(scenariosWithTraces), &scenarioOf);
  EXPECT_EQ(scenariosWithTraces, fileNamesIn(kScenarios, ".json"));
}

TEST(PlayExampleListTest, ReadmeListsEachScenario) {
  const std::string list = readFile(fs::path(kScenarios) / "README.md");
  for (const std::string& scenario : fileNamesIn(kScenarios, ".json")) {
    EXPECT_THAT(list, testing::HasSubstr("\n| [" + scenario + "](" + scenario + ".json) |"));
  }
}

}  // namespace
}  // namespace vel::host
