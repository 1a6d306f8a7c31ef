// A host is a program whose window `launchscreen` covers. This host has one bad habit.
//
// usage: hosts-badhost HABIT [WIDTH HEIGHT]
//
// Draws a moving pattern. The pattern contains no white, because the cover is white. Prints the id
// of each window that it opens. When the user closes the window, the host prints "close" and ends.
//
// These habits act on SIGUSR1:
// - "resize" asks for a larger size.
// - "maximise" asks the window manager to maximise the window.
// - "fullscreen" asks the window manager to make the window fullscreen.
// - "toggle" asks the window manager to toggle the maximised state.
// - "remap" unmaps the window and maps it again.
// - "recreate" opens a new window and destroys the old window.
// The next SIGUSR1 undoes "resize", "maximise", "fullscreen" and "toggle".
//
// These habits act from the start:
// - "none" does nothing unusual.
// - "redirect" selects SubstructureRedirect on its own window.
// - "inferiors" draws with IncludeInferiors.
// - "raise" raises its child windows every millisecond.
// - "argb" has a translucent window.
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::uint32_t kGreen = 0xFF208040;
constexpr std::uint32_t kBlue = 0xFF204080;
constexpr std::uint32_t kTranslucentGreen = 0x80104020;  // premultiplied
constexpr std::uint32_t kTranslucentBlue = 0x80102040;
constexpr std::uint32_t kRed = 0xFF802020;
constexpr std::uint16_t kDefaultWidth = 640;
constexpr std::uint16_t kDefaultHeight = 480;
constexpr std::int16_t kLeft = 100;
constexpr std::int16_t kTop = 80;
constexpr std::uint16_t kStripeWidth = 16;

// The actions and states of a _NET_WM_STATE message.
constexpr std::uint32_t kRemove = 0;
constexpr std::uint32_t kAdd = 1;
constexpr std::uint32_t kToggle = 2;
constexpr const char* kMaximizedVert = "_NET_WM_STATE_MAXIMIZED_VERT";
constexpr const char* kMaximizedHorz = "_NET_WM_STATE_MAXIMIZED_HORZ";

struct Free {
  void operator()(void* memory) const { std::free(memory); }  // NOLINT(cppcoreguidelines-no-malloc)
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

class BadHost {
 public:
  BadHost(xcb_connection_t* connection, std::string habit, std::uint16_t width,
          std::uint16_t height)
      : connection_(connection),
        screen_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data),
        habit_(std::move(habit)),
        initialWidth_(width),
        initialHeight_(height) {
    findVisual();
    openWindow();
  }

  /// Draws the next frame.
  void draw() {
    ++frame_;
    const auto offset = static_cast<std::int16_t>(frame_ % (2 * kStripeWidth));
    std::vector<xcb_rectangle_t> stripes;
    const xcb_rectangle_t wholeWindow{0, 0, currentWidth_, currentHeight_};
    for (int x = offset - 2 * kStripeWidth; x < currentWidth_; x += 2 * kStripeWidth) {
      stripes.push_back({static_cast<std::int16_t>(x), 0, kStripeWidth, currentHeight_});
    }
    setForeground(isTranslucent() ? kTranslucentGreen : kGreen);
    xcb_poly_fill_rectangle(connection_, window_, context_, 1, &wholeWindow);
    setForeground(isTranslucent() ? kTranslucentBlue : kBlue);
    xcb_poly_fill_rectangle(connection_, window_, context_,
                            static_cast<std::uint32_t>(stripes.size()), stripes.data());
    xcb_flush(connection_);
  }

