// explore [--depth N]: checks the invariants in every state that up to N actions can reach.
#include <charconv>
#include <iostream>
#include <string_view>

#include "Tests/Exploration/Explorer.h"
#include "Tests/Exploration/Invariants.h"

namespace {

constexpr std::size_t kDefaultDepth = 5;

// Returns true if every invariant holds.
bool exploreAll(std::size_t depth) {
  using namespace vel::exploration;
  for (const HostSetup& hostSetup : hostSetups()) {
    const Exploration exploration = explore(hostSetup, invariants(), depth);
    if (exploration.finding) {
      std::cerr << exploration.finding->violation << '\n';
      std::cout << scenarioText(hostSetup, exploration.finding->script);
      return false;
    }
    std::cerr << "player window " << hostSetup.name << ": " << exploration.stateCount << " states, "
              << exploration.scriptCount << " sequences, depth " << exploration.depth << std::endl;
  }
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  std::size_t depth = kDefaultDepth;
  if (count > 1) {
    const std::string_view number = count == 3 ? arguments[2] : "";
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), depth);
    if (std::string_view(arguments[1]) != "--depth" || number.empty() || error != std::errc() ||
        end != number.data() + number.size()) {
      std::cerr << "usage: explore [--depth N]\n";
      return 2;
    }
  }
  return exploreAll(depth) ? 0 : 1;
}
