#pragma once

#include <map>
#include <string>

#include "Platform/Foundation/Export.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {

/// A window system in memory: full window state and no screen. What a user would do is done by the
/// `user…` operations; everything is reported at once, from inside the call.
class VEL_EXPORT HeadlessWindowSystem final : public WindowSystem {
 public:
  /// A window's state, as it was last told.
  struct Window {
    WindowDescription description;
    bool onScreen = false;
    bool miniaturized = false;
    Scene scene;
  };

  void setDelegate(WindowSystemDelegate* delegate) override { delegate_ = delegate; }
  [[nodiscard]] WaitHandle waitHandle() const override { return {}; }
  bool deliverEvents() override { return false; }
  [[nodiscard]] Nanoseconds nextDeadline() const override { return kNever; }

  WindowHandle createWindow(const WindowDescription& description) override;
  std::optional<AdoptedWindow> adoptWindow(std::uint64_t nativeId, std::string& error) override;
  void releaseWindow(WindowHandle window) override;
  void orderFront(WindowHandle window) override;
  void orderOut(WindowHandle window) override;
  void requestFocus(WindowHandle window) override;
  void requestMiniaturized(WindowHandle window, bool miniaturized) override;
  void setFrame(WindowHandle window, CGRect frame) override;
  void setTitle(WindowHandle window, std::string_view title) override;
  void setStyleMask(WindowHandle window, NSWindowStyleMask styleMask) override;
  void setMovableByBackground(WindowHandle window, bool movable) override;
  void setScene(WindowHandle window, const Scene& scene) override;
  void setModalWindow(WindowHandle window) override { modal_ = window; }
  std::optional<WindowPicture> picture(WindowHandle /*window*/) override { return std::nullopt; }

  /// The focus goes elsewhere within the application's reach, to none of its windows.
  void userMovesFocusAway();
  /// The user works elsewhere: the focus stays there, whoever asks for it.
  void userKeepsFocus(bool keeps) { userKeepsFocus_ = keeps; }
  /// The user goes to another application, and comes back.
  void userDeactivatesApplication();
  void userActivatesApplication();
  /// The user presses the close control; a window without one does not hear of it.
  void userClosesWindow(WindowHandle window);
  void userResizesWindow(WindowHandle window, CGRect frame);
  /// The window's owner gives it another style mask.
  void ownerSetsStyleMask(WindowHandle window, NSWindowStyleMask styleMask);
  /// The user brings windows into another order, front to back.
  void userOrdersWindows(const std::vector<WindowHandle>& windows);
  /// A window manager says which controls it goes on offering.
  void windowManagerKeeps(WindowHandle window, NSWindowStyleMask controls);
  /// The window is destroyed by its owner.
  void windowVanishes(WindowHandle window);
  /// The connection breaks.
  void connectionBreaks(std::string_view reason);

  /// The state of a window; nothing for a void handle.
  [[nodiscard]] const Window* window(WindowHandle window) const;
  [[nodiscard]] std::size_t windowCount() const { return windows_.size(); }
  [[nodiscard]] WindowHandle focus() const { return focus_; }
  [[nodiscard]] WindowHandle modalWindow() const { return modal_; }

 private:
  Window* find(WindowHandle window);

  WindowSystemDelegate* delegate_ = nullptr;
  std::map<WindowHandle, Window> windows_;
  std::uint64_t created_ = 0;
  WindowHandle focus_ = WindowHandle::None;
  WindowHandle modal_ = WindowHandle::None;
  bool userKeepsFocus_ = false;
};

}  // namespace vel
