// Calls of the C interface from inside callbacks. Inside log_line, will_appear and may_disappear,
// vel_request and vel_present return VEL_BUSY, because the library has not finished its current
// operation. Inside every other callback, vel_request and vel_present work.
//
// The tests of vel_dismiss use mode "skip", in which the host may dismiss the launch screen at any
// time.
#include <algorithm>

#include "Tests/Bindings/CScreen.h"

namespace vel::test {
namespace {

/// The parameter is the presentation of both launch screens.
class NextScreenInDidDisappearTest : public CBindingTest,
                                     public testing::WithParamInterface<VelPresentation> {
 protected:
  NextScreenInDidDisappearTest() {
    VelCreateOptions options = virtualTimeOptions(&callbacks);
    options.content_controller = 1;  // A sheet requires a content controller.
    createAgain(options);
  }
};

TEST_P(NextScreenInDidDisappearTest, TheNextLaunchScreenIsShownForItsRequestedTime) {
  bool hasPresentedNext = false;
  host.onCallback = [&](const std::string& callback) {
    if (callback == "did_disappear" && !hasPresentedNext) {
      hasPresentedNext = true;
      const VelRequest request = makeRequest("next_end", 2);
      EXPECT_EQ(vel_request(screen, &request), VEL_OK) << vel_last_error();
      EXPECT_EQ(vel_present(screen, GetParam()), VEL_OK) << vel_last_error();
      EXPECT_TRUE(isUp());
    }
  };
  present(GetParam(), 1);
  ASSERT_EQ(vel_run(screen, 1.1), VEL_OK);
  ASSERT_TRUE(hasPresentedNext);
  EXPECT_TRUE(isUp());
  EXPECT_EQ(secondsLeft(), 2);
  ASSERT_EQ(vel_run(screen, 1), VEL_OK);
  EXPECT_NEAR(secondsLeft(), 1, 1e-9);
  EXPECT_TRUE(isUp());
  ASSERT_EQ(vel_run(screen, 10), VEL_OK);
  EXPECT_FALSE(isUp());
  EXPECT_EQ(std::ranges::count(host.callbackLines, "did_disappear"), 2);
}

INSTANTIATE_TEST_SUITE_P(Presentation, NextScreenInDidDisappearTest,
                         testing::Values(VEL_PRESENT_EMBEDDED, VEL_PRESENT_SHEET,
                                         VEL_PRESENT_MODAL));

class CallsInCallbacksTest : public CBindingTest {
 protected:
  /// Requests and presents another launch screen in the first call of the callback `name`. Stores
  /// both results.
  void requestAndPresentIn(const std::string& name) {
    host.onCallback = [this, name](const std::string& callback) {
      if (callback == name && requestStatus == -1) {
        const VelRequest request = makeRequest("next_end", 7);
        requestStatus = vel_request(screen, &request);
        presentStatus = vel_present(screen, VEL_PRESENT_MODAL);
      }
    };
  }

  int requestStatus = -1;
  int presentStatus = -1;
};

TEST_F(CallsInCallbacksTest, RequestAndPresentReturnBusyInsideLogLineOfPresent) {
  requestAndPresentIn("log_line");
  present(VEL_PRESENT_MODAL, 1);
  EXPECT_EQ(requestStatus, VEL_BUSY);
  EXPECT_EQ(presentStatus, VEL_BUSY);
  EXPECT_EQ(secondsLeft(), 1);
  ASSERT_EQ(vel_run(screen, 3), VEL_OK);
  EXPECT_FALSE(isUp());
  const VelRequest request = makeRequest("next_end", 2);
  EXPECT_EQ(vel_request(screen, &request), VEL_OK);
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_MODAL), VEL_OK);
  ASSERT_EQ(vel_run(screen, 3), VEL_OK);
  EXPECT_FALSE(isUp());
}

TEST_F(CallsInCallbacksTest, RequestAndPresentReturnBusyInsideLogLineOfARefusedRequest) {
  requestAndPresentIn("log_line");
  const VelRequest request = makeRequest("launch_end", 0);
  EXPECT_EQ(vel_request(screen, &request), VEL_REFUSED);
  EXPECT_EQ(requestStatus, VEL_BUSY);
  EXPECT_EQ(presentStatus, VEL_BUSY);
  EXPECT_EQ(state(), VEL_STATE_NONE);
}

