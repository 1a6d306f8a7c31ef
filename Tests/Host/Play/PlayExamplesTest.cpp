// Each script of Examples/scenarios gives the trace that is kept for it: the one in golden/ whose
// name begins with the script's and goes on, after two dashes, with what the trace shows.
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

fs::path root() {
  return fs::path(__FILE__).parent_path().parent_path().parent_path().parent_path();
}
fs::path scripts() { return root() / "Examples/scenarios"; }
fs::path traces() { return root() / "Tests/Host/Play/golden"; }

// The names of a folder's files of one kind, without it, sorted.
std::vector<std::string> namesIn(const fs::path& folder, std::string_view extension) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() == extension) {
      names.push_back(entry.path().stem().string());
    }
  }
  std::ranges::sort(names);
  return names;
}

std::string contents(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

std::string scriptOf(const std::string& trace) { return trace.substr(0, trace.find("--")); }

class PlayExamplesTest : public testing::TestWithParam<std::string> {};

TEST_P(PlayExamplesTest, GivesItsTraceEveryTime) {
  const std::string kept = contents(traces() / (GetParam() + ".jsonl"));
  const std::string script = (scripts() / (scriptOf(GetParam()) + ".json")).string();
  const int status = kept.find("\"fatal\":") == std::string::npos ? kExitSuccess : kExitPlayAborted;
  for (int time = 0; time < 2; ++time) {
    std::istringstream none;
    std::ostringstream trace;
    EXPECT_EQ(play({.file = script}, none, trace), status);
    EXPECT_EQ(trace.str(), kept);
  }
}

std::string testNameOf(const testing::TestParamInfo<std::string>& info) {
  std::string name = scriptOf(info.param);
  std::ranges::replace_if(
      name, [](char character) { return std::isalnum(character) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Scripts, PlayExamplesTest, testing::ValuesIn(namesIn(traces(), ".jsonl")),
                         testNameOf);

TEST(PlayExampleListTest, EachScriptHasOneTrace) {
  std::vector<std::string> played;
  std::ranges::transform(namesIn(traces(), ".jsonl"), std::back_inserter(played), &scriptOf);
  EXPECT_EQ(played, namesIn(scripts(), ".json"));
}

TEST(PlayExampleListTest, EachScriptIsInTheListOfThem) {
  const std::string list = contents(scripts() / "README.md");
  for (const std::string& script : namesIn(scripts(), ".json")) {
    EXPECT_THAT(list, testing::HasSubstr("\n| [" + script + "](" + script + ".json) |"));
  }
}

}  // namespace
}  // namespace vel::host
