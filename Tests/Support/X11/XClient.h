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

/// The picture of a part of the screen: what a user sees there.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;  // 0xRRGGBB, row by row

  [[nodiscard]] std::uint32_t at(int x, int y) const;
  /// How many pixels have each colour.
  [[nodiscard]] std::map<std::uint32_t, int> colors() const;
  [[nodiscard]] bool isAll(std::uint32_t color) const;
  /// The smallest rectangle that holds every pixel of another colour.
  [[nodiscard]] PixelRect otherThan(std::uint32_t color) const;
  bool operator==(const Picture&) const = default;
  /// One that somebody has saved as a PNG file.
  static Picture from(const std::string& file);
  /// Keeps it for people, as build/pictures/NAME.png below the tests' working directory.
  void keep(const std::string& name) const;
};

/// Another program on the display: it has windows of its own, looks at everybody's, and moves the
/// pointer. Nothing of the back end's state is shared with it.
class XClient : NonCopyable {
 public:
  explicit XClient(const std::string& display);
  ~XClient();

  [[nodiscard]] xcb_connection_t* get() const { return connection_; }
  [[nodiscard]] xcb_window_t root() const { return root_; }
  [[nodiscard]] xcb_atom_t atom(std::string_view name) const;

  /// A window on the root window, or in another one; filled with the colour and not mapped.
  xcb_window_t makeWindow(PixelRect frame, std::uint32_t color, xcb_window_t parent = 0);
  /// The same as a game has it: named, mapped, and waited for until it is on the screen.
  xcb_window_t openGame(PixelRect frame, std::uint32_t color);
  /// The same with a visual that has opacity; transparent.
  xcb_window_t openGameWithOpacity(PixelRect frame);
  void map(xcb_window_t window);
  void unmap(xcb_window_t window);
  void destroy(xcb_window_t window);
  void configure(xcb_window_t window, PixelRect frame);
  void raise(xcb_window_t window);
  void focus(xcb_window_t window);
  void fill(xcb_window_t window, std::uint32_t color);
  void selectEvents(xcb_window_t window, std::uint32_t events);
  /// The types of the events that have come since the last time.
  std::vector<int> events();
  /// Waits until the server has done everything asked so far.
  void settle();

  [[nodiscard]] std::optional<Property> property(xcb_window_t window, std::string_view name) const;
  void setProperty(xcb_window_t window, std::string_view name,
                   const std::optional<Property>& value);
  /// A property's numbers, none where it is absent.
  [[nodiscard]] std::vector<std::uint32_t> numbers(xcb_window_t window,
                                                   std::string_view name) const;
  /// The names of the atoms that a property lists.
  [[nodiscard]] std::vector<std::string> atomNames(xcb_window_t window,
                                                   std::string_view name) const;
  [[nodiscard]] PixelRect frameOf(xcb_window_t window) const;
  [[nodiscard]] bool isViewable(xcb_window_t window) const;
  [[nodiscard]] bool exists(xcb_window_t window) const;
  [[nodiscard]] xcb_window_t focused() const;
  [[nodiscard]] std::vector<xcb_window_t> children(xcb_window_t window) const;
  /// Sends a window a message of WM_PROTOCOLS, as a window manager does.
  void sendProtocol(xcb_window_t window, std::string_view protocol);
  /// Asks the window manager to close a window, as a taskbar does.
  void closeByManager(xcb_window_t window);
  /// Asks the window manager to bring a window to the front, as a taskbar does.
  void activateByManager(xcb_window_t window);
  /// Asks the window manager to miniaturise a window.
  void iconify(xcb_window_t window);
  /// The first window, front to back and outside in, whose WM_CLASS ends in the name or whose
  /// WM_NAME it is; 0 for none.
  [[nodiscard]] xcb_window_t find(std::string_view name, xcb_window_t in = 0) const;

  /// What is seen on the screen in a window's place.
  [[nodiscard]] Picture picture(xcb_window_t window) const;
  [[nodiscard]] Picture picture(PixelRect place) const;
  /// A window's own pixels, its children's included, with the opacity in the highest bits.
  [[nodiscard]] Picture pictureOfWindow(xcb_window_t window) const;

  void movePointer(int x, int y);
  void press();
  void release();
  void click(int x, int y);
  void pressKey(std::uint8_t code);
  /// Says of a window what toolkits say of theirs: that the user is at work in it.
  void noteUserTime(xcb_window_t window);
  /// The server's time, in milliseconds; read through a window of this program's.
  [[nodiscard]] xcb_timestamp_t time(xcb_window_t window);

  /// How many resources of each type all other clients have on the server.
  [[nodiscard]] std::map<std::string, unsigned> resourcesOf(xcb_window_t client) const;

 private:
  void sendMessage(xcb_window_t to, std::uint32_t mask, xcb_window_t window, std::string_view type,
                   std::uint32_t first, std::uint32_t second);
  void waitForPointer(const std::function<bool(const xcb_query_pointer_reply_t&)>& condition);
  void fake(std::uint8_t type, std::uint8_t detail, int x, int y);

  xcb_connection_t* connection_;
  xcb_window_t root_ = 0;
};

}  // namespace vel::test
