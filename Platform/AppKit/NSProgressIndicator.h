#pragma once

#include <cstdint>

#include "Platform/AppKit/NSAppearance.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/Export.h"

namespace vel {

enum class NSProgressIndicatorStyle : std::uint8_t { Bar = 0, Spinning = 1 };

inline constexpr auto NSProgressIndicatorStyleBar = NSProgressIndicatorStyle::Bar;
inline constexpr auto NSProgressIndicatorStyleSpinning = NSProgressIndicatorStyle::Spinning;

/// Shows that an operation is in progress. Only the spinning style is drawn. Only the main thread
/// may use an indicator.
class VEL_EXPORT NSProgressIndicator final
    : public Class<NSProgressIndicator, "NSProgressIndicator", NSView> {
 public:
  using Class::Class;

  static Strong<NSProgressIndicator> initWithFrame(CGRect frame) {
    return make<NSProgressIndicator>(frame);
  }

  [[nodiscard]] NSProgressIndicatorStyle style() const { return style_; }
  void setStyle(NSProgressIndicatorStyle style);

  /// Null by default. The appearance does not change how the indicator is drawn.
  [[nodiscard]] Strong<NSAppearance> appearance() const { return appearance_; }
  void setAppearance(Strong<NSAppearance> appearance) { appearance_ = std::move(appearance); }

  [[nodiscard]] bool isAnimating() const { return isAnimating_; }
  /// Ignores `sender`, which may be null.
  void startAnimation(const Strong<NSObject>& sender);
  /// Ignores `sender`, which may be null.
  void stopAnimation(const Strong<NSObject>& sender);

 protected:
  void addOwnContents(Scene& scene, CGRect rectangle) const override;

 private:
  void setAnimating(bool isAnimating);

  NSProgressIndicatorStyle style_ = NSProgressIndicatorStyleBar;
  Strong<NSAppearance> appearance_;
  bool isAnimating_ = false;
};

}  // namespace vel
