// The protocols of the host's content framework.
#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/AppKit/NSViewController.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSArray.h"
#include "Platform/Foundation/NSDictionary.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSString.h"
#include "Platform/Foundation/Protocol.h"

namespace vel {

class ContentView;
class ContentResolver;

/// The state of a ContentData. The host's framework defines further values that this library does
/// not use.
using ContentDataState = std::uint64_t;

inline constexpr ContentDataState ContentDataStateLoaded = 3;
inline constexpr ContentDataState ContentDataStateFailed = 4;

/// A request that the host sends to a ContentResolver.
class VEL_EXPORT ContentRequest : public virtual NSObjectProtocol {
 public:
  /// The parameters of the request from the content service, or null.
  [[nodiscard]] virtual Strong<NSDictionary> parameters() const = 0;
};

/// The content that a ContentResolver loads for a request, with its state and error.
class VEL_EXPORT ContentData : public virtual NSObjectProtocol {
 public:
  [[nodiscard]] virtual Strong<ContentRequest> request() const = 0;
  [[nodiscard]] virtual ContentDataState state() const = 0;
  virtual void setState(ContentDataState state) = 0;
  /// The error. Null if there is no error. The content data may release the error later, so a
  /// caller that needs the error later must keep a strong reference.
  [[nodiscard]] virtual Strong<NSError> error() const = 0;
};

/// A way of presenting content.
class VEL_EXPORT CVPresentation : public Protocol<CVPresentation> {
 public:
  /// Optional: true if the user gets a reward for watching the content.
  [[nodiscard]] virtual bool rewarded() const { return false; }
  /// Optional: true if the user has watched the content to its end.
  [[nodiscard]] virtual bool completedView() const { return false; }

  template <class Adopter>
  using Optional = Operations<&Adopter::rewarded, &Adopter::completedView>;
};

/// A presentation of content over a window of the host. Only the main thread may use a
/// presentation.
class VEL_EXPORT CVPresentationFullScreen : public CVPresentation {
 public:
  /// The controller that covers the window, or null.
  [[nodiscard]] virtual Strong<NSViewController> viewController() const = 0;
  /// Covers `window`. `mode` is a presentation mode of the host's framework.
  virtual void presentForWindowWithPresentationMode(const Strong<NSWindow>& window,
                                                    std::int32_t mode) = 0;
  virtual void dismissViewController() = 0;
};

/// Receives the notifications of a content view. The host implements it. All operations are
/// optional. The library calls them on the main thread.
class VEL_EXPORT ContentViewDelegate : public Protocol<ContentViewDelegate> {
 public:
  virtual void contentViewWillAppear(const Strong<ContentView>& /*view*/) {}
  /// True if the view may disappear now. Called before each dismissal.
  virtual bool canContentViewDisappear(const Strong<ContentView>& /*view*/) { return false; }
  virtual void contentViewDidDisappear(const Strong<ContentView>& /*view*/) {}

  template <class Adopter>
  using Optional = Operations<&Adopter::contentViewWillAppear, &Adopter::canContentViewDisappear,
                              &Adopter::contentViewDidDisappear>;
};

/// A view of loaded content.
class VEL_EXPORT ContentView : public virtual NSObjectProtocol {
 public:
  [[nodiscard]] virtual Strong<ContentData> data() = 0;
  [[nodiscard]] virtual Strong<CVPresentation> presentation() = 0;
  /// The delegate, or null. The view does not keep it alive.
  [[nodiscard]] virtual Strong<ContentViewDelegate> delegate() const = 0;
  virtual void setDelegate(const Strong<ContentViewDelegate>& delegate) = 0;
};

/// Receives the state changes of content data. The host implements it.
class VEL_EXPORT ContentResolverDelegate : public virtual NSObjectProtocol {
 public:
  /// The state of `data` has changed. Called on the thread that changed the state.
  virtual void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& resolver,
                                                           const Strong<ContentData>& data) = 0;
};

/// Routes content requests to registered resolvers. The host implements it.
class VEL_EXPORT ContentBroker : public virtual NSObjectProtocol {
 public:
  /// Registers a resolver for the engines that it supports. Returns true on success.
  virtual bool registerContentResolver(const Strong<ContentResolver>& resolver) = 0;
};

/// Loads content for the requests of the engines that it supports.
class VEL_EXPORT ContentResolver : public Protocol<ContentResolver> {
 public:
  [[nodiscard]] virtual NSArray<NSString> supportedEngines() const = 0;
  /// Registers the resolver with the broker, which may be null. Returns true if the resolver
  /// accepts requests.
  virtual bool activate(const Strong<ContentBroker>& broker) = 0;
  /// Starts to load the content of a request. Returns null if the resolver refuses the request.
  virtual Strong<ContentData> contentDataForContentRequest(
      const Strong<ContentRequest>& request) = 0;
  /// Returns the view of the content. Only the main thread may call this operation.
  virtual Strong<ContentView> contentViewForContentData(const Strong<ContentData>& data) = 0;
  /// Releases all content. Only the main thread may call this operation.
  virtual void deactivate() = 0;
  /// The delegate, or null. The resolver does not keep it alive. The resolver notifies the delegate
  /// of state changes only if the delegate adopts ContentResolverDelegate.
  [[nodiscard]] virtual Strong<NSObjectProtocol> delegate() const = 0;
  virtual void setDelegate(const Strong<NSObjectProtocol>& delegate) = 0;
  /// Optional: the name to display.
  [[nodiscard]] virtual std::string_view name() const { return {}; }

  template <class Adopter>
  using Optional = Operations<&Adopter::name>;
};

}  // namespace vel
