#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/ScreenCoordinates.h"

namespace vel::test {

using x11::PixelRect;
using x11::Property;

inline constexpr std::uint32_t kWhite = 0xFFFFFF;

/// The pixels of a window, of a PNG file or of an area of the screen.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;  // row by row; 0xRRGGBB, but 0xAARRGGBB from `windowPicture`

  [[nodiscard]] std::uint32_t at(int x, int y) const;
  /// The number of pixels of each colour.
  [[nodiscard]] std::map<std::uint32_t, int> colors() const;
  [[nodiscard]] bool isAll(std::uint32_t color) const;
  /// The bounding rectangle of the pixels of other colours. Empty if all pixels have this colour.
  [[nodiscard]] PixelRect boundsOfPixelsExcept(std::uint32_t color) const;
  bool operator==(const Picture&) const = default;
  static Picture readPng(const std::string& file);
  /// Writes the picture to build/pictures/NAME.png in the working directory, for manual inspection.
  void save(const std::string& name) const;
};

/// A client of the X server with its own connection, independent of the back end. It opens windows,
/// reads the state of all windows, moves the pointer and presses keys.
class XClient : NonCopyable {
 public:
  explicit XClient(const std::string& display);
  ~XClient();

  /// Call this if the X server of this object is the Xwayland of a compositor. The compositor is a
  /// client of another X server, the outer server. `client` is also a client of the outer server.
  /// It captures the screen, moves the pointer and presses keys for this object. A point must have
  /// the same coordinates on both servers.
  void setOuterClient(XClient& client) { outerClient_ = &client; }

  [[nodiscard]] xcb_connection_t* connection() const { return connection_; }
  [[nodiscard]] xcb_window_t root() const { return root_; }
  [[nodiscard]] xcb_atom_t atom(std::string_view name) const;

  /// Creates a window with a background colour and does not map it. The default parent is the root
  /// window.
  xcb_window_t makeWindow(PixelRect frame, std::uint32_t color, xcb_window_t parent = 0);
  /// Creates a window with the properties of a game, and maps it. Does not wait for a window
  /// manager.
  xcb_window_t openGameWindow(PixelRect frame, std::uint32_t color);
  /// Creates and maps a transparent window with a visual of depth 32. The default parent is the
  /// root window.
  xcb_window_t openTransparentWindow(PixelRect frame, xcb_window_t parent = 0);
  void map(xcb_window_t window);
  void unmap(xcb_window_t window);
  void destroy(xcb_window_t window);
  void configure(xcb_window_t window, PixelRect frame);
  void raise(xcb_window_t window);
  void focus(xcb_window_t window);
  void fill(xcb_window_t window, std::uint32_t color);
  void selectEvents(xcb_window_t window, std::uint32_t events);
  /// Returns the types of the events that have arrived since the previous call.
  std::vector<int> takeEventTypes();
  /// Waits until the server has executed all requests of this client.
  void waitForServer();

  [[nodiscard]] std::optional<Property> property(xcb_window_t window, std::string_view name) const;
  void setProperty(xcb_window_t window, std::string_view name,
                   const std::optional<Property>& value);
  /// The property's numbers; empty if the window does not have the property.
  [[nodiscard]] std::vector<std::uint32_t> numbers(xcb_window_t window,
                                                   std::string_view name) const;
  /// The names of the property's atoms; empty if the window does not have the property.
  [[nodiscard]] std::vector<std::string> atomNames(xcb_window_t window,
                                                   std::string_view name) const;

  /// The window's area on the screen, without the window manager's frame.
  [[nodiscard]] PixelRect areaOnScreen(xcb_window_t window) const;
  [[nodiscard]] bool isViewable(xcb_window_t window) const;
  [[nodiscard]] bool exists(xcb_window_t window) const;
  [[nodiscard]] xcb_window_t focusedWindow() const;
  [[nodiscard]] std::vector<xcb_window_t> children(xcb_window_t window) const;
  /// Sends the window a WM_PROTOCOLS message, as a window manager does.
  void sendProtocolMessage(xcb_window_t window, std::string_view protocol);
  /// Sends `_NET_CLOSE_WINDOW` to the window manager, as a taskbar does.
  void requestClose(xcb_window_t window);
  /// Sends `_NET_ACTIVE_WINDOW` to the window manager, as a taskbar does.
  void requestActivation(xcb_window_t window);
  /// Sends `WM_CHANGE_STATE` to the window manager to miniaturise the window.
  void requestIconify(xcb_window_t window);
  /// Sends `_NET_WM_STATE` to the window manager to add one or two states, as the program that
  /// owns the window does.
  void requestAddStates(xcb_window_t window, std::string_view state,
                        std::string_view secondState = "");
  /// Sends `_NET_WM_STATE` to remove one or two states.
  void requestRemoveStates(xcb_window_t window, std::string_view state,
                           std::string_view secondState = "");
  /// Sends `_NET_WM_STATE` to toggle one or two states.
  void requestToggleStates(xcb_window_t window, std::string_view state,
                           std::string_view secondState = "");
  /// Returns the first descendant of `ancestor` whose class or WM_NAME is `classOrTitle`. Returns 0
  /// if there is no such descendant. Searches depth first, topmost window first. The default for
  /// `ancestor` is the root window.
  [[nodiscard]] xcb_window_t findWindow(std::string_view classOrTitle,
                                        xcb_window_t ancestor = 0) const;

  [[nodiscard]] PixelRect screenArea() const { return areaOnScreen(root_); }
  /// The pixels of the screen in the window's area. The picture is empty unless the whole area is
  /// on the screen. After `setOuterClient`, the picture also shows the pointer, unless the pointer
  /// is in the lower right corner of the screen. `click` leaves the pointer in this corner.
  [[nodiscard]] Picture screenPicture(xcb_window_t window) const;
  [[nodiscard]] Picture screenPicture(PixelRect area) const;
  /// The pixels of the window and its children, with the alpha in the top byte.
  [[nodiscard]] Picture windowPicture(xcb_window_t window) const;

  void movePointer(int x, int y);
  void pressButton();
  void releaseButton();
  void click(int x, int y);
  /// Presses and releases a key.
  void typeKey(std::uint8_t code);
  /// Sets `_NET_WM_USER_TIME` to the current time, as toolkits do when they receive user input.
  void updateUserTime(xcb_window_t window);
  /// The server's time in milliseconds. `window` must be a window of this client.
  [[nodiscard]] xcb_timestamp_t serverTime(xcb_window_t window);

  /// Counts the server resources of the client that created `window`. The keys are the names of the
  /// resource types.
  [[nodiscard]] std::map<std::string, unsigned> clientResourceCounts(xcb_window_t window) const;

 private:
  void sendStateRequest(xcb_window_t window, std::uint32_t action, std::string_view state,
                        std::string_view secondState);
  void sendMessage(xcb_window_t destination, std::uint32_t eventMask, xcb_window_t window,
                   std::string_view type, std::uint32_t data0, std::uint32_t data1,
                   std::uint32_t data2 = 0, std::uint32_t data3 = 0);
  void waitForPointer(const std::function<bool(const xcb_query_pointer_reply_t&)>& condition);
  void sendFakeInput(std::uint8_t type, std::uint8_t detail, int x, int y);

  XClient* outerClient_ = nullptr;  // null unless `setOuterClient` has been called
  xcb_connection_t* connection_;
  xcb_window_t root_ = 0;
};

}  // namespace vel::test
