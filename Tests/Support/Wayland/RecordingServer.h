// The Wayland server that RecordingCompositor runs in a child process.
#pragma once

#include <filesystem>

namespace vel::test {

/// Accepts clients on the socket `wayland-1` in `folder`. `control` is the descriptor of a second
/// socket, which receives commands. The server executes each command and sends a reply. Returns
/// when the other end of `control` is closed.
void runRecordingServer(const std::filesystem::path& folder, int control);

}  // namespace vel::test
