// The spinner is a ring of twelve spokes in the middle of a cover.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "Platform/WindowSystem/X11/ScreenCoordinates.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr Nanoseconds kTurnDuration = kNanosecondsPerSecond;
constexpr int kSpokes = 12;
constexpr Nanoseconds kStepDuration = kTurnDuration / kSpokes;

/// The colours of the twelve spokes, clockwise from the top.
std::array<std::uint32_t, kSpokes> shadesIn(const Picture& picture) {
  // Reads each spoke at a distance of 11.5 pixels from the centre of the spinner, (320, 200).
  std::array<std::uint32_t, kSpokes> shades{};
  for (int spoke = 0; spoke < kSpokes; ++spoke) {
    const double angle = spoke * M_PI / 6;
    shades.at(static_cast<std::size_t>(spoke)) =
        picture.at(320 + static_cast<int>(std::lround(11.5 * std::sin(angle) - 0.5)),
                   200 - static_cast<int>(std::lround(11.5 * std::cos(angle) + 0.5)));
  }
  return shades;
}

/// The darkest spoke of the spinner at an unknown time between `earliest` and `latest`.
struct Observation {
  Nanoseconds earliest = 0;
  Nanoseconds latest = 0;
  int darkestSpoke = 0;
};

/// Returns true if the observations fit a spinner that turns clockwise by one spoke per
/// `kStepDuration`. The exact times are unknown, so more than one number of steps can fit.
bool fitsOneSpokePerStep(const Observation& first, const Observation& second) {
  const Nanoseconds minSteps = (second.earliest - first.latest) / kStepDuration;
  const Nanoseconds maxSteps = (second.latest - first.earliest + kStepDuration - 1) / kStepDuration;
  for (Nanoseconds steps = minSteps; steps <= maxSteps; ++steps) {
    if ((first.darkestSpoke + steps) % kSpokes == second.darkestSpoke) {
      return true;
    }
  }
  return false;
}

class X11Spinner : public X11Test {
 protected:
  void setDpi(std::string_view dpi) {
    client.setProperty(
        client.root(), "RESOURCE_MANAGER",
        Property::ofText(XCB_ATOM_STRING, "*customization:\t-color\nXft.dpi:\t" + std::string(dpi) +
                                              "\nXft.hinting:\t1\n"));
  }
  Picture showStill() { return show(false); }
  Picture showAnimated() { return show(true); }
  Picture show(bool isAnimated) {
    game = client.openGameWindow(kGameFrame, 0x208040);
    const AdoptedWindow adoptedWindow = adopt(game);
    handle = adoptedWindow.handle;
    scene = whiteSceneWithSpinner(adoptedWindow.frame.size);
    scene.back().isAnimated = isAnimated;
    system().setScene(handle, scene);
    deliver();
    return client.screenPicture(game);
  }
  /// Delivers all events, which also draws the spinner for the current time.
  Observation observe() {
    Observation observation{.earliest = x11::steadyNow()};
    deliver();
    observation.latest = x11::steadyNow();
    const auto shades = shadesIn(client.screenPicture(game));
    observation.darkestSpoke = static_cast<int>(std::ranges::min_element(shades) - shades.begin());
    return observation;
  }
  int countChangesIn(double seconds) {
    const Nanoseconds limit = x11::steadyNow() + nanosecondsFromSeconds(seconds);
    Picture previousPicture = client.screenPicture(game);
    int changeCount = 0;
    while (x11::steadyNow() < limit) {
      deliverFor(0.02);
      const Picture currentPicture = client.screenPicture(game);
      changeCount += currentPicture == previousPicture ? 0 : 1;
      previousPicture = currentPicture;
    }
    return changeCount;
  }

  xcb_window_t game = 0;
  WindowHandle handle = WindowHandle::None;
  Scene scene;
};

TEST_F(X11Spinner, IsACentredRingThirtyTwoPointsWide) {
  const Picture picture = showStill();
  EXPECT_EQ(picture.boundsOfPixelsExcept(kWhite), (PixelRect{304, 184, 32, 32}));
  // The centre of the ring and the corners of its bounds are white.
  for (int y = 0; y < 32; ++y) {
    for (int x = 0; x < 32; ++x) {
      const double radius = std::hypot(x - 15.5, y - 15.5);
      if (radius > 17 || radius < 6) {
        EXPECT_EQ(picture.at(304 + x, 184 + y), kWhite) << x << ", " << y;
      }
    }
  }
  picture.save("indicator");
}

