// The terminal on POSIX systems.
#include "Host/Terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vel::host {

void openClosedStandardStreams() {
  // `open` uses the lowest free descriptor, so it opens the closed standard streams first.
  int descriptor = open("/dev/null", O_RDWR);
  while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
    descriptor = open("/dev/null", O_RDWR);
  }
  close(descriptor);
}

bool isOutputTerminal() { return isatty(STDOUT_FILENO) != 0; }

std::optional<std::size_t> terminalColumns() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
    return std::nullopt;
  }
  return size.ws_col;
}

}  // namespace vel::host
