// A scenario describes a host application and a list of steps, each at a given time. "The manager"
// is the host's LaunchScreenManager.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Host/Play/Scenario/NamedValue.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NSDictionary.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/Foundation/Protocol.h"
#include "Platform/Foundation/Time.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::host {

/// A window that the host opens.
struct WindowScript {
  std::string name;
  std::string className = "PlayerWindow";
  NSWindowStyleMask styleMask = 15;  // titled, closable, miniaturizable and resizable
  CGRect frame = CGRectMake(0, 0, 1280, 720);
  /// The class name of the content view controller, if the window has one.
  std::optional<std::string> contentViewController = std::nullopt;
  /// The name of the parent window, if the window has one.
  std::optional<std::string> parent = std::nullopt;
};

/// The operations of the protocol ContentViewDelegate, in the protocol's order.
enum class ViewOperation : std::uint8_t { WillAppear, CanDisappear, DidDisappear };

inline constexpr NamedValue<ViewOperation> kViewOperations[] = {
    {"contentViewWillAppear:", ViewOperation::WillAppear},
    {"canContentViewDisappear:", ViewOperation::CanDisappear},
    {"contentViewDidDisappear:", ViewOperation::DidDisappear},
};

/// Describes the host's view delegate, a ContentViewDelegate.
struct ViewDelegateScript {
  /// The operations to which the delegate responds: one bit for each `ViewOperation`.
  OperationSet operations{0b111};  // all operations
  /// The return value of the operation `CanDisappear`.
  bool canDisappear = true;
  /// The delegate deactivates the manager during this operation.
  std::optional<ViewOperation> deactivateDuring;
};

/// The kind of the host's resolver delegate.
enum class ResolverDelegateKind : std::uint8_t {
  None,        ///< the host has no resolver delegate
  Conforming,  ///< the delegate adopts the protocol ContentResolverDelegate
  Undeclared   ///< the delegate has the protocol's operation but does not adopt the protocol
};

inline constexpr NamedValue<ResolverDelegateKind> kResolverDelegates[] = {
    {"conforming", ResolverDelegateKind::Conforming},
    {"undeclared", ResolverDelegateKind::Undeclared},
};

struct HostScript {
  std::vector<WindowScript> windows{{.name = "player"}};
  ResolverDelegateKind resolverDelegate = ResolverDelegateKind::Conforming;
  std::optional<ViewDelegateScript> viewDelegate{std::in_place};
  NSOperatingSystemVersion osVersion{10, 14, 0};
};

/// The names of the manager's contents.
enum class ContentName : std::uint8_t {
  Main,      ///< the launch screen
  Temporary  ///< holds a request that arrives while a launch screen is shown
};

inline constexpr NamedValue<ContentName> kContentNames[] = {
    {"main", ContentName::Main},
    {"temporary", ContentName::Temporary},
};

/// The thread that performs a step. A scenario names only the background thread. The main thread is
/// the default.
enum class StepThread : std::uint8_t { Main, Background };

inline constexpr NamedValue<StepThread> kStepThreads[] = {{"background", StepThread::Background}};

/// The object that the host calls to dismiss the launch screen: the manager, the launch screen's
/// view controller or the main content.
enum class DismissalPath : std::uint8_t { Manager, Controller, Content };

inline constexpr NamedValue<DismissalPath> kDismissalPaths[] = {
    {"manager", DismissalPath::Manager},
    {"controller", DismissalPath::Controller},
    {"content", DismissalPath::Content},
};

/// The operations that `step::Send` can call.
enum class SentOperation : std::uint8_t {
  // Operations of the manager
  SendAnalyticsEvent,
  SubscribeAppLifecycle,
  StartTimer,
  PauseTimer,
  StopTimer,
  // Operations of the launch screen's view controller
  CreateActivityIndicator,
  CreateConstraintsActivityIndicator
};

inline constexpr NamedValue<SentOperation> kSentOperations[] = {
    {"sendAnalyticsEvent", SentOperation::SendAnalyticsEvent},
    {"subscribeAppLifecycle", SentOperation::SubscribeAppLifecycle},
    {"startTimer", SentOperation::StartTimer},
    {"pauseTimer", SentOperation::PauseTimer},
    {"stopTimer", SentOperation::StopTimer},
    {"createActivityIndicator", SentOperation::CreateActivityIndicator},
    {"createConstraintsActivityIndicator", SentOperation::CreateConstraintsActivityIndicator},
};

