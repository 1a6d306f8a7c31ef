// Other programs identify the process of a window by two properties.
#include <unistd.h>

#include <array>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

class X11OwnProcess : public X11Test {};

TEST_F(X11OwnProcess, OwnWindowsHaveTheHostNameAndTheProcessId) {
  const xcb_window_t window =
      idOf(openOwnWindow({.className = "Ours", .title = "", .frame = {{0, 0}, {10, 10}}}));
  std::array<char, 256> hostName{};
  ASSERT_EQ(gethostname(hostName.data(), hostName.size()), 0);
  EXPECT_EQ(client.property(window, "WM_CLIENT_MACHINE"),
            Property::ofText(XCB_ATOM_STRING, hostName.data()));
  EXPECT_EQ(client.numbers(window, "_NET_WM_PID"),
            std::vector{static_cast<std::uint32_t>(getpid())});
}

}  // namespace
}  // namespace vel::test
