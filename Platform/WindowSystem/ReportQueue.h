#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {

/// The reports of a back end that receives events asynchronously. The back end adds reports at any
/// time and calls `deliver` from `deliverEvents`, so the delegate is never called from inside the
/// operation that caused a report. The back end owns the queue. All calls run on the main thread.
class ReportQueue final : public NonCopyable {
 public:
  /// Calls one operation of the delegate.
  using Report = std::function<void(WindowSystemDelegate&)>;

  ReportQueue();
  ~ReportQueue();

  /// Sets the receiver of the reports. The queue does not own the delegate. If the delegate is
  /// null, `deliver` discards the reports.
  void setDelegate(WindowSystemDelegate* delegate);

  /// Adds a report that is not about a particular window.
  void add(Report report);
  /// Adds a report about `window`.
  void add(WindowHandle window, Report report);
  /// Removes the undelivered reports about `window`. Call this when the window is released:
  /// otherwise the delegate would receive reports about a window that it has released.
  void removeReports(WindowHandle window);

  [[nodiscard]] bool isEmpty() const;

  /// Delivers the reports in the order in which they were added, including those that are added
  /// during delivery. Returns true if there were any reports. The delegate may destroy this object
  /// and its back end: the caller must not touch members of either afterwards.
  bool deliver();

 private:
  struct Entry {
    WindowHandle window;
    Report report;
  };
  struct State {
    std::deque<Entry> entries;
    WindowSystemDelegate* delegate = nullptr;
  };

  std::shared_ptr<State> state_;  // shared with a `deliver` in progress
};

}  // namespace vel
