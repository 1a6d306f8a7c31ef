#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Bindings/C/CallbackQueue.h"
#include "Bindings/C/vel_launch_screen.h"
#include "HostInterfaces/ContentBroker.h"
#include "Platform/Foundation/Message.h"

namespace vel {

/// Calls the callbacks of the host. The library uses this class as the host's resolver delegate and
/// view delegate. The session passes log lines, events and reports of the platform layer to this
/// class. Only the owning thread may use this class.
///
/// This class calls `log_line`, `will_appear` and `may_disappear` immediately. It adds all other
/// callbacks to the queue.
class CallbackDelegate final : public Class<CallbackDelegate, "CallbackDelegate", NSObject,
                                            ContentResolverDelegate, ContentViewDelegate> {
 public:
  explicit CallbackDelegate(const VelCallbacks& callbacks) : callbacks_(callbacks) {}

  /// The callbacks that are delayed until the running operation has finished.
  [[nodiscard]] CallbackQueue& queue() { return queue_; }

  /// Discards the waiting callbacks. Afterwards, this object calls no callback.
  void silence();

  // ContentResolverDelegate
  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& resolver,
                                                   const Strong<ContentData>& data) override;

  // ContentViewDelegate
  void contentViewWillAppear(const Strong<ContentView>& view) override;
  bool canContentViewDisappear(const Strong<ContentView>& view) override;
  void contentViewDidDisappear(const Strong<ContentView>& view) override;

  // Each of these functions calls one callback, or adds it to the queue.
  void logLine(std::string_view line);
  void recordEvent(std::string_view event);
  void reportRemainingControls(std::uint32_t controls);
  void requestControlsRemoval(std::uint32_t controls);
  void reportLostDisplay(std::string_view reason);
  void reportEnd(VelEndReason reason);

  /// The reason in a call of `ended` that waits in the queue; no value if none waits.
  [[nodiscard]] std::optional<VelEndReason> waitingEndReason() const { return waitingEndReason_; }

  /// Sets a function that is called when the view has disappeared. `did_disappear` is called only
  /// if the function returns true.
  void setDisappearanceHandler(std::function<bool()> handler) {
    disappearanceHandler_ = std::move(handler);
  }
  /// True if the host has agreed to the dismissal that is in progress.
  [[nodiscard]] bool hasAgreedToDismissal() const { return hasAgreedToDismissal_; }
  /// Records that no dismissal is in progress any more.
  void forgetDismissal() { hasAgreedToDismissal_ = false; }

  /// True if the latest call of `take_controls` has asked the host to remove controls.
  [[nodiscard]] bool hasTakenControls() const { return hasTakenControls_; }

  /// The latest log line.
  [[nodiscard]] const std::string& lastLogLine() const { return lastLogLine_; }

 private:
  VelCallbacks callbacks_;
  CallbackQueue queue_;
  std::function<bool()> disappearanceHandler_;
  bool hasAgreedToDismissal_ = false;
  bool hasTakenControls_ = false;
  std::optional<VelEndReason> waitingEndReason_;
  std::string lastLogLine_;
};

}  // namespace vel