inline constexpr NamedValue<NSRunLoopMode> kRunLoopModes[] = {
    {"default", NSDefaultRunLoopMode},
    {"eventTracking", NSEventTrackingRunLoopMode},
};

/// The actions of steps, one struct for each kind of action.
namespace step {

/// The host activates the manager.
struct Activate {
  /// If false, the host passes a null content broker.
  bool hasBroker = true;
};
/// The host requests content from the manager.
struct Request {
  /// With `std::nullopt`, the host passes a null request. With a null dictionary, the host passes a
  /// request whose parameters are null.
  std::optional<Strong<NSDictionary>> parameters;
  StepThread thread = StepThread::Main;
};
/// The host asks the manager for the view of a content.
struct ContentView {
  ContentName content = ContentName::Main;
};
/// The host presents a content for a window.
struct Present {
  /// The name of the window. With `std::nullopt`, the host passes a null window.
  std::optional<std::string> window;
  /// Mode 0 covers the window, mode 2 opens a modal window, and any other mode opens a sheet.
  std::int32_t mode = 0;
  ContentName content = ContentName::Main;
};
struct Dismiss {
  DismissalPath path = DismissalPath::Manager;
  StepThread thread = StepThread::Main;
};
/// The host deactivates the manager.
struct Deactivate {};
struct Send {
  SentOperation operation = SentOperation::SendAnalyticsEvent;
};
/// The host sets properties of the default configuration. A member without a value leaves its
/// property unchanged.
struct Configure {
  std::optional<bool> skipMode;
  /// If the inner optional has no value, the host sets the event name to null.
  std::optional<std::optional<std::string>> nextEventName;
  std::optional<double> expirationTimeInterval;
  /// True sets a new view controller. False sets null.
  std::optional<bool> hasViewController;
};
/// The host replaces the default configuration with a new configuration.
struct ReplaceConfiguration {};
struct ViewDelegate {
  /// The new delegate. `std::nullopt` removes the current delegate.
  std::optional<ViewDelegateScript> script;
};
struct OpenWindow {
  WindowScript script;
};
struct CloseWindow {
  std::string window;
};
struct MakeKey {
  std::string window;
};
struct Miniaturize {
  std::string window;
};
struct Deminiaturize {
  std::string window;
};
/// The user moves the focus away from the host's windows without deactivating the application.
struct ResignKey {};
/// The user deactivates the application.
struct DeactivateApp {};
/// The user activates the application.
struct ActivateApp {};
/// The host ends the newest modal session.
struct StopModal {};
/// The launch screen's view controller presents a new NSViewController as a sheet.
struct PresentOver {};
/// The host dismisses the newest `PresentOver` sheet that is still presented.
struct DismissOver {};
struct RunLoopMode {
  NSRunLoopMode mode = NSDefaultRunLoopMode;
};
/// Prints the current state of the library.
struct Inspect {};

}  // namespace step

using StepAction =
    std::variant<step::Activate, step::Request, step::ContentView, step::Present, step::Dismiss,
                 step::Deactivate, step::Send, step::Configure, step::ReplaceConfiguration,
                 step::ViewDelegate, step::OpenWindow, step::CloseWindow, step::MakeKey,
                 step::Miniaturize, step::Deminiaturize, step::ResignKey, step::DeactivateApp,
                 step::ActivateApp, step::StopModal, step::PresentOver, step::DismissOver,
                 step::RunLoopMode, step::Inspect>;

struct Step {
  /// The time since the start of the scenario. It is never earlier than the time of the previous
  /// step.
  Nanoseconds time = 0;
  /// The action's name in the scenario, for example "stopModal". The `string_view` refers to a
  /// string literal.
  std::string_view name;
  StepAction action;
};

struct Scenario {
  HostScript host;
  std::vector<Step> steps;
  /// The time at which the scenario ends. It is never earlier than the time of the last step.
  Nanoseconds end = 0;
};

/// The names of modal windows and sheets begin with these prefixes. A number follows: the first
/// sheet is "sheet-1".
inline constexpr std::string_view kModalWindowPrefix = "modal-";
inline constexpr std::string_view kSheetPrefix = "sheet-";

}  // namespace vel::host
