// The exploration finds what is wrong, and says it as a scenario.
#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <map>

#include "Host/Play/Scenario/ScenarioReader.h"
#include "Tests/Exploration/Explorer.h"
#include "Tests/Exploration/Invariants.h"
#include "Tests/Exploration/StateKey.h"
#include "Tests/Exploration/StyleExceptions.h"

namespace vel::exploration {
namespace {

using When = Invariant::When;

const Setting& bare() { return settings().front(); }

Script scriptOf(const std::vector<std::string_view>& names) {
  Script script;
  for (const std::string_view name : names) {
    script.push_back(actionNamed(name));
  }
  return script;
}

std::string keyAfter(const Theatre& theatre, const Script& script) {
  Stage stage(theatre, {});
  for (const std::uint8_t action : script) {
    stage.perform(action);
  }
  return stateKey(stage);
}

std::string keyAfter(const std::vector<std::string_view>& names) {
  return keyAfter(Theatre(bare()), scriptOf(names));
}

// The script with one more action; every action in turn.
std::vector<Script> continuationsOf(const Script& script) {
  std::vector<Script> continuations(actions().size(), script);
  for (std::size_t action = 0; action < actions().size(); ++action) {
    continuations[action].push_back(static_cast<std::uint8_t>(action));
  }
  return continuations;
}

// What is false

Exploration exploreFor(When when, std::string (*fault)(const Stage&), std::size_t depth) {
  const Invariant falsehood[] = {{"a falsehood", when, fault}};
  return explore(bare(), falsehood, depth);
}

TEST(ExplorationTest, FindsTheShortestScriptThatBreaksAnInvariantOfStates) {
  const Exploration found = exploreFor(
      When::State,
      [](const Stage& stage) -> std::string {
        return stage.hostWindows().front()->styleMask() == 1 ? "controls are taken" : "";
      },
      4);
  ASSERT_TRUE(found.finding);
  EXPECT_EQ(found.finding->violation, "a falsehood: controls are taken");
  EXPECT_EQ(found.finding->script, scriptOf({"request", "present embedded"}));
}

TEST(ExplorationTest, FindsTheShortestScriptThatBreaksAnInvariantOfMoments) {
  const Exploration found = exploreFor(
      When::Moment,
      [](const Stage& stage) -> std::string {
        const bool ticks =
            stage.event() != nullptr && std::holds_alternative<host::trace::Ticked>(*stage.event());
        return ticks && stage.manager()->content() != nullptr ? "time passes" : "";
      },
      4);
  ASSERT_TRUE(found.finding);
  EXPECT_EQ(found.finding->script,
            scriptOf({"request", "content view", "present embedded", "tick"}));
}

TEST(ExplorationTest, FindsTheShortestScriptThatBreaksAnInvariantOfTheEnd) {
  const Exploration found = exploreFor(
      When::End,
      [](const Stage& stage) -> std::string {
        return stage.history().events > 0 ? "an event was recorded" : "";
      },
      4);
  ASSERT_TRUE(found.finding);
  EXPECT_EQ(found.finding->script,
            scriptOf({"request", "content view", "dismiss by the manager", "deactivate"}));
}

TEST(ExplorationTest, PrintsWhatItFindsAsAScenario) {
  const Exploration found = exploreFor(
      When::State,
      [](const Stage& stage) -> std::string { return stage.now().unfocused ? "away" : ""; }, 4);
  ASSERT_TRUE(found.finding);
  const host::Scenario scenario = host::readScenario(scenarioText(bare(), found.finding->script));
  std::vector<std::string_view> steps;
  std::ranges::transform(scenario.steps, std::back_inserter(steps), &host::Step::name);
  EXPECT_THAT(steps, testing::ElementsAre("request", "contentView", "present", "makeKey"));
  EXPECT_EQ(scenario.host.windows.size(), 3U);
  EXPECT_EQ(scenario.end, 5 * kNanosecondsPerSecond);
}

TEST(ExplorationTest, PrintsEveryActionAsAScenarioTakesIt) {
  Script all(actions().size());
  for (std::size_t place = 0; place < all.size(); ++place) {
    all[place] = static_cast<std::uint8_t>(place);
  }
  for (const Setting& setting : settings()) {
    EXPECT_GE(host::readScenario(scenarioText(setting, all)).steps.size(), actions().size());
  }
}

// What is counted

TEST(ExplorationTest, GoesOnFromEachStateOnce) {
  // Nothing is a change before the first request but the key window, the time left, and the end.
  const Exploration found = explore(bare(), invariants(), 1);
  EXPECT_EQ(found.sequences, 1 + actions().size());
  EXPECT_EQ(found.depth, 1U);
  const Exploration further = explore(bare(), invariants(), 2);
  EXPECT_EQ(further.sequences, found.sequences + (found.states - 1) * actions().size());
}

// Equal states

TEST(StateKeyTest, IsTheSameWhereNothingHasChanged) {
  EXPECT_EQ(keyAfter({}), keyAfter({"key to the player"}));
  EXPECT_EQ(keyAfter({}), keyAfter({"tick", "half a second"}));
  EXPECT_EQ(keyAfter({"request", "content view"}),
            keyAfter({"request", "content view", "content view"}));
}

TEST(StateKeyTest, DiffersWhereWhatComesNextDoes) {
  EXPECT_NE(keyAfter({"request"}), keyAfter({"request in skip mode"}));
  EXPECT_NE(keyAfter({"request"}), keyAfter({"request", "content view"}));
  // The key window is the same, and the one that it passes on to is not.
  EXPECT_NE(keyAfter({"key to another window", "key to the player"}),
            keyAfter({"consent window loses key", "key to the player"}));
  // A refused dismissal leaves nothing but delayed work.
  EXPECT_NE(keyAfter({"request", "content view"}),
            keyAfter({"request", "content view", "dismiss by the controller"}));
}

class SettingTest : public testing::TestWithParam<std::size_t> {};

// Of what the key leaves out, nothing matters.
TEST_P(SettingTest, StatesWithTheSameKeyGoOnAlike) {
  const Theatre theatre(settings()[GetParam()]);
  std::map<std::string, Script> firstWith;
  std::vector<Script> scripts{{}};
  for (std::size_t place = 0; place < scripts.size(); ++place) {
    const Script script = scripts[place];
    const auto [known, isNew] = firstWith.emplace(keyAfter(theatre, script), script);
    const std::vector<Script> continuations = continuationsOf(script);
    if (script.size() < 2) {
      scripts.insert(scripts.end(), continuations.begin(), continuations.end());
    }
    for (std::size_t action = 0; !isNew && action < actions().size(); ++action) {
      EXPECT_EQ(keyAfter(theatre, continuations[action]),
                keyAfter(theatre, continuationsOf(known->second)[action]))
          << scenarioText(theatre.setting, continuations[action]);
    }
  }
  EXPECT_LT(firstWith.size(), scripts.size());
}

INSTANTIATE_TEST_SUITE_P(Settings, SettingTest, testing::Range(std::size_t{0}, settings().size()));

// Where a window does not get its style back

struct Example {
  std::string_view exception;
  std::vector<std::string_view> script;
  /// The windows' styles after it; their host gave them 15, 7 and 1.
  std::vector<NSWindowStyleMask> left;
};

constexpr NSWindowStyleMask kEveryBit = ~NSWindowStyleMask{0};

const Example kExamples[] = {
    {"an embedded cover presented once more, as a window of its own",
     {"request", "present embedded", "present as a sheet", "dismiss by the manager",
      "half a second"},
     {1, 7, 1}},
    {"an embedded cover presented once more, over another window",
     {"request", "present embedded", "present embedded elsewhere", "dismiss by the manager",
      "half a second", "half a second"},
     {1, 15, 1}},
    {"a controller's second window",
     {"request", "present embedded", "close the player", "present embedded elsewhere",
      "dismiss by the manager", "half a second", "half a second"},
     {15, 15, 1}},
    {"a second cover over a covered window",
     {"request", "present embedded", "request", "present embedded", "close the player"},
     {1, 7, 1}},
    {"a cover over a closed window, given back by another controller",
     {"request", "close the player", "present embedded", "request", "dismiss by the controller",
      "half a second", "half a second"},
     {kEveryBit, 7, 1}},
};

class StyleExceptionTest : public testing::TestWithParam<std::size_t> {};

TEST_P(StyleExceptionTest, LeavesTheWindowsWithThatStyle) {
  const Example& example = kExamples[GetParam()];
  const StyleException& exception = styleExceptions()[GetParam()];
  ASSERT_EQ(exception.name, example.exception);
  const Theatre theatre(bare());
  Stage stage(theatre, invariants());
  for (const std::uint8_t action : scriptOf(example.script)) {
    stage.perform(action);
  }
  EXPECT_EQ(stage.violation(), "");
  EXPECT_TRUE(isUncovered(stage));
  EXPECT_TRUE(stage.history().styleExceptions.test(GetParam()));
  std::vector<NSWindowStyleMask> left;
  std::ranges::transform(stage.hostWindows(), std::back_inserter(left),
                         [](const auto& window) { return window->styleMask(); });
  EXPECT_EQ(left, example.left);
  EXPECT_TRUE(std::ranges::any_of(stage.hostWindows(), [&](const auto& window) {
    return window->styleMask() != stage.givenStyle(*window) && exception.leaves(stage, *window);
  }));
}

INSTANTIATE_TEST_SUITE_P(Exceptions, StyleExceptionTest,
                         testing::Range(std::size_t{0}, styleExceptions().size()));

TEST(StyleExceptionListTest, HasAnExampleOfEach) {
  EXPECT_EQ(std::size(kExamples), styleExceptions().size());
}

}  // namespace
}  // namespace vel::exploration
