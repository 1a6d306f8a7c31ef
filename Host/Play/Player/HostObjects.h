// What the host of a play has of its own and gives to the library.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "Host/Play/Scenario/Scenario.h"
#include "HostInterfaces/ContentBroker.h"

namespace vel::host {

/// A window whose class name is given at run time.
class HostWindow final : public Class<HostWindow, "NSWindow", NSWindow> {
 public:
  HostWindow(std::string_view className, CGRect frame, NSWindowStyleMask styleMask)
      : Class(frame, styleMask), className_(className) {}
  [[nodiscard]] std::string_view className() const override { return className_; }

 private:
  std::string className_;
};

/// A plain view controller whose class name is given at run time.
class HostViewController final
    : public Class<HostViewController, "NSViewController", NSViewController> {
 public:
  explicit HostViewController(std::string_view className) : className_(className) {}
  [[nodiscard]] std::string_view className() const override { return className_; }

 private:
  std::string className_;
};

class HostBroker final : public Class<HostBroker, "HostBroker", NSObject, ContentBroker> {
 public:
  using Told = std::function<void(const Strong<ContentResolver>& resolver)>;
  explicit HostBroker(Told told) : told_(std::move(told)) {}
  bool registerContentResolver(const Strong<ContentResolver>& resolver) override {
    told_(resolver);
    return true;
  }

 private:
  Told told_;
};

/// What a resolver delegate does with a change of state.
using StateChangeTold = std::function<void(const Strong<ContentData>& data)>;

class ConformingResolverDelegate final
    : public Class<ConformingResolverDelegate, "ConformingResolverDelegate", NSObject,
                   ContentResolverDelegate> {
 public:
  explicit ConformingResolverDelegate(StateChangeTold told) : told_(std::move(told)) {}
  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& /*resolver*/,
                                                   const Strong<ContentData>& data) override {
    told_(data);
  }

 private:
  StateChangeTold told_;
};

/// Has the protocol's operation and does not adopt the protocol.
class UndeclaredResolverDelegate final
    : public Class<UndeclaredResolverDelegate, "UndeclaredResolverDelegate"> {
 public:
  explicit UndeclaredResolverDelegate(StateChangeTold told) : told_(std::move(told)) {}
  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& /*resolver*/,
                                                   const Strong<ContentData>& data) {
    told_(data);
  }

 private:
  StateChangeTold told_;
};

/// A view delegate that has the operations of its script, answers as that says, and tells of each
/// call.
class ScriptedViewDelegate final
    : public Class<ScriptedViewDelegate, "ScriptedViewDelegate", NSObject, ContentViewDelegate> {
 public:
  using Told = std::function<void(const ViewDelegateScript& script, ViewOperation operation)>;
  ScriptedViewDelegate(const ViewDelegateScript& script, Told told)
      : script_(script), told_(std::move(told)) {}

  [[nodiscard]] OperationSet respondingOperations() const override { return script_.operations; }
  void contentViewWillAppear(const Strong<ContentView>& /*view*/) override {
    told_(script_, ViewOperation::WillAppear);
  }
  bool canContentViewDisappear(const Strong<ContentView>& /*view*/) override {
    told_(script_, ViewOperation::CanDisappear);
    return script_.canDisappear;
  }
  void contentViewDidDisappear(const Strong<ContentView>& /*view*/) override {
    told_(script_, ViewOperation::DidDisappear);
  }

 private:
  ViewDelegateScript script_;
  Told told_;
};

}  // namespace vel::host
