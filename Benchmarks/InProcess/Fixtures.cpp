#include "Benchmarks/InProcess/Fixtures.h"

#include <string>

#include "HostInterfaces/DictionaryRequest.h"
#include "Platform/Foundation/NSNumber.h"

namespace vel::bench {

namespace {

class NamedWindow final : public Class<NamedWindow, "NSWindow", NSWindow> {
 public:
  NamedWindow(std::string_view name, CGRect frame, NSWindowStyleMask styleMask)
      : Class(frame, styleMask), name_(name) {}
  [[nodiscard]] std::string_view className() const override { return name_; }

 private:
  std::string name_;
};

}  // namespace

Strong<NSWindow> openWindow(std::string_view className) {
  Strong<NSWindow> window =
      NSWindow::initAs<NamedWindow>(className, CGRectMake(0, 0, 640, 480), NSWindowStyleMask{15});
  window->orderFront();
  return window;
}

Strong<ContentRequest> makeRequest(std::string_view event, double duration) {
  return DictionaryRequest::requestWithEntries(
      {{"event", NSString::stringWithUTF8String(event)},
       {"max_duration_time", NSNumber::numberWithDouble(duration)}});
}

Strong<ContentView> loadContent(const Strong<LaunchScreenManager>& manager, double duration) {
  return manager->contentViewForContentData(
      manager->contentDataForContentRequest(makeRequest("launch_end", duration)));
}

}  // namespace vel::bench