  void raiseChildren() {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    for (const xcb_window_t child : children_) {
      xcb_configure_window(connection_, child, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    }
    xcb_flush(connection_);
  }

  /// Performs the action of a habit that acts on SIGUSR1. Does nothing for the other habits.
  void performHabit() {
    isChanged_ = !isChanged_;
    if (habit_ == "resize") {
      const std::array<std::uint32_t, 2> size{initialWidth_ + (isChanged_ ? 160U : 0U),
                                              initialHeight_ + (isChanged_ ? 120U : 0U)};
      xcb_configure_window(connection_, window_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                           size.data());
    } else if (habit_ == "maximise") {
      changeState(isChanged_ ? kAdd : kRemove, kMaximizedVert, kMaximizedHorz);
    } else if (habit_ == "toggle") {
      changeState(kToggle, kMaximizedVert, kMaximizedHorz);
    } else if (habit_ == "fullscreen") {
      changeState(isChanged_ ? kAdd : kRemove, "_NET_WM_STATE_FULLSCREEN", "");
    } else if (habit_ == "remap") {
      remap();
    } else if (habit_ == "recreate") {
      const xcb_window_t oldWindow = window_;
      openWindow();
      xcb_destroy_window(connection_, oldWindow);
    }
    xcb_flush(connection_);
  }

  /// Handles the events that the server has sent. Returns false if the user has closed the window
  /// or the connection has failed.
  bool handleEvents() {
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
      const int type = event->response_type & 0x7F;
      if (type == XCB_CONFIGURE_NOTIFY) {
        const auto& notify = *reinterpret_cast<const xcb_configure_notify_event_t*>(event.get());
        if (notify.window == window_) {
          currentWidth_ = notify.width;
          currentHeight_ = notify.height;
        }
      } else if (type == XCB_CLIENT_MESSAGE) {
        const auto& message = *reinterpret_cast<const xcb_client_message_event_t*>(event.get());
        if (message.data.data32[0] == atom("WM_DELETE_WINDOW")) {
          std::puts("close");
          return false;
        }
      }
    }
    return xcb_connection_has_error(connection_) == 0;
  }

  [[nodiscard]] bool raisesChildren() const { return habit_ == "raise"; }

 private:
  [[nodiscard]] bool isTranslucent() const { return habit_ == "argb"; }

  void findVisual() {
    visual_ = screen_->root_visual;
    depth_ = screen_->root_depth;
    if (!isTranslucent()) {
      return;
    }
    for (auto depths = xcb_screen_allowed_depths_iterator(screen_); depths.rem != 0;
         xcb_depth_next(&depths)) {
      const auto visuals = xcb_depth_visuals_iterator(depths.data);
      if (depths.data->depth == 32 && visuals.rem != 0) {
        visual_ = visuals.data->visual_id;
        depth_ = 32;
        return;
      }
    }
  }

  xcb_atom_t atom(const std::string& name) {
    const auto entry = atoms_.find(name);
    if (entry != atoms_.end()) {
      return entry->second;
    }
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection_,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return atoms_[name] = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }

  void setForeground(std::uint32_t color) {
    xcb_change_gc(connection_, context_, XCB_GC_FOREGROUND, &color);
  }

