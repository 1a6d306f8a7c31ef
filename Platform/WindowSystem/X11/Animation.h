#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Draws the next picture of the indicators in the covers of the windows on screen. All indicators
/// change at the same time.
class Animation final : public NonCopyable {
 public:
  explicit Animation(WindowTable& windows) : windows_(windows) {}

  /// When the next picture is due; `kNever` if no indicator on screen turns.
  [[nodiscard]] Nanoseconds deadline() const;
  /// Draws the next picture if it is due.
  void advance(Nanoseconds now);

 private:
  WindowTable& windows_;
  Nanoseconds nextPicture_ = 0;
};

}  // namespace vel::x11
