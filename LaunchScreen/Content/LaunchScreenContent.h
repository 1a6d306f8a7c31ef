#pragma once

#include <cstdint>
#include <utility>

#include "HostInterfaces/ContentBroker.h"
#include "LaunchScreen/View/macOS/LaunchScreenViewControllerMac.h"
#include "Platform/Foundation/Export.h"

namespace vel {

/// Receives the state changes of a content.
class VEL_EXPORT LaunchScreenContentDelegate : public Protocol<LaunchScreenContentDelegate> {
 public:
  virtual void contentDataDidChangeState(const Strong<ContentData>& /*data*/) {}

  template <class Adopter>
  using Optional = Operations<&Adopter::contentDataDidChangeState>;
};

/// A launch screen as the host sees it: the content data, the content view and its presentation in
/// one object. The content owns its request and its view controller, but not its delegates. Only
/// the main thread may use this class. Exception: any thread may call `setContentRequest`.
class VEL_EXPORT LaunchScreenContent final
    : public Class<LaunchScreenContent, "LaunchScreenContent", NSObject,
                   LaunchScreenViewControllerDelegate, ContentData, ContentView,
                   CVPresentationFullScreen> {
 public:
  static Strong<LaunchScreenContent> init();

  /// Stores a request and creates its view controller. On the main thread, this function creates
  /// the view controller before it returns. On another thread, the main queue creates the view
  /// controller later. The state then becomes loaded or failed. If the request has no parameters,
  /// the state becomes failed on the calling thread, before this function returns. If the host has
  /// supplied a view controller in the default configuration, this function uses that controller
  /// and does not change the state.
  void setContentRequest(Strong<ContentRequest> request);
  [[nodiscard]] Strong<ContentRequest> contentRequest() const { return contentRequest_; }

  // ContentData
  [[nodiscard]] Strong<ContentRequest> request() const override { return contentRequest(); }
  [[nodiscard]] ContentDataState state() const override { return state_; }
  /// Stores the state and notifies the content delegate, even if the state has not changed.
  void setState(ContentDataState state) override;
  /// Null if there is no error or the error has been destroyed. The content does not own its error.
  [[nodiscard]] Strong<NSError> error() const override { return internalError(); }

  // ContentView
  [[nodiscard]] Strong<ContentData> data() override { return self(); }
  [[nodiscard]] Strong<CVPresentation> presentation() override { return self(); }
  [[nodiscard]] Strong<ContentViewDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(const Strong<ContentViewDelegate>& delegate) override { delegate_ = delegate; }
  [[nodiscard]] Strong<ContentView> getContentView() { return self(); }

  // CVPresentationFullScreen
  [[nodiscard]] Strong<NSViewController> viewController() const override;
  /// Mode 0 covers the window, mode 2 presents a modal window, and any other mode presents a sheet.
  void presentForWindowWithPresentationMode(const Strong<NSWindow>& window,
                                            std::int32_t mode) override;
  /// Removes the launch screen without asking the delegates.
  void dismissViewController() override;

  /// Removes all delegates from the view controller and releases the view controller.
  void deactivate();

  // LaunchScreenViewControllerDelegate. Each operation calls `delegate`, the host's view delegate.
  void launchScreenControllerWillPresent(
      const Strong<LaunchScreenViewController>& controller) override;
  bool canLaunchScreenControllerDismiss(
      const Strong<LaunchScreenViewController>& controller) override;
  void launchScreenControllerDidDismiss(
      const Strong<LaunchScreenViewController>& controller) override;

  /// The controller that `viewController` returns as an NSViewController.
  [[nodiscard]] Strong<LaunchScreenViewControllerProtocol> internalViewController() const {
    return internalViewController_;
  }
  void setInternalViewController(Strong<LaunchScreenViewControllerProtocol> controller) {
    internalViewController_ = std::move(controller);
  }
  /// The delegate for state changes. Null for a temporary content of a LaunchScreenManager.
  [[nodiscard]] Strong<LaunchScreenContentDelegate> contentDelegate() const {
    return contentDelegate_.lock();
  }
  void setContentDelegate(const Strong<LaunchScreenContentDelegate>& delegate) {
    contentDelegate_ = delegate;
  }
  /// The error that `error` returns.
  [[nodiscard]] Strong<NSError> internalError() const { return internalError_.lock(); }
  /// Stores a weak reference.
  void setInternalError(const Strong<NSError>& error) { internalError_ = error; }

 private:
  void configureViewController();
  void buildViewController();

  ContentDataState state_ = 0;
  Weak<ContentViewDelegate> delegate_;
  Strong<LaunchScreenViewControllerProtocol> internalViewController_;
  Weak<LaunchScreenContentDelegate> contentDelegate_;
  Strong<ContentRequest> contentRequest_;
  Weak<NSError> internalError_;
};

}  // namespace vel
