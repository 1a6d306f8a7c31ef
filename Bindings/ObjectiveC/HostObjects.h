// Objects of the library that forward each call to a native object of the host.
#pragma once

#import "Bindings/ObjectiveC/ContentBroker.h"

#include "HostInterfaces/ContentBroker.h"

@class LaunchScreenContent;
@class LaunchScreenManager;

namespace vel_objc {

/// A request of the host. Retains the native request. `parameters` reads the native parameters at
/// each call.
class HostRequest final
    : public vel::Class<HostRequest, "HostRequest", vel::NSObject, vel::ContentRequest> {
 public:
  explicit HostRequest(id<ContentRequest> request);
  ~HostRequest() override;

  [[nodiscard]] vel::Strong<vel::NSDictionary> parameters() const override;
  [[nodiscard]] id<ContentRequest> native() const { return request_; }

 private:
  id<ContentRequest> request_;
};

/// The broker of the host. Registers the native manager. The library uses this object only in
/// `activate`, so this object retains nothing.
class HostBroker final
    : public vel::Class<HostBroker, "HostBroker", vel::NSObject, vel::ContentBroker> {
 public:
  HostBroker(id<ContentBroker> broker, LaunchScreenManager* manager)
      : broker_(broker), manager_(manager) {}

  bool registerContentResolver(const vel::Strong<vel::ContentResolver>& resolver) override;

 private:
  id<ContentBroker> broker_;
  LaunchScreenManager* manager_;
};

/// The resolver delegate of the host. The native manager owns this object. This object retains
/// nothing.
class HostResolverDelegate final : public vel::Class<HostResolverDelegate, "HostResolverDelegate",
                                                     vel::NSObject, vel::ContentResolverDelegate> {
 public:
  HostResolverDelegate(id<ContentResolverDelegate> delegate, LaunchScreenManager* manager,
                       LaunchScreenContent* content)
      : delegate_(delegate), manager_(manager), content_(content) {}

  void contentResolverDidChangeStateForContentData(
      const vel::Strong<vel::ContentResolver>& resolver,
      const vel::Strong<vel::ContentData>& data) override;

 private:
  id<ContentResolverDelegate> delegate_;
  LaunchScreenManager* manager_;
  LaunchScreenContent* content_;
};

/// The view delegate of the host. The native content owns this object. This object retains nothing.
/// It responds to the operations to which the native delegate responds.
class HostViewDelegate final : public vel::Class<HostViewDelegate, "HostViewDelegate",
                                                 vel::NSObject, vel::ContentViewDelegate> {
 public:
  HostViewDelegate(id<ContentViewDelegate> delegate, LaunchScreenContent* content)
      : delegate_(delegate), content_(content) {}

  [[nodiscard]] vel::OperationSet respondingOperations() const override;
  void contentViewWillAppear(const vel::Strong<vel::ContentView>& view) override;
  bool canContentViewDisappear(const vel::Strong<vel::ContentView>& view) override;
  void contentViewDidDisappear(const vel::Strong<vel::ContentView>& view) override;

 private:
  id<ContentViewDelegate> delegate_;
  LaunchScreenContent* content_;
};

}  // namespace vel_objc
