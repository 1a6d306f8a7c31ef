#include "Tests/Bindings/CScreen.h"

#include "Platform/AppKit/NSApplication.h"

namespace vel::test {

namespace {

CHost& hostOf(void* userData) { return *static_cast<CHost*>(userData); }

}  // namespace

void CHost::recordCallback(const std::string& callback, const std::string& details) {
  callbackLines.push_back(details.empty() ? callback : callback + " " + details);
  if (onCallback) {
    onCallback(callback);
  }
}

VelCallbacks CHost::callbacks() {
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  callbacks.user_data = this;
  callbacks.state_changed = [](void* userData, VelState state, const char* error) {
    hostOf(userData).recordCallback(
        "state_changed",
        std::to_string(state) + (error != nullptr ? std::string(" ") + error : ""));
  };
  callbacks.will_appear = [](void* userData) { hostOf(userData).recordCallback("will_appear"); };
  callbacks.may_disappear = [](void* userData) {
    hostOf(userData).recordCallback("may_disappear");
    return hostOf(userData).mayDisappear ? 1 : 0;
  };
  callbacks.did_disappear = [](void* userData) {
    hostOf(userData).recordCallback("did_disappear");
  };
  callbacks.record_event = [](void* userData, const char* event) {
    hostOf(userData).recordCallback("record_event", event);
  };
  callbacks.log_line = [](void* userData, const char* line) {
    hostOf(userData).log.emplace_back(line);
    if (hostOf(userData).onCallback) {
      hostOf(userData).onCallback("log_line");
    }
  };
  callbacks.controls_kept = [](void* userData, std::uint32_t controls) {
    hostOf(userData).recordCallback("controls_kept", std::to_string(controls));
  };
  callbacks.display_lost = [](void* userData, const char* reason) {
    hostOf(userData).recordCallback("display_lost", reason);
  };
  callbacks.take_controls = [](void* userData, std::uint32_t controls) {
    hostOf(userData).recordCallback("take_controls", std::to_string(controls));
  };
  callbacks.ended = [](void* userData, VelEndReason reason) {
    hostOf(userData).recordCallback("ended", std::to_string(reason));
  };
  return callbacks;
}

VelCreateOptions virtualTimeOptions(const VelCallbacks* callbacks) {
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  options.display = "headless";
  options.time = VEL_TIME_VIRTUAL;
  options.callbacks = callbacks;
  return options;
}

VelRequest makeRequest(const char* event, double seconds, const char* mode) {
  VelRequest request = VEL_REQUEST_INIT;
  request.event = event;
  request.seconds = seconds;
  request.mode = mode;
  return request;
}

HeadlessWindowSystem& windowSystem() {
  return dynamic_cast<HeadlessWindowSystem&>(NSApp->windowSystem());
}

CBindingTest::CBindingTest() {
  const VelCreateOptions options = virtualTimeOptions(&callbacks);
  EXPECT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
}

CBindingTest::~CBindingTest() { vel_destroy(&screen); }

void CBindingTest::createAgain(const VelCreateOptions& options) {
  ASSERT_EQ(vel_destroy(&screen), VEL_OK);
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
}

void CBindingTest::present(VelPresentation presentation, double seconds, const char* mode) {
  const VelRequest request = makeRequest("launch_end", seconds, mode);
  ASSERT_EQ(vel_request(screen, &request), VEL_OK) << vel_last_error();
  ASSERT_EQ(vel_present(screen, presentation), VEL_OK) << vel_last_error();
}

double CBindingTest::secondsLeft() const {
  double seconds = -1000;
  EXPECT_EQ(vel_seconds_left(screen, &seconds), VEL_OK);
  return seconds;
}

bool CBindingTest::isUp() const {
  int upFlag = -1;
  EXPECT_EQ(vel_is_up(screen, &upFlag), VEL_OK);
  return upFlag == 1;
}

VelPause CBindingTest::pauseReason() const {
  VelPause reason = VEL_PAUSE_NONE;
  EXPECT_EQ(vel_pause_reason(screen, &reason), VEL_OK);
  return reason;
}

VelState CBindingTest::state() const {
  VelState state = VEL_STATE_NONE;
  EXPECT_EQ(vel_state(screen, &state), VEL_OK);
  return state;
}

}  // namespace vel::test
