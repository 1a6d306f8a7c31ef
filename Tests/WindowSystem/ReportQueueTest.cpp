// The queue of a back end's reports.
#include <gmock/gmock.h>

#include <memory>

#include "Platform/WindowSystem/ReportQueue.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kFirstWindow = static_cast<WindowHandle>(1);
constexpr auto kSecondWindow = static_cast<WindowHandle>(2);

ReportQueue::Report focusMovedTo(WindowHandle window) {
  return [window](WindowSystemDelegate& delegate) { delegate.focusMoved(window); };
}

class ReportQueueTest : public testing::Test {
 protected:
  void SetUp() override { queue_->setDelegate(&reports_); }

  std::unique_ptr<ReportQueue> queue_ = std::make_unique<ReportQueue>();
  ReportListener reports_;
};

TEST_F(ReportQueueTest, AddingAReportDoesNotCallTheDelegate) {
  queue_->add(kFirstWindow, focusMovedTo(kFirstWindow));
  EXPECT_THAT(reports_.lines, IsEmpty());
  EXPECT_FALSE(queue_->isEmpty());
}

TEST_F(ReportQueueTest, ReportsAreDeliveredInTheOrderInWhichTheyWereAdded) {
  queue_->add(kSecondWindow, focusMovedTo(kSecondWindow));
  queue_->add([](WindowSystemDelegate& delegate) { delegate.applicationDeactivated(); });
  queue_->add(kFirstWindow, focusMovedTo(kFirstWindow));
  EXPECT_TRUE(queue_->deliver());
  EXPECT_THAT(reports_.lines, ElementsAre("focus " + nameOf(kSecondWindow), "deactivated",
                                          "focus " + nameOf(kFirstWindow)));
  EXPECT_TRUE(queue_->isEmpty());
}

TEST_F(ReportQueueTest, DeliverReturnsFalseIfTheQueueIsEmpty) { EXPECT_FALSE(queue_->deliver()); }

TEST_F(ReportQueueTest, EachReportIsDeliveredOnce) {
  queue_->add(kFirstWindow, focusMovedTo(kFirstWindow));
  EXPECT_TRUE(queue_->deliver());
  EXPECT_FALSE(queue_->deliver());
  EXPECT_THAT(reports_.lines, ElementsAre("focus " + nameOf(kFirstWindow)));
}

TEST_F(ReportQueueTest, RemoveReportsRemovesTheReportsOfOneWindow) {
  queue_->add(kFirstWindow, focusMovedTo(kFirstWindow));
  queue_->add(kSecondWindow, focusMovedTo(kSecondWindow));
  queue_->add(kFirstWindow, focusMovedTo(kFirstWindow));
  queue_->removeReports(kFirstWindow);
  queue_->deliver();
  EXPECT_THAT(reports_.lines, ElementsAre("focus " + nameOf(kSecondWindow)));
}

TEST_F(ReportQueueTest, ReportsAreDiscardedWhileNoDelegateIsSet) {
  queue_->setDelegate(nullptr);
  queue_->add(kFirstWindow, focusMovedTo(kFirstWindow));
  EXPECT_TRUE(queue_->deliver());
  queue_->setDelegate(&reports_);
  EXPECT_FALSE(queue_->deliver());
  EXPECT_THAT(reports_.lines, IsEmpty());
}

TEST_F(ReportQueueTest, DeliverAlsoDeliversReportsThatAreAddedDuringDelivery) {
  queue_->add(kFirstWindow, [this](WindowSystemDelegate& delegate) {
    delegate.focusMoved(kFirstWindow);
    queue_->add(kSecondWindow, focusMovedTo(kSecondWindow));
  });
  queue_->deliver();
  EXPECT_THAT(reports_.lines,
              ElementsAre("focus " + nameOf(kFirstWindow), "focus " + nameOf(kSecondWindow)));
}

TEST_F(ReportQueueTest, TheDelegateMayRemoveReportsDuringDelivery) {
  queue_->add(kFirstWindow, [this](WindowSystemDelegate& delegate) {
    delegate.focusMoved(kFirstWindow);
    queue_->removeReports(kSecondWindow);
  });
  queue_->add(kSecondWindow, focusMovedTo(kSecondWindow));
  queue_->deliver();
  EXPECT_THAT(reports_.lines, ElementsAre("focus " + nameOf(kFirstWindow)));
}

TEST_F(ReportQueueTest, TheDelegateMayDestroyTheQueueDuringDelivery) {
  queue_->add([this](WindowSystemDelegate& delegate) {
    delegate.displayLost("test");
    queue_.reset();
  });
  queue_->add(kFirstWindow, focusMovedTo(kFirstWindow));
  EXPECT_TRUE(queue_->deliver());
  EXPECT_EQ(queue_, nullptr);
  EXPECT_EQ(reports_.lines.size(), 1U);
}

TEST_F(ReportQueueTest, ADelegateThatRemovesItselfReceivesNoMoreReports) {
  queue_->add([this](WindowSystemDelegate& delegate) {
    delegate.applicationDeactivated();
    queue_->setDelegate(nullptr);
  });
  queue_->add(kFirstWindow, focusMovedTo(kFirstWindow));
  queue_->deliver();
  EXPECT_THAT(reports_.lines, ElementsAre("deactivated"));
}

}  // namespace
}  // namespace vel::test
