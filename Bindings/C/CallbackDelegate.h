#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Bindings/C/vel_launch_screen.h"
#include "HostInterfaces/ContentBroker.h"
#include "Platform/Foundation/Message.h"

namespace vel {

/// The host that C callbacks stand for: it hears what a host in C++ would, and has the operations
/// whose callbacks are set. Main thread.
class CallbackDelegate final : public Class<CallbackDelegate, "CallbackDelegate", NSObject,
                                            ContentResolverDelegate, ContentViewDelegate> {
 public:
  explicit CallbackDelegate(const VelCallbacks& callbacks) : callbacks_(callbacks) {}

  /// From now on nothing is called.
  void silence() { callbacks_ = {}; }

  [[nodiscard]] OperationSet respondingOperations() const override;

  // ContentResolverDelegate
  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& resolver,
                                                   const Strong<ContentData>& data) override;

  // ContentViewDelegate
  void contentViewWillAppear(const Strong<ContentView>& view) override;
  bool canContentViewDisappear(const Strong<ContentView>& view) override;
  void contentViewDidDisappear(const Strong<ContentView>& view) override;

  // What the platform layer has to tell. A line that nobody takes goes to standard error.
  void logLine(std::string_view line);
  void recordEvent(std::string_view event) const;
  void controlsKept(std::uint32_t controls) const;
  void displayLost(std::string_view reason) const;

  /// The last line that was logged.
  [[nodiscard]] const std::string& lastLogLine() const { return lastLogLine_; }

 private:
  VelCallbacks callbacks_;
  std::string lastLogLine_;
};

}  // namespace vel
