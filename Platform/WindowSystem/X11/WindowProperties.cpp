#include "Platform/WindowSystem/X11/WindowProperties.h"

#include <sys/utsname.h>
#include <unistd.h>
#include <xcb/xcb_icccm.h>

#include <array>
#include <string>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

void writeProperties(Connection& connection, xcb_window_t window,
                     const WindowDescription& description, xcb_window_t transientFor) {
  const auto write = [&connection, window](xcb_atom_t name, const Property& value) {
    changeProperty(connection, window, name, value);
  };
  const auto atom = [&connection](Atom name) { return connection.atom(name); };
  // The instance name and the class name.
  const std::string wmClass = description.className + '\0' + description.className + '\0';
  write(XCB_ATOM_WM_CLASS, Property::ofText(XCB_ATOM_STRING, wmClass));
  // Sets the field `input` to true: the window accepts the focus.
  constexpr std::array<std::uint32_t, XCB_ICCCM_NUM_WM_HINTS_ELEMENTS> kInputHints{
      XCB_ICCCM_WM_HINT_INPUT, 1};
  write(XCB_ATOM_WM_HINTS, Property::ofNumbers(XCB_ATOM_WM_HINTS, kInputHints));
  const std::array protocols{atom(Atom::WmDeleteWindow)};
  write(atom(Atom::WmProtocols), Property::ofNumbers(XCB_ATOM_ATOM, protocols));
  const std::array processId{static_cast<std::uint32_t>(getpid())};
  write(atom(Atom::NetWmPid), Property::ofNumbers(XCB_ATOM_CARDINAL, processId));
  if (utsname machine{}; uname(&machine) == 0) {  // _NET_WM_PID requires WM_CLIENT_MACHINE
    write(XCB_ATOM_WM_CLIENT_MACHINE,
          Property::ofText(XCB_ATOM_STRING, static_cast<const char*>(machine.nodename)));
  }
  const std::array type{atom(description.kind == WindowKind::Plain ? Atom::NetWmWindowTypeNormal
                                                                   : Atom::NetWmWindowTypeDialog)};
  write(atom(Atom::NetWmWindowType), Property::ofNumbers(XCB_ATOM_ATOM, type));
  if (transientFor != XCB_WINDOW_NONE) {
    const std::array owner{transientFor};
    write(XCB_ATOM_WM_TRANSIENT_FOR, Property::ofNumbers(XCB_ATOM_WINDOW, owner));
  }
  writeTitle(connection, window, description.title);
}

void writeTitle(Connection& connection, xcb_window_t window, std::string_view title) {
  const Property text = Property::ofText(connection.atom(Atom::Utf8String), title);
  changeProperty(connection, window, connection.atom(Atom::NetWmName), text);
  changeProperty(connection, window, XCB_ATOM_WM_NAME, text);
}

void writeModalState(Connection& connection, xcb_window_t window) {
  const std::array state{connection.atom(Atom::NetWmStateModal)};
  changeProperty(connection, window, connection.atom(Atom::NetWmState),
                 Property::ofNumbers(XCB_ATOM_ATOM, state));
}

}  // namespace vel::x11
