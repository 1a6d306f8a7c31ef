#pragma once

#include <map>
#include <string>

#include "Platform/Foundation/Export.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {

/// A window system in memory: it keeps the state of all windows and has no screen. The `user…`,
/// `owner…`, `windowManager…` and `server…` operations simulate the user, a window's owner, the
/// window manager and the server. Each operation reports its result before it returns.
class VEL_EXPORT HeadlessWindowSystem final : public WindowSystem {
 public:
  /// The current state of a window.
  struct Window {
    WindowDescription description;
    bool isOnScreen = false;
    bool isMiniaturized = false;
    Scene scene;
  };

  void setDelegate(WindowSystemDelegate* delegate) override { delegate_ = delegate; }
  [[nodiscard]] WaitHandle waitHandle() const override { return {}; }
  bool deliverEvents() override { return false; }
  [[nodiscard]] Nanoseconds nextDeadline() const override { return kNever; }

  WindowHandle createWindow(const WindowDescription& description) override;
  std::optional<AdoptedWindow> adoptWindow(const NativeWindow& native, std::string& error) override;
  void releaseWindow(WindowHandle window) override;
  void orderFront(WindowHandle window) override;
  void orderOut(WindowHandle window) override;
  void requestFocus(WindowHandle window) override;
  void requestMiniaturized(WindowHandle window, bool isMiniaturized) override;
  void setFrame(WindowHandle window, CGRect frame) override;
  void setTitle(WindowHandle window, std::string_view title) override;
  void setStyleMask(WindowHandle window, NSWindowStyleMask styleMask) override;
  void setMovableByBackground(WindowHandle window, bool isMovable) override;
  void setScene(WindowHandle window, const Scene& scene) override;
  void setModalWindow(WindowHandle window) override;
  bool isSceneOnScreen(WindowHandle window) override;
  std::optional<WindowPicture> picture(WindowHandle /*window*/) override { return std::nullopt; }

  /// Moves the focus away from the application's windows without deactivating the application.
  void userMovesFocusAway();
  /// While true, `requestFocus` does nothing, as if the user worked in another application.
  void setIgnoresFocusRequests(bool ignoresFocusRequests) {
    ignoresFocusRequests_ = ignoresFocusRequests;
  }
  /// While true, no scene is on the screen, as if the server did not map the windows.
  void setHidesScenes(bool hidesScenes) { hidesScenes_ = hidesScenes; }
  /// These two operations switch from the application to another application, and back.
  void userDeactivatesApplication();
  void userActivatesApplication();
  /// Presses the close control. Reports nothing if the window has no close control.
  void userClosesWindow(WindowHandle window);
  void userResizesWindow(WindowHandle window, CGRect frame);
  /// Changes the style mask as the window's owner would.
  void ownerSetsStyleMask(WindowHandle window, NSWindowStyleMask styleMask);
  /// Reports a new stacking order of these windows, front to back.
  void userRestacksWindows(const std::vector<WindowHandle>& windows);
  /// Reports that the window manager still offers `controls` although the style mask excludes them.
  void windowManagerKeepsControls(WindowHandle window, NSWindowStyleMask controls);
  /// Destroys the window as its owner would.
  void ownerDestroysWindow(WindowHandle window);
  /// Destroys all windows and reports that the connection is lost.
  void serverClosesConnection(std::string_view reason);

  /// The state of a window; null for an invalid handle.
  [[nodiscard]] const Window* window(WindowHandle window) const;
  [[nodiscard]] std::size_t windowCount() const { return windows_.size(); }
  [[nodiscard]] WindowHandle focus() const { return focus_; }
  [[nodiscard]] WindowHandle modalWindow() const { return modalWindow_; }

 private:
  Window* findWindow(WindowHandle window);

  WindowSystemDelegate* delegate_ = nullptr;
  std::map<WindowHandle, Window> windows_;
  std::uint64_t lastHandle_ = 0;
  WindowHandle focus_ = WindowHandle::None;
  WindowHandle modalWindow_ = WindowHandle::None;
  bool ignoresFocusRequests_ = false;
  bool hidesScenes_ = false;
};

}  // namespace vel
