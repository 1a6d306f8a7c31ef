// Calls of the C functions on the owning thread, which has created the launch screen, and on other
// threads.
#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/ReleasePool.h"
#include "Tests/Bindings/CScreen.h"

namespace vel::test {
namespace {

using CThreadTest = CBindingTest;

TEST_F(CThreadTest, FunctionsForTheOwningThreadReturnAnErrorOnAnotherThread) {
  const VelRequest request = makeRequest("launch_end", 1);
  std::vector<VelStatus> statuses;
  std::string error;
  VelLaunchScreen* handleCopy = screen;
  std::thread([&] {
    int number = 0;
    double seconds = 0;
    VelPause reason = VEL_PAUSE_NONE;
    VelState state = VEL_STATE_NONE;
    statuses = {vel_request(screen, &request),
                vel_request_json(screen, "{}", 2),
                vel_present(screen, VEL_PRESENT_EMBEDDED),
                vel_resized(screen, 1, 1),
                vel_pump(screen, &number),
                vel_run(screen, 0),
                vel_poll_descriptor(screen, &number),
                vel_next_deadline(screen, &seconds),
                vel_seconds_left(screen, &seconds),
                vel_is_up(screen, &number),
                vel_pause_reason(screen, &reason),
                vel_state(screen, &state),
                vel_destroy(&handleCopy)};
    error = vel_last_error();
  }).join();
  EXPECT_THAT(statuses, testing::Each(VEL_WRONG_THREAD));
  EXPECT_NE(error, "");
  EXPECT_EQ(handleCopy, screen);
  EXPECT_EQ(state(), VEL_STATE_NONE);
}

TEST_F(CThreadTest, EachThreadHasItsOwnLastError) {
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_NOTHING_TO_PRESENT);
  std::string errorOnOtherThread = "?";
  std::thread([&] { errorOnOtherThread = vel_last_error(); }).join();
  EXPECT_EQ(errorOnOtherThread, "");
  EXPECT_STREQ(vel_last_error(), "no request has been loaded");
}

TEST_F(CThreadTest, TheNextPumpCarriesOutADismissalFromAnotherThread) {
  present(VEL_PRESENT_EMBEDDED, 60, "skip");
  std::thread([this] { EXPECT_EQ(vel_dismiss(screen), VEL_OK); }).join();
  EXPECT_EQ(host.callbackLines.back(), "will_appear");
  EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), "did_disappear");
  // The cover stays for one second after did_disappear.
  EXPECT_TRUE(isUp());
}

