// The Wayland server that RecordingCompositor runs in a child process.
#pragma once

#include <filesystem>

namespace vel::test {

/// Accepts clients on the socket `wayland-1` in `folder`. Executes the commands that arrive on the
/// socket `control` and sends a reply to each one. Returns when the other end of `control` is
/// closed.
void runRecordingServer(const std::filesystem::path& folder, int control);

}  // namespace vel::test
