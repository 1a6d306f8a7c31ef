// A host's script: what it and its user do, and when.
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

/// One of the host's windows.
struct WindowScript {
  std::string name;
  std::string className = "PlayerWindow";
  NSWindowStyleMask styleMask = 15;
  CGRect frame = CGRectMake(0, 0, 1280, 720);
  /// The class name of its content view controller.
  std::optional<std::string> contentViewController = std::nullopt;
  /// The name of the window that it is a child of.
  std::optional<std::string> parent = std::nullopt;
};

/// The operations of the host's view delegate, in its protocol's order.
enum class ViewOperation : std::uint8_t { WillAppear, CanDisappear, DidDisappear };

inline constexpr NamedValue<ViewOperation> kViewOperations[] = {
    {"contentViewWillAppear:", ViewOperation::WillAppear},
    {"canContentViewDisappear:", ViewOperation::CanDisappear},
    {"contentViewDidDisappear:", ViewOperation::DidDisappear},
};

/// The host's view delegate: which operations it has, and what they do.
struct ViewDelegateScript {
  OperationSet operations{0b111};
  bool canDisappear = true;
  /// The operation that deactivates the manager while it is being told.
  std::optional<ViewOperation> deactivateDuring;
};

enum class ResolverDelegateKind : std::uint8_t { None, Conforming, Undeclared };

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

enum class ContentName : std::uint8_t { Main, Temporary };

inline constexpr NamedValue<ContentName> kContents[] = {
    {"main", ContentName::Main},
    {"temporary", ContentName::Temporary},
};

/// The thread that a step is done on.
enum class StepThread : std::uint8_t { Main, Background };

inline constexpr NamedValue<StepThread> kStepThreads[] = {{"background", StepThread::Background}};

enum class DismissalRoad : std::uint8_t { Manager, Controller, Content };

inline constexpr NamedValue<DismissalRoad> kDismissalRoads[] = {
    {"manager", DismissalRoad::Manager},
    {"controller", DismissalRoad::Controller},
    {"content", DismissalRoad::Content},
};

enum class SentOperation : std::uint8_t {
  SendAnalyticsEvent,
  SubscribeAppLifecycle,
  StartTimer,
  PauseTimer,
  StopTimer,
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

/// What a step does; a struct each.
namespace step {

struct Activate {
  bool broker = true;
};
struct Request {
  enum class Object : std::uint8_t { None, Given };
  Object object = Object::None;
  /// Of the object given; may be none.
  Strong<NSDictionary> parameters;
  StepThread thread = StepThread::Main;
};
struct ContentView {
  ContentName content = ContentName::Main;
};
struct Present {
  std::optional<std::string> window;
  std::int32_t mode = 0;
  ContentName content = ContentName::Main;
};
struct Dismiss {
  DismissalRoad by = DismissalRoad::Manager;
  StepThread thread = StepThread::Main;
};
struct Deactivate {};
struct Send {
  SentOperation operation = SentOperation::SendAnalyticsEvent;
};
/// What is left out is not set.
struct Configure {
  std::optional<bool> skipMode;
  /// Given and empty: none.
  std::optional<std::optional<std::string>> nextEventName;
  std::optional<double> expirationTimeInterval;
  /// Whether there is to be one of the host's.
  std::optional<bool> viewController;
};
struct ReplaceConfiguration {};
/// Empty: none.
struct ViewDelegate {
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
struct ResignKey {};
struct DeactivateApp {};
struct ActivateApp {};
struct StopModal {};
struct PresentOver {};
struct DismissOver {};
struct RunLoopMode {
  NSRunLoopMode mode = NSDefaultRunLoopMode;
};
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
  /// From the beginning of the play; never before the step before.
  Nanoseconds at = 0;
  /// As the script calls it; a literal.
  std::string_view name;
  StepAction action;
};

struct Scenario {
  HostScript host;
  std::vector<Step> steps;
  /// When the play ends; not before the last step.
  Nanoseconds end = 0;
};

/// What the names of presentations' windows begin with; a number from 1 follows.
inline constexpr std::string_view kModalWindowName = "modal-";
inline constexpr std::string_view kSheetName = "sheet-";

}  // namespace vel::host
