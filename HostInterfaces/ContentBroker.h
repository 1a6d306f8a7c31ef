// The host's content framework: what it offers to content resolvers and expects of them.
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

/// The state of a content data object. The framework defines more values than stand here.
using ContentDataState = std::uint64_t;

inline constexpr ContentDataState ContentDataStateLoaded = 3;
inline constexpr ContentDataState ContentDataStateFailed = 4;

/// A request for content: what the host asks a resolver for.
class VEL_EXPORT ContentRequest : public virtual NSObjectProtocol {
 public:
  /// The request's parameters, as the content service sent them; may be none.
  [[nodiscard]] virtual Strong<NSDictionary> parameters() const = 0;
};

/// Content on its way: the request that it answers, how far it is, and what went wrong.
class VEL_EXPORT ContentData : public virtual NSObjectProtocol {
 public:
  [[nodiscard]] virtual Strong<ContentRequest> request() const = 0;
  [[nodiscard]] virtual ContentDataState state() const = 0;
  virtual void setState(ContentDataState state) = 0;
  /// None while nothing went wrong. Whoever keeps it beyond the call takes a reference of its own.
  [[nodiscard]] virtual Strong<NSError> error() const = 0;
};

/// A way of presenting content.
class VEL_EXPORT CVPresentation : public Protocol<CVPresentation> {
 public:
  /// Optional: whether the user earns something by watching.
  [[nodiscard]] virtual bool rewarded() const { return false; }
  /// Optional: whether the user has seen all of it.
  [[nodiscard]] virtual bool completedView() const { return false; }

  template <class Adopter>
  using Optional = Operations<&Adopter::rewarded, &Adopter::completedView>;
};

/// Presentation over a window of the host. Main thread.
class VEL_EXPORT CVPresentationFullScreen : public CVPresentation {
 public:
  /// The controller that does the covering; none while there is none.
  [[nodiscard]] virtual Strong<NSViewController> viewController() const = 0;
  /// Covers `window` in one of the framework's modes.
  virtual void presentForWindowWithPresentationMode(const Strong<NSWindow>& window,
                                                    std::int32_t mode) = 0;
  virtual void dismissViewController() = 0;
};

/// What the host implements to follow a content view. Main thread. All operations are optional.
class VEL_EXPORT ContentViewDelegate : public Protocol<ContentViewDelegate> {
 public:
  virtual void contentViewWillAppear(const Strong<ContentView>& /*view*/) {}
  /// Whether the view may go now; asked before it goes.
  virtual bool canContentViewDisappear(const Strong<ContentView>& /*view*/) { return false; }
  virtual void contentViewDidDisappear(const Strong<ContentView>& /*view*/) {}

  template <class Adopter>
  using Optional = Operations<&Adopter::contentViewWillAppear, &Adopter::canContentViewDisappear,
                              &Adopter::contentViewDidDisappear>;
};

/// Content that can be shown.
class VEL_EXPORT ContentView : public virtual NSObjectProtocol {
 public:
  [[nodiscard]] virtual Strong<ContentData> data() = 0;
  [[nodiscard]] virtual Strong<CVPresentation> presentation() = 0;
  /// Not kept alive; may be none.
  [[nodiscard]] virtual Strong<ContentViewDelegate> delegate() const = 0;
  virtual void setDelegate(const Strong<ContentViewDelegate>& delegate) = 0;
};

/// What the host implements to hear of content on its way.
class VEL_EXPORT ContentResolverDelegate : public virtual NSObjectProtocol {
 public:
  /// `data` has changed its state; it may be in any state now. On the thread that changed it.
  virtual void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& resolver,
                                                           const Strong<ContentData>& data) = 0;
};

/// The host's broker: it routes content requests to the resolvers registered with it.
class VEL_EXPORT ContentBroker : public virtual NSObjectProtocol {
 public:
  /// Registers a resolver for the engines that it supports. The answer says whether that worked.
  virtual bool registerContentResolver(const Strong<ContentResolver>& resolver) = 0;
};

/// Serves content requests for the engines that it names.
class VEL_EXPORT ContentResolver : public Protocol<ContentResolver> {
 public:
  [[nodiscard]] virtual NSArray<NSString> supportedEngines() const = 0;
  /// Registers with the broker; none is allowed. Answers whether the resolver is at work.
  virtual bool activate(const Strong<ContentBroker>& broker) = 0;
  /// The content for a request, on its way; none for a request that is refused.
  virtual Strong<ContentData> contentDataForContentRequest(
      const Strong<ContentRequest>& request) = 0;
  /// What to show for that content. Main thread.
  virtual Strong<ContentView> contentViewForContentData(const Strong<ContentData>& data) = 0;
  /// Ends the resolver's service. Main thread.
  virtual void deactivate() = 0;
  /// Not kept alive; may be none. It is told of state changes only if it declares itself a
  /// ContentResolverDelegate.
  [[nodiscard]] virtual Strong<NSObjectProtocol> delegate() const = 0;
  virtual void setDelegate(const Strong<NSObjectProtocol>& delegate) = 0;
  /// Optional: a name for people.
  [[nodiscard]] virtual std::string_view name() const { return {}; }

  template <class Adopter>
  using Optional = Operations<&Adopter::name>;
};

}  // namespace vel
