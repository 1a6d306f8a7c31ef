#pragma once

#include <cstdint>
#include <utility>

#include "HostInterfaces/ContentBroker.h"
#include "LaunchScreen/View/macOS/LaunchScreenViewControllerMac.h"
#include "Platform/Foundation/Export.h"

namespace vel {

/// Hears when a content changes its state.
class VEL_EXPORT LaunchScreenContentDelegate : public Protocol<LaunchScreenContentDelegate> {
 public:
  virtual void contentDataDidChangeState(const Strong<ContentData>& /*data*/) {}

  template <class Adopter>
  using Optional = Operations<&Adopter::contentDataDidChangeState>;
};

/// The one object that the host sees of a launch screen: the data, the view and its presentation.
/// It keeps its request and its view controller alive, its delegates not. Main thread, but for
/// `setContentRequest`.
class VEL_EXPORT LaunchScreenContent final
    : public Class<LaunchScreenContent, "LaunchScreenContent", NSObject,
                   LaunchScreenViewControllerDelegate, ContentData, ContentView,
                   CVPresentationFullScreen> {
 public:
  static Strong<LaunchScreenContent> init();

  /// Takes a request and builds the view controller for it, on the main thread: at once there, from
  /// any other thread soon after. The state then is loaded or failed. A request without parameters
  /// fails at once, on the caller's thread.
  void setContentRequest(Strong<ContentRequest> request);
  [[nodiscard]] Strong<ContentRequest> contentRequest() const { return contentRequest_; }

  // ContentData
  [[nodiscard]] Strong<ContentRequest> request() const override { return contentRequest(); }
  [[nodiscard]] ContentDataState state() const override { return state_; }
  /// Stores the state and tells the content delegate, also when it is the same as before.
  void setState(ContentDataState state) override;
  /// None once the error has gone: the content does not keep it.
  [[nodiscard]] Strong<NSError> error() const override { return internalError(); }

  // ContentView
  [[nodiscard]] Strong<ContentData> data() override { return self(); }
  [[nodiscard]] Strong<CVPresentation> presentation() override { return self(); }
  [[nodiscard]] Strong<ContentViewDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(const Strong<ContentViewDelegate>& delegate) override { delegate_ = delegate; }
  [[nodiscard]] Strong<ContentView> getContentView() { return self(); }

  // CVPresentationFullScreen
  [[nodiscard]] Strong<NSViewController> viewController() const override;
  /// Host mode 0 covers the window, 2 presents a modal window, any other a sheet.
  void presentForWindowWithPresentationMode(const Strong<NSWindow>& window,
                                            std::int32_t mode) override;
  /// Takes the cover down without asking anybody.
  void dismissViewController() override;

  /// Ends the content's active life: the controller forgets its delegates and is released.
  void deactivate();

  // LaunchScreenViewControllerDelegate: passed on to the host's view delegate.
  void launchScreenControllerWillPresent(
      const Strong<LaunchScreenViewController>& controller) override;
  bool canLaunchScreenControllerDismiss(
      const Strong<LaunchScreenViewController>& controller) override;
  void launchScreenControllerDidDismiss(
      const Strong<LaunchScreenViewController>& controller) override;

  [[nodiscard]] Strong<LaunchScreenViewControllerProtocol> internalViewController() const {
    return internalViewController_;
  }
  void setInternalViewController(Strong<LaunchScreenViewControllerProtocol> controller) {
    internalViewController_ = std::move(controller);
  }
  [[nodiscard]] Strong<LaunchScreenContentDelegate> contentDelegate() const {
    return contentDelegate_.lock();
  }
  void setContentDelegate(const Strong<LaunchScreenContentDelegate>& delegate) {
    contentDelegate_ = delegate;
  }
  [[nodiscard]] Strong<NSError> internalError() const { return internalError_.lock(); }
  /// The content does not keep the error alive.
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
