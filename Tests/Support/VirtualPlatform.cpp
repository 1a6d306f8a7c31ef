#include "Tests/Support/VirtualPlatform.h"

#include <memory>
#include <utility>

#include "HostInterfaces/DictionaryRequest.h"
#include "Platform/AppKit/Shutdown.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSNumber.h"
#include "Platform/Foundation/NSProcessInfo.h"

namespace vel::test {

namespace {

// The initial value in NSProcessInfo.cpp.
constexpr NSOperatingSystemVersion kInitialSystemVersion{15, 0, 0};

}  // namespace

VirtualPlatform::VirtualPlatform() {
  NSRunLoop::mainRunLoop().setClock(std::make_unique<VirtualClock>());
  auto windowSystem = std::make_unique<HeadlessWindowSystem>();
  windowSystem_ = windowSystem.get();
  NSApplication::start(std::move(windowSystem));
  setNSLogSink([this](std::string_view line) { log.emplace_back(line); });
  MetricsCenter::setSink([this](std::string_view event) {
    events.push_back({std::string(event), now()});
  });
}

VirtualPlatform::~VirtualPlatform() {
  setPlatformObserver(nullptr);
  shutDown();
  sDefaultConfiguration = nullptr;
  NSProcessInfo::setOperatingSystemVersion(kInitialSystemVersion);
  MetricsCenter::setSink(nullptr);
  setNSLogSink(nullptr);
}

void VirtualPlatform::run(double seconds) {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  loop.runUntilDate(loop.now() + nanosecondsFromSeconds(seconds));
}

double VirtualPlatform::now() const {
  return secondsFromNanoseconds(NSRunLoop::mainRunLoop().now());
}

Strong<NSWindow> openWindow(std::string_view className, CGRect frame, NSWindowStyleMask styleMask) {
  Strong<NSWindow> window = NSWindow::initAs<NamedWindow>(className, frame, styleMask);
  window->orderFront();
  return window;
}

Strong<NSWindow> openPlayerWindow() {
  Strong<NSWindow> window = openWindow(LSUnityPlayerWindowClassName);
  window->makeKeyWindow();
  return window;
}

Strong<NSWindow> openPlayerWindowWithContentViewController() {
  Strong<NSWindow> window = openPlayerWindow();
  window->setContentViewController(make<NamedViewController>("PlayerViewController"));
  return window;
}

Strong<ContentRequest> makeRequest(Strong<NSDictionary> parameters) {
  return DictionaryRequest::requestWithParameters(std::move(parameters));
}

Strong<ContentRequest> makeRequest(std::string_view event, double duration, std::string_view mode) {
  NSDictionary::Entries entries{{"event", NSString::stringWithUTF8String(event)},
                                {"max_duration_time", NSNumber::numberWithDouble(duration)}};
  if (!mode.empty()) {
    entries["mode"] = NSString::stringWithUTF8String(mode);
  }
  return makeRequest(NSDictionary::dictionaryWithEntries(std::move(entries)));
}

}  // namespace vel::test
