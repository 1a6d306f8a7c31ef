// The host is the program that uses the library. `Player` acts as the host and creates objects of
// the classes in this file.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "Host/Play/Scenario/Scenario.h"
#include "HostInterfaces/ContentBroker.h"

namespace vel::host {

/// A window whose class name is chosen at run time.
class HostWindow final : public Class<HostWindow, "NSWindow", NSWindow> {
 public:
  HostWindow(std::string_view className, CGRect frame, NSWindowStyleMask styleMask)
      : Class(frame, styleMask), className_(className) {}
  [[nodiscard]] std::string_view className() const override { return className_; }

 private:
  std::string className_;
};

/// A view controller whose class name is chosen at run time.
class HostViewController final
    : public Class<HostViewController, "NSViewController", NSViewController> {
 public:
  explicit HostViewController(std::string_view className) : className_(className) {}
  [[nodiscard]] std::string_view className() const override { return className_; }

 private:
  std::string className_;
};

/// Calls a handler for each resolver that is registered.
class HostBroker final : public Class<HostBroker, "HostBroker", NSObject, ContentBroker> {
 public:
  using RegistrationHandler = std::function<void(const Strong<ContentResolver>& resolver)>;
  explicit HostBroker(RegistrationHandler handler) : handler_(std::move(handler)) {}
  bool registerContentResolver(const Strong<ContentResolver>& resolver) override {
    handler_(resolver);
    return true;
  }

 private:
  RegistrationHandler handler_;
};

/// Called with the ContentData whose state has changed.
using StateHandler = std::function<void(const Strong<ContentData>& data)>;

/// Adopts the protocol ContentResolverDelegate.
class ConformingResolverDelegate final
    : public Class<ConformingResolverDelegate, "ConformingResolverDelegate", NSObject,
                   ContentResolverDelegate> {
 public:
  explicit ConformingResolverDelegate(StateHandler handler) : handler_(std::move(handler)) {}
  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& /*resolver*/,
                                                   const Strong<ContentData>& data) override {
    handler_(data);
  }

 private:
  StateHandler handler_;
};

/// Has the operation of the protocol ContentResolverDelegate but does not adopt the protocol.
class UndeclaredResolverDelegate final
    : public Class<UndeclaredResolverDelegate, "UndeclaredResolverDelegate"> {
 public:
  explicit UndeclaredResolverDelegate(StateHandler handler) : handler_(std::move(handler)) {}
  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& /*resolver*/,
                                                   const Strong<ContentData>& data) {
    handler_(data);
  }

 private:
  StateHandler handler_;
};

/// A view delegate that responds only to the operations in `script.operations`. Each operation
/// calls the handler. `canContentViewDisappear` then returns `script.canDisappear`.
class ScriptedViewDelegate final
    : public Class<ScriptedViewDelegate, "ScriptedViewDelegate", NSObject, ContentViewDelegate> {
 public:
  using CallHandler =
      std::function<void(const ViewDelegateScript& script, ViewOperation operation)>;
  ScriptedViewDelegate(const ViewDelegateScript& script, CallHandler handler)
      : script_(script), handler_(std::move(handler)) {}

  [[nodiscard]] OperationSet respondingOperations() const override { return script_.operations; }
  void contentViewWillAppear(const Strong<ContentView>& /*view*/) override {
    handler_(script_, ViewOperation::WillAppear);
  }
  bool canContentViewDisappear(const Strong<ContentView>& /*view*/) override {
    handler_(script_, ViewOperation::CanDisappear);
    return script_.canDisappear;
  }
  void contentViewDidDisappear(const Strong<ContentView>& /*view*/) override {
    handler_(script_, ViewOperation::DidDisappear);
  }

 private:
  ViewDelegateScript script_;
  CallHandler handler_;
};

}  // namespace vel::host