TEST_F(CallsInCallbacksTest, RequestAndPresentReturnBusyInsideWillAppear) {
  requestAndPresentIn("will_appear");
  present(VEL_PRESENT_MODAL, 1);
  EXPECT_EQ(requestStatus, VEL_BUSY);
  EXPECT_EQ(presentStatus, VEL_BUSY);
  ASSERT_EQ(vel_run(screen, 3), VEL_OK);
  EXPECT_FALSE(isUp());
}

TEST_F(CallsInCallbacksTest, RequestAndPresentReturnBusyInsideMayDisappear) {
  requestAndPresentIn("may_disappear");
  present(VEL_PRESENT_MODAL, 1);
  ASSERT_EQ(vel_run(screen, 3), VEL_OK);
  EXPECT_EQ(requestStatus, VEL_BUSY);
  EXPECT_EQ(presentStatus, VEL_BUSY);
  EXPECT_FALSE(isUp());
}

TEST_F(CallsInCallbacksTest, PresentSucceedsInsideStateChanged) {
  host.onCallback = [this](const std::string& callback) {
    if (callback == "state_changed") {
      presentStatus = vel_present(screen, VEL_PRESENT_MODAL);
    }
  };
  const VelRequest request = makeRequest("launch_end", 1);
  EXPECT_EQ(vel_request(screen, &request), VEL_OK);
  EXPECT_EQ(presentStatus, VEL_OK);
  ASSERT_EQ(vel_run(screen, 3), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), "record_event launch_end");
  EXPECT_EQ(std::ranges::count(host.callbackLines, "ended 1"), 1);  // VEL_END_TIME_USED_UP
}

TEST_F(CallsInCallbacksTest, ADismissalInsideWillAppearTakesEffectInTheNextPump) {
  VelStatus dismissStatus = VEL_INTERNAL_ERROR;
  host.onCallback = [&](const std::string& callback) {
    if (callback == "will_appear") {
      dismissStatus = vel_dismiss(screen);
    }
  };
  present(VEL_PRESENT_MODAL, 60, "skip");
  EXPECT_EQ(dismissStatus, VEL_OK);
  EXPECT_TRUE(isUp());
  EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
  EXPECT_FALSE(isUp());
}

TEST_F(CallsInCallbacksTest, ADismissalInsideMayDisappearIsIgnored) {
  host.onCallback = [this](const std::string& callback) {
    if (callback == "may_disappear") {
      EXPECT_EQ(vel_dismiss(screen), VEL_OK);
    }
  };
  present(VEL_PRESENT_MODAL, 60, "skip");
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  EXPECT_EQ(std::ranges::count(host.callbackLines, "may_disappear"), 1);
  ASSERT_EQ(vel_run(screen, 3), VEL_OK);
  EXPECT_EQ(std::ranges::count(host.callbackLines, "may_disappear"), 1);
  EXPECT_EQ(std::ranges::count(host.callbackLines, "did_disappear"), 1);
}

// Without a content controller, an embedded launch screen is removed one second after
// did_disappear.
TEST_F(CallsInCallbacksTest, ASecondDismissalBeforeTheLaunchScreenIsRemovedChangesNothing) {
  present(VEL_PRESENT_EMBEDDED, 60, "skip");
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  ASSERT_TRUE(isUp());
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  ASSERT_EQ(vel_run(screen, 3), VEL_OK);
  EXPECT_EQ(std::ranges::count(host.callbackLines, "did_disappear"), 1);
  EXPECT_FALSE(isUp());
}

TEST_F(CallsInCallbacksTest, AnErrorInsideACallbackIsClearedWhenTheOuterCallSucceeds) {
  host.onCallback = [this](const std::string& callback) {
    if (callback == "will_appear" || callback == "state_changed") {
      EXPECT_EQ(vel_run(screen, -1), VEL_INVALID_ARGUMENT);
      EXPECT_STRNE(vel_last_error(), "");
    }
  };
  const VelRequest request = makeRequest("launch_end", 1);
  EXPECT_EQ(vel_request(screen, &request), VEL_OK);
  EXPECT_STREQ(vel_last_error(), "");
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_MODAL), VEL_OK);
  EXPECT_STREQ(vel_last_error(), "");
}

}  // namespace
}  // namespace vel::test