// When a window loses its decorations, some window managers shrink the window's parent (the frame)
// to the size of the window.
TEST_F(X11Spinner, StaysCentredWhenTheParentOfTheWindowShrinks) {
  const xcb_window_t parent = client.openGameWindow({100, 100, 700, 500}, 0);
  game = client.makeWindow({10, 20, 640, 400}, 0x208040, parent);
  client.map(game);
  client.waitForServer();
  scene = whiteSceneWithSpinner({640, 400});
  scene.back().isAnimated = false;
  system().setScene(adopt(game).handle, scene);
  deliver();
  constexpr PixelRect kSpinnerFrame{304, 184, 32, 32};
  ASSERT_EQ(client.screenPicture(game).boundsOfPixelsExcept(kWhite), kSpinnerFrame);
  client.configure(parent, {100, 100, 640, 400});
  client.configure(game, {0, 0, 640, 400});
  deliver();
  EXPECT_EQ(client.screenPicture(game).boundsOfPixelsExcept(kWhite), kSpinnerFrame);
}

TEST_F(X11Spinner, HasTwelveSpokesOfDifferentShades) {
  const auto shadesOfSpokes = shadesIn(showStill());
  const std::set<std::uint32_t> shades(shadesOfSpokes.begin(), shadesOfSpokes.end());
  EXPECT_EQ(shades.size(), 12U);
  EXPECT_FALSE(shades.contains(kWhite));
}

TEST_F(X11Spinner, IsScaledWithXftDpi) {
  setDpi("192");
  const Picture picture = showStill();
  EXPECT_EQ(picture.boundsOfPixelsExcept(kWhite), (PixelRect{288, 168, 64, 64}));
  picture.save("indicator-at-192-dpi");
}

TEST_F(X11Spinner, TurnsByOneSpokeEachTwelfthOfASecondWhileAnimated) {
  showAnimated();
  EXPECT_LE(system().nextDeadline(), x11::steadyNow() + kStepDuration);
  // The measurement begins just after a step, so it detects a long step early.
  const int spokeAtStart = observe().darkestSpoke;
  Observation first;
  ASSERT_TRUE(waitFor([&] {
    first = observe();
    return first.darkestSpoke != spokeAtStart;
  }));
  Observation latest = first;
  EXPECT_TRUE(waitFor([&] {
    latest = observe();
    return !fitsOneSpokePerStep(first, latest) || latest.earliest - first.latest > kTurnDuration;
  }));
  EXPECT_TRUE(fitsOneSpokePerStep(first, latest))
      << "from spoke " << first.darkestSpoke << " to spoke " << latest.darkestSpoke << " in "
      << latest.earliest - first.latest << " to " << latest.latest - first.earliest << " ns";
}

TEST_F(X11Spinner, DoesNotTurnWhileNotAnimated) {
  showStill();
  EXPECT_EQ(countChangesIn(0.3), 0);
  EXPECT_EQ(system().nextDeadline(), kNever);
}

TEST_F(X11Spinner, HasNoDeadlineWhileItsWindowIsUnmapped) {
  showAnimated();
  EXPECT_NE(system().nextDeadline(), kNever);
  client.unmap(game);
  deliver();
  EXPECT_EQ(system().nextDeadline(), kNever);
  client.map(game);
  deliver();
  EXPECT_NE(system().nextDeadline(), kNever);
}

TEST_F(X11Spinner, HasNoDeadlineAfterItsSceneIsRemoved) {
  showAnimated();
  system().setScene(handle, {});
  deliver();
  EXPECT_EQ(system().nextDeadline(), kNever);
}

TEST_F(X11Spinner, IsRedrawnAfterAnotherWindowHidIt) {
  const Picture picture = showStill();
  const xcb_window_t otherWindow = client.makeWindow({400, 250, 200, 200}, 0xFF);
  client.map(otherWindow);
  client.destroy(otherWindow);
  EXPECT_EQ(client.screenPicture(game), picture);
}

TEST(X11Scale, IsXftDpiDividedByNinetySix) {
  EXPECT_EQ(x11::scaleFromResources("Xft.dpi:\t192\n"), 2);
  EXPECT_EQ(x11::scaleFromResources("a: b\nXft.dpi: 144"), 1.5);
  EXPECT_EQ(x11::scaleFromResources("Xft.dpi:96"), 1);
}

TEST(X11Scale, IsOneWithoutAValidXftDpi) {
  for (const char* const text :
       {"", "Xft.dpi:", "Xft.dpi:\t", "Xft.dpi: nan", "Xft.dpi: -96", "Xft.dpi: 0",
        "Xft.dpi: 1e300", "Xft.dpi: many", "xXft.dpi: 192", "Xft.dpi.x: 192"}) {
    EXPECT_EQ(x11::scaleFromResources(text), 1) << text;
  }
}

}  // namespace
}  // namespace vel::test