  void setTextProperty(xcb_atom_t property, std::string_view text) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, property, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
  }

  void openWindow() {
    const xcb_colormap_t colormap = xcb_generate_id(connection_);
    xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colormap, screen_->root, visual_);
    std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    if (habit_ == "redirect") {
      events |= XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    }
    const std::array<std::uint32_t, 4> values{isTranslucent() ? kTranslucentGreen : kGreen,
                                              isTranslucent() ? 0 : screen_->black_pixel, events,
                                              colormap};
    window_ = xcb_generate_id(connection_);
    xcb_create_window(connection_, depth_, window_, screen_->root, kLeft, kTop, initialWidth_,
                      initialHeight_, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual_,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                      values.data());
    currentWidth_ = initialWidth_;
    currentHeight_ = initialHeight_;
    setTextProperty(XCB_ATOM_WM_NAME, "badhost " + habit_);
    setTextProperty(XCB_ATOM_WM_CLASS, std::string_view("badhost\0BadHost\0", 16));
    const xcb_atom_t deleteWindow = atom("WM_DELETE_WINDOW");
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atom("WM_PROTOCOLS"),
                        XCB_ATOM_ATOM, 32, 1, &deleteWindow);
    // The flags PPosition, PSize and PWinGravity, and their values.
    const std::array<std::uint32_t, 18> sizeHints{(1U << 2U) | (1U << 3U) | (1U << 9U),
                                                  kLeft,
                                                  kTop,
                                                  initialWidth_,
                                                  initialHeight_,
                                                  0,
                                                  0,
                                                  0,
                                                  0,
                                                  0,
                                                  0,
                                                  0,
                                                  0,
                                                  0,
                                                  0,
                                                  0,
                                                  0,
                                                  XCB_GRAVITY_NORTH_WEST};
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, sizeHints.size(), sizeHints.data());
    // InputHint: the window relies on the window manager for the keyboard focus.
    const std::array<std::uint32_t, 9> wmHints{1, 1, 0, 0, 0, 0, 0, 0, 0};
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_HINTS,
                        XCB_ATOM_WM_HINTS, 32, wmHints.size(), wmHints.data());
    std::uint32_t subwindowMode = habit_ == "inferiors" ? XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS
                                                        : XCB_SUBWINDOW_MODE_CLIP_BY_CHILDREN;
    context_ = xcb_generate_id(connection_);
    xcb_create_gc(connection_, context_, window_, XCB_GC_SUBWINDOW_MODE, &subwindowMode);
    if (raisesChildren()) {
      addChildren();
    }
    xcb_map_window(connection_, window_);
    xcb_flush(connection_);
    std::printf("window 0x%x\n", window_);
    std::fflush(stdout);
  }

  void addChildren() {
    children_.clear();
    for (std::int16_t index = 0; index < 2; ++index) {
      const xcb_window_t child = xcb_generate_id(connection_);
      const std::uint32_t color = kRed;
      xcb_create_window(connection_, depth_, child, window_,
                        static_cast<std::int16_t>(40 + index * 300), 60, 240, 360, 0,
                        XCB_WINDOW_CLASS_INPUT_OUTPUT, visual_, XCB_CW_BACK_PIXEL, &color);
      xcb_map_window(connection_, child);
      children_.push_back(child);
    }
  }

  void changeState(std::uint32_t action, const std::string& firstState,
                   const std::string& secondState) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window_;
    message.type = atom("_NET_WM_STATE");
    message.data.data32[0] = action;
    message.data.data32[1] = atom(firstState);
    message.data.data32[2] = secondState.empty() ? 0 : atom(secondState);
    message.data.data32[3] = 1;  // the source of the request: an application
    xcb_send_event(connection_, 0, screen_->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
  }

  /// Withdraws the window as ICCCM section 4.1.4 describes, and maps it 100 milliseconds later.
  void remap() {
    xcb_unmap_notify_event_t notify{};
    notify.response_type = XCB_UNMAP_NOTIFY;
    notify.event = screen_->root;
    notify.window = window_;
    xcb_unmap_window(connection_, window_);
    xcb_send_event(connection_, 0, screen_->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&notify));
    xcb_flush(connection_);
    const timespec pause{0, 100'000'000};
    nanosleep(&pause, nullptr);
    xcb_map_window(connection_, window_);
  }

  xcb_connection_t* connection_;
  xcb_screen_t* screen_;
  std::string habit_;
  std::uint16_t initialWidth_;
  std::uint16_t initialHeight_;
  std::uint16_t currentWidth_ = 0;
  std::uint16_t currentHeight_ = 0;
  std::uint8_t depth_ = 0;
  xcb_visualid_t visual_ = 0;
  xcb_window_t window_ = 0;
  xcb_gcontext_t context_ = 0;
  std::vector<xcb_window_t> children_;
  std::map<std::string, xcb_atom_t> atoms_;
  unsigned frame_ = 0;
  bool isChanged_ = false;  // true after the first, third, ... SIGUSR1
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4) {
    std::fputs("usage: hosts-badhost HABIT [WIDTH HEIGHT]\n", stderr);
    return 2;
  }
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGUSR1);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  const int signalDescriptor = signalfd(-1, &signals, SFD_CLOEXEC);
  xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(connection) != 0) {
    std::fputs("hosts-badhost: no display\n", stderr);
    return 1;
  }
  const bool hasSize = argc == 4;
  BadHost host(
      connection, argv[1],
      static_cast<std::uint16_t>(hasSize ? std::strtol(argv[2], nullptr, 10) : kDefaultWidth),
      static_cast<std::uint16_t>(hasSize ? std::strtol(argv[3], nullptr, 10) : kDefaultHeight));
  const int frameTime = host.raisesChildren() ? 1 : 16;  // milliseconds
  pollfd input{signalDescriptor, POLLIN, 0};
  while (host.handleEvents()) {
    if (host.raisesChildren()) {
      host.raiseChildren();
    }
    host.draw();
    if (poll(&input, 1, frameTime) > 0) {
      signalfd_siginfo information{};
      if (read(signalDescriptor, &information, sizeof information) == sizeof information) {
        host.performHabit();
      }
    }
  }
  xcb_disconnect(connection);
  return 0;
}