TEST_F(CThreadTest, ADismissalFromAnotherThreadWakesVelRun) {
  VelCreateOptions options = virtualTimeOptions(&callbacks);
  options.time = VEL_TIME_REAL;
  createAgain(options);
  present(VEL_PRESENT_EMBEDDED, 10'000, "skip");
  host.onCallback = [this](const std::string& callback) {
    if (callback == "did_disappear") {
      vel_destroy(&screen);
    }
  };
  std::thread dismisser([handle = screen] { vel_dismiss(handle); });
  EXPECT_EQ(vel_run(screen, 10'000), VEL_OK);
  dismisser.join();
  EXPECT_EQ(screen, nullptr);
}

TEST_F(CThreadTest, TwoThreadsCanDismissWhileTheOwningThreadRecreatesTheLaunchScreen) {
  std::atomic<VelLaunchScreen*> currentScreen = screen;
  std::atomic<bool> isFinished = false;
  std::atomic<int> callCount = 0;
  const auto dismissRepeatedly = [&] {
    while (!isFinished) {
      const VelStatus status = vel_dismiss(currentScreen);
      EXPECT_TRUE(status == VEL_OK || status == VEL_NOT_ALIVE) << status;
      ++callCount;
      std::this_thread::yield();
    }
  };
  std::thread firstThread(dismissRepeatedly);
  std::thread secondThread(dismissRepeatedly);
  const VelCreateOptions options = virtualTimeOptions(&callbacks);
  for (int round = 0; round < 200 || callCount < 1000; ++round) {
    const VelRequest request = makeRequest("launch_end", 1, round % 2 == 0 ? "skip" : nullptr);
    EXPECT_EQ(vel_request(screen, &request), VEL_OK);
    EXPECT_EQ(vel_present(screen, VEL_PRESENT_MODAL), VEL_OK);
    EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
    ASSERT_EQ(vel_destroy(&screen), VEL_OK);
    ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
    currentScreen = screen;
  }
  isFinished = true;
  firstThread.join();
  secondThread.join();
}

/// Calls a function when it is destroyed.
class DestructionObserver final : public Class<DestructionObserver, "DestructionObserver"> {
 public:
  explicit DestructionObserver(std::function<void()> work) : work_(std::move(work)) {}
  ~DestructionObserver() override { work_(); }

 private:
  std::function<void()> work_;
};

TEST_F(CThreadTest, NoOtherThreadCanCreateALaunchScreenUntilVelDestroyReturns) {
  VelStatus statusOnOtherThread = VEL_OK;
  // The last step of vel_destroy drains the release pool, which destroys the observer.
  ReleasePool::currentPool().add(make<DestructionObserver>([&statusOnOtherThread] {
    std::thread([&statusOnOtherThread] {
      const VelCreateOptions options = virtualTimeOptions();
      VelLaunchScreen* otherScreen = nullptr;
      statusOnOtherThread = vel_create(&options, &otherScreen);
      vel_destroy(&otherScreen);
    }).join();
  }));
  EXPECT_EQ(vel_destroy(&screen), VEL_OK);
  EXPECT_EQ(statusOnOtherThread, VEL_ALREADY_EXISTS);
}

TEST(OwningThreadTest, AnotherThreadCanDestroyAfterTheOwningThreadHasEnded) {
  CHost host;
  const VelCallbacks callbacks = host.callbacks();
  const VelCreateOptions options = virtualTimeOptions(&callbacks);
  VelLaunchScreen* screen = nullptr;
  std::thread([&] {
    ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
    const VelRequest request = makeRequest("launch_end", 1);
    EXPECT_EQ(vel_request(screen, &request), VEL_OK);
    EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_OK);
  }).join();
  // The new thread may get the same identifier as the owning thread, which has ended.
  std::thread([&] {
    EXPECT_EQ(vel_pump(screen, nullptr), VEL_WRONG_THREAD);
    EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  }).join();
  VelLaunchScreen* otherScreen = nullptr;
  EXPECT_EQ(vel_create(&options, &otherScreen), VEL_ALREADY_EXISTS);
  EXPECT_EQ(vel_destroy(&screen), VEL_OK) << vel_last_error();
  EXPECT_EQ(screen, nullptr);
  EXPECT_EQ(host.callbackLines.back(), "ended 5");  // VEL_END_DESTROYED
  EXPECT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
  EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
  EXPECT_EQ(vel_destroy(&screen), VEL_OK);
}

TEST(OwningThreadTest, NoOtherThreadCanDestroyBeforeTheOwningThreadHasEnded) {
  const VelCreateOptions options = virtualTimeOptions();
  VelLaunchScreen* screen = nullptr;
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
  std::thread([&] { EXPECT_EQ(vel_destroy(&screen), VEL_WRONG_THREAD); }).join();
  EXPECT_EQ(vel_destroy(&screen), VEL_OK);
}

TEST(OwningThreadTest, AnyThreadCanOwnALaunchScreen) {
  const auto runLaunchScreen = [] {
    CHost host;
    const VelCallbacks callbacks = host.callbacks();
    const VelCreateOptions options = virtualTimeOptions(&callbacks);
    VelLaunchScreen* screen = nullptr;
    ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
    const VelRequest request = makeRequest("launch_end", 1);
    EXPECT_EQ(vel_request(screen, &request), VEL_OK);
    EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_OK);
    EXPECT_EQ(vel_run(screen, 5), VEL_OK);
    EXPECT_EQ(host.callbackLines.back(), "ended 1");  // VEL_END_TIME_USED_UP
    EXPECT_EQ(vel_destroy(&screen), VEL_OK);
  };
  std::thread(runLaunchScreen).join();
  std::thread(runLaunchScreen).join();
  runLaunchScreen();
}

}  // namespace
}  // namespace vel::test
