// The exploration plays scripts and checks invariants, which are statements that must always hold.
// A script is a sequence of actions of the host or the user. A host setup is a host with its
// windows. The finding is the first script that breaks an invariant.
#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <map>

#include "Host/Play/Scenario/ScenarioReader.h"
#include "Tests/Exploration/Explorer.h"
#include "Tests/Exploration/Invariants.h"
#include "Tests/Exploration/KnownWrongStyles.h"
#include "Tests/Exploration/StateFingerprint.h"

namespace vel::exploration {
namespace {

using CheckTime = Invariant::CheckTime;

const HostSetup& hostSetupWithoutContentViewController() { return hostSetups().front(); }

Script scriptOf(const std::vector<std::string_view>& names) {
  Script script;
  for (const std::string_view name : names) {
    script.push_back(indexOfAction(name));
  }
  return script;
}

// Plays the script. Returns the state fingerprint: all values that influence the results of later
// actions.
std::string stateFingerprintAfter(const ParsedHostSetup& parsedHostSetup, const Script& script) {
  ObservedPlay play(parsedHostSetup, {});
  for (const std::uint8_t action : script) {
    play.perform(action);
  }
  return stateFingerprint(play);
}

std::string stateFingerprintAfter(const std::vector<std::string_view>& names) {
  return stateFingerprintAfter(ParsedHostSetup(hostSetupWithoutContentViewController()),
                               scriptOf(names));
}

// Returns every script that extends `script` by one action.
std::vector<Script> continuationsOf(const Script& script) {
  std::vector<Script> continuations(actions().size(), script);
  for (std::size_t action = 0; action < actions().size(); ++action) {
    continuations[action].push_back(static_cast<std::uint8_t>(action));
  }
  return continuations;
}

// Explores with a single invariant, which some scripts break.
Exploration exploreWith(CheckTime checkTime, std::string (*findFault)(const ObservedPlay&),
                        std::size_t depth) {
  const Invariant brokenInvariant[] = {{"a false statement", checkTime, findFault}};
  return explore(hostSetupWithoutContentViewController(), brokenInvariant, depth);
}

TEST(ExplorationTest, FindsTheShortestScriptThatBreaksAnInvariantAfterAnAction) {
  const Exploration exploration = exploreWith(
      CheckTime::AfterAction,
      [](const ObservedPlay& play) -> std::string {
        return play.hostWindows().front()->styleMask() == 1 ? "controls are removed" : "";
      },
      4);
  ASSERT_TRUE(exploration.finding);
  EXPECT_EQ(exploration.finding->violation, "a false statement: controls are removed");
  EXPECT_EQ(exploration.finding->script, scriptOf({"request", "present embedded"}));
}

TEST(ExplorationTest, FindsTheShortestScriptThatBreaksAnInvariantAtATick) {
  const Exploration exploration = exploreWith(
      CheckTime::Moment,
      [](const ObservedPlay& play) -> std::string {
        const bool isTick = play.traceEvent() != nullptr &&
                            std::holds_alternative<host::trace::Tick>(*play.traceEvent());
        return isTick && play.manager()->content() != nullptr ? "time passes" : "";
      },
      4);
  ASSERT_TRUE(exploration.finding);
  EXPECT_EQ(exploration.finding->script,
            scriptOf({"request", "content view", "present embedded", "tick"}));
}

TEST(ExplorationTest, FindsTheShortestScriptThatBreaksAnInvariantAtTheEndOfThePlay) {
  const Exploration exploration = exploreWith(
      CheckTime::End,
      [](const ObservedPlay& play) -> std::string {
        return play.history().recordedEventCount > 0 ? "an event was recorded" : "";
      },
      4);
  ASSERT_TRUE(exploration.finding);
  // `ObservedPlay::end` deactivates the manager, so "deactivate" is the last action of the script.
  EXPECT_EQ(exploration.finding->script,
            scriptOf({"request", "content view", "dismiss by the manager", "deactivate"}));
}

TEST(ExplorationTest, PrintsAFindingAsAScenario) {
  const Exploration exploration = exploreWith(
      CheckTime::AfterAction,
      [](const ObservedPlay& play) -> std::string {
        return play.currentSample().isUnfocused ? "away" : "";
      },
      4);
  ASSERT_TRUE(exploration.finding);
  const host::Scenario scenario = host::readScenario(
      scenarioText(hostSetupWithoutContentViewController(), exploration.finding->script));
  std::vector<std::string_view> steps;
  std::ranges::transform(scenario.steps, std::back_inserter(steps), &host::Step::name);
  EXPECT_THAT(steps, testing::ElementsAre("request", "contentView", "present", "makeKey"));
  EXPECT_EQ(scenario.host.windows.size(), 3U);
  EXPECT_EQ(scenario.end, 5 * kNanosecondsPerSecond);
}

TEST(ExplorationTest, EveryActionIsAValidScenarioStep) {
  Script scriptOfAllActions(actions().size());
  for (std::size_t index = 0; index < scriptOfAllActions.size(); ++index) {
    scriptOfAllActions[index] = static_cast<std::uint8_t>(index);
  }
  for (const HostSetup& hostSetup : hostSetups()) {
    EXPECT_GE(host::readScenario(scenarioText(hostSetup, scriptOfAllActions)).steps.size(),
              actions().size());
  }
}

TEST(ExplorationTest, ExtendsOneScriptForEachState) {
  const Exploration exploration = explore(hostSetupWithoutContentViewController(), invariants(), 1);
  EXPECT_EQ(exploration.scriptCount, 1 + actions().size());
  EXPECT_EQ(exploration.depth, 1U);
  const Exploration deeperExploration =
      explore(hostSetupWithoutContentViewController(), invariants(), 2);
  const std::size_t newStateCount = exploration.stateCount - 1;  // without the initial state
  EXPECT_EQ(deeperExploration.scriptCount,
            exploration.scriptCount + newStateCount * actions().size());
}

TEST(StateFingerprintTest, IsEqualIfNothingHasChanged) {
  EXPECT_EQ(stateFingerprintAfter({}), stateFingerprintAfter({"key to the player"}));
  EXPECT_EQ(stateFingerprintAfter({}), stateFingerprintAfter({"tick", "half a second"}));
  EXPECT_EQ(stateFingerprintAfter({"request", "content view"}),
            stateFingerprintAfter({"request", "content view", "content view"}));
}

TEST(StateFingerprintTest, DiffersIfLaterActionsCanHaveOtherResults) {
  EXPECT_NE(stateFingerprintAfter({"request"}), stateFingerprintAfter({"request in skip mode"}));
  EXPECT_NE(stateFingerprintAfter({"request"}), stateFingerprintAfter({"request", "content view"}));
  // The scripts differ in the window that was key before the player.
  EXPECT_NE(stateFingerprintAfter({"key to another window", "key to the player"}),
            stateFingerprintAfter({"consent window loses key", "key to the player"}));
  // A refused dismissal leaves delayed work.
  EXPECT_NE(stateFingerprintAfter({"request", "content view"}),
            stateFingerprintAfter({"request", "content view", "dismiss by the controller"}));
}

class EqualStateFingerprintTest : public testing::TestWithParam<std::size_t> {};

// Fails if the state fingerprint lacks a value that influences the results of later actions.
TEST_P(EqualStateFingerprintTest, EqualFingerprintsStayEqualAfterTheSameAction) {
  const ParsedHostSetup parsedHostSetup(hostSetups()[GetParam()]);
  std::map<std::string, Script> firstScriptByFingerprint;
  std::vector<Script> scripts{{}};
  for (std::size_t index = 0; index < scripts.size(); ++index) {
    const Script script = scripts[index];
    const auto [firstScript, isNewFingerprint] =
        firstScriptByFingerprint.emplace(stateFingerprintAfter(parsedHostSetup, script), script);
    const std::vector<Script> continuations = continuationsOf(script);
    if (script.size() < 2) {
      scripts.insert(scripts.end(), continuations.begin(), continuations.end());
    }
    for (std::size_t action = 0; !isNewFingerprint && action < actions().size(); ++action) {
      EXPECT_EQ(
          stateFingerprintAfter(parsedHostSetup, continuations[action]),
          stateFingerprintAfter(parsedHostSetup, continuationsOf(firstScript->second)[action]))
          << scenarioText(parsedHostSetup.hostSetup, continuations[action]);
    }
  }
  EXPECT_LT(firstScriptByFingerprint.size(), scripts.size());
}

INSTANTIATE_TEST_SUITE_P(HostSetups, EqualStateFingerprintTest,
                         testing::Range(std::size_t{0}, hostSetups().size()));

// Known wrong styles: the cases in which the library does not restore the style of a window

struct Example {
  std::string_view wrongStyleName;
  std::vector<std::string_view> script;
  /// The styles of the host's windows after the script. The host gave the windows the styles 15, 7
  /// and 1.
  std::vector<NSWindowStyleMask> remainingStyles;
};

// The initial value of a controller's `appWindowStyleMask`. In the last example, the library gives
// this style to a window.
constexpr NSWindowStyleMask kNoSavedStyle = ~NSWindowStyleMask{0};

const Example kExamples[] = {
    {"an embedded cover presented again, as a window of its own",
     {"request", "present embedded", "present as a sheet", "dismiss by the manager",
      "half a second"},
     {1, 7, 1}},
    {"an embedded cover presented again, over another window",
     {"request", "present embedded", "present embedded elsewhere", "dismiss by the manager",
      "half a second", "half a second"},
     {1, 15, 1}},
    {"a second window of a controller that has saved the style of its first window",
     {"request", "present embedded", "close the player", "present embedded elsewhere",
      "dismiss by the manager", "half a second", "half a second"},
     {15, 15, 1}},
    {"a second cover over a covered window",
     {"request", "present embedded", "request", "present embedded", "close the player"},
     {1, 7, 1}},
    {"a closed window whose style another controller restores",
     {"request", "close the player", "present embedded", "request", "dismiss by the controller",
      "half a second", "half a second"},
     {kNoSavedStyle, 7, 1}},
};

class KnownWrongStyleTest : public testing::TestWithParam<std::size_t> {};

TEST_P(KnownWrongStyleTest, LeavesTheKnownWrongStyles) {
  const KnownWrongStyle& wrongStyle = knownWrongStyles()[GetParam()];
  ASSERT_LT(GetParam(), std::size(kExamples)) << "no example of: " << wrongStyle.name;
  const Example& example = kExamples[GetParam()];
  ASSERT_EQ(wrongStyle.name, example.wrongStyleName);
  const ParsedHostSetup parsedHostSetup(hostSetupWithoutContentViewController());
  ObservedPlay play(parsedHostSetup, invariants());
  for (const std::uint8_t action : scriptOf(example.script)) {
    play.perform(action);
  }
  EXPECT_EQ(play.violation(), "");
  EXPECT_TRUE(isUncovered(play));
  EXPECT_TRUE(play.history().knownWrongStyles.test(GetParam()));
  std::vector<NSWindowStyleMask> styles;
  std::ranges::transform(play.hostWindows(), std::back_inserter(styles),
                         [](const auto& window) { return window->styleMask(); });
  EXPECT_EQ(styles, example.remainingStyles);
  EXPECT_TRUE(std::ranges::any_of(play.hostWindows(), [&](const auto& window) {
    return window->styleMask() != play.originalStyle(*window) &&
           wrongStyle.hasResultingStyle(play, *window);
  }));
}

INSTANTIATE_TEST_SUITE_P(KnownWrongStyles, KnownWrongStyleTest,
                         testing::Range(std::size_t{0}, knownWrongStyles().size()));

TEST(KnownWrongStyleListTest, HasAnExampleOfEachWrongStyle) {
  EXPECT_EQ(std::size(kExamples), knownWrongStyles().size());
}

}  // namespace
}  // namespace vel::exploration
