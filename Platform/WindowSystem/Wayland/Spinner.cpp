#include "Platform/WindowSystem/Wayland/Spinner.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace vel::wayland {

namespace {

// The shape of the spinner, in fractions of its side. All back ends draw the same shape.
constexpr double kOuterRadius = 0.5;
constexpr double kInnerRadius = 0.24;
constexpr double kSpokeWidth = 0.09;
constexpr double kTipWidth = 0.05;
constexpr double kTipLength = 0.02;

// The spokes are black. Their opacity makes the shades.
constexpr double kDarkest = 0.72;
constexpr double kLightest = 0.14;

// Each pixel is the mean of this many samples in each direction.
constexpr int kSamples = 4;

constexpr int kNoSpoke = -1;

// The width of a spoke at a distance from the centre. A spoke has tapered tips.
double widthAt(double radius) {
  if (radius < kInnerRadius || radius > kOuterRadius) {
    return 0;
  }
  const double distanceToTip = std::min(radius - kInnerRadius, kOuterRadius - radius);
  const double taper = std::min(distanceToTip / kTipLength, 1.0);
  return kTipWidth + (kSpokeWidth - kTipWidth) * taper;
}

// Returns the spoke at a point. The centre of the spinner is (0, 0), and y grows downwards.
int spokeAt(double x, double y) {
  if (const double radius = std::hypot(x, y); radius < kInnerRadius || radius > kOuterRadius) {
    return kNoSpoke;  // most samples: skips the slow functions below
  }
  constexpr double kStep = 2 * std::numbers::pi / kSpokes;
  const double spoke = std::round(std::atan2(x, -y) / kStep);
  const double along = x * std::sin(spoke * kStep) - y * std::cos(spoke * kStep);
  const double across = x * std::cos(spoke * kStep) + y * std::sin(spoke * kStep);
  const bool isInside = 2 * std::abs(across) < widthAt(along);
  return isInside ? (static_cast<int>(spoke) + kSpokes) % kSpokes : kNoSpoke;
}

double opacityOf(int spoke, int picture) {
  const int age = (picture + kSpokes - spoke) % kSpokes;
  return kDarkest + (kLightest - kDarkest) * age / (kSpokes - 1);
}

}  // namespace

std::vector<Pixels> drawSpinner(int side) {
  const auto length = static_cast<std::size_t>(side);
  std::vector<Pixels> pictures(
      kSpokes,
      {.width = side, .height = side, .values = std::vector<std::uint32_t>(length * length)});
  for (int row = 0; row < side; ++row) {
    for (int column = 0; column < side; ++column) {
      std::array<double, kSpokes> coverage{};
      for (int sample = 0; sample < kSamples * kSamples; ++sample) {
        const int sampleColumn = column * kSamples + sample % kSamples;
        const int sampleRow = row * kSamples + sample / kSamples;
        const double x = (sampleColumn + 0.5) / (side * kSamples) - 0.5;
        const double y = (sampleRow + 0.5) / (side * kSamples) - 0.5;
        if (const int spoke = spokeAt(x, y); spoke != kNoSpoke) {
          coverage.at(static_cast<std::size_t>(spoke)) += 1.0 / (kSamples * kSamples);
        }
      }
      for (int picture = 0; picture < kSpokes; ++picture) {
        double opacity = 0;
        for (int spoke = 0; spoke < kSpokes; ++spoke) {
          opacity += coverage.at(static_cast<std::size_t>(spoke)) * opacityOf(spoke, picture);
        }
        pictures[static_cast<std::size_t>(picture)]
            .values[static_cast<std::size_t>(row) * length + static_cast<std::size_t>(column)] =
            static_cast<std::uint32_t>(std::lround(opacity * 255)) << 24U;
      }
    }
  }
  return pictures;
}

}  // namespace vel::wayland
