// Starts a program and reports when points of the screen became white, and when they stopped being
// white. It reacts to damage events and reads the pixels, so the watched program does no extra
// work.
//
//     watch X,Y[;X,Y...] -- PROGRAM ARGUMENTS...
//
// Prints one line of JSON. Times are nanoseconds of the monotonic clock:
//   "process_start"       the start of the program
//   "white_start"         when all points were white; 0 if they never were
//   "white_end"           when a point was no longer white; 0 if all points stayed white
//   "status"              the exit status of the program
//   "cpu_microseconds"    the processor time of the program
//   "voluntary_switches"  its voluntary context switches
// Then follow the timestamps that the program printed.
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "Benchmarks/OnScreen/MonotonicClock.h"
#include "Benchmarks/OnScreen/OwnedReply.h"

extern char** environ;

namespace {

using namespace vel::bench;

struct Point {
  std::int16_t x;
  std::int16_t y;
};

// The points on the screen, and when they were white.
class ScreenWatcher {
 public:
  explicit ScreenWatcher(std::vector<Point> points) : points_(std::move(points)) {
    if (xcb_connection_has_error(connection_) != 0) {
      std::fprintf(stderr, "watch: cannot open the display\n");
      std::exit(1);
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    const OwnedReply<xcb_damage_query_version_reply_t> version(xcb_damage_query_version_reply(
        connection_, xcb_damage_query_version(connection_, 1, 1), nullptr));
    const xcb_damage_damage_t damage = xcb_generate_id(connection_);
    xcb_damage_create(connection_, damage, root_, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    // The reply shows that the server reports damage from now on.
    static_cast<void>(areAllWhite());
  }

  [[nodiscard]] int descriptor() const { return xcb_get_file_descriptor(connection_); }
  [[nodiscard]] std::int64_t whiteStart() const { return whiteStart_; }
  [[nodiscard]] std::int64_t whiteEnd() const { return whiteEnd_; }

  /// Reads the pixels if something was drawn since the last call.
  void handleDamage() {
    bool isDamaged = false;
    while (const OwnedReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
      isDamaged = true;
    }
    if (!isDamaged) {
      return;
    }
    const bool isWhite = areAllWhite();
    if (isWhite && whiteStart_ == 0) {
      whiteStart_ = readClock();
    } else if (!isWhite && whiteStart_ != 0 && whiteEnd_ == 0) {
      whiteEnd_ = readClock();
    }
  }

  /// Waits until a point is no longer white, for at most one second.
  void waitForWhiteEnd() {
    for (int attempt = 0; whiteEnd_ == 0 && whiteStart_ != 0 && attempt < 100; ++attempt) {
      pollfd input{descriptor(), POLLIN, 0};
      poll(&input, 1, 10);
      handleDamage();
    }
  }

 private:
  [[nodiscard]] bool areAllWhite() const {
    for (const Point point : points_) {
      const OwnedReply<xcb_get_image_reply_t> image(xcb_get_image_reply(
          connection_,
          xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root_, point.x, point.y, 1, 1, ~0U),
          nullptr));
      if (image == nullptr) {
        return false;
      }
      const std::uint8_t* const pixel = xcb_get_image_data(image.get());
      if (pixel[0] != 255 || pixel[1] != 255 || pixel[2] != 255) {
        return false;
      }
    }
    return true;
  }

  std::vector<Point> points_;
  xcb_connection_t* connection_ = xcb_connect(nullptr, nullptr);
  xcb_window_t root_ = XCB_WINDOW_NONE;
  std::int64_t whiteStart_ = 0;
  std::int64_t whiteEnd_ = 0;
};

// The program, and what it has printed.
class Program {
 public:
  explicit Program(char** command) {
    int output[2];
    if (pipe2(output, O_CLOEXEC | O_NONBLOCK) != 0) {
      std::perror("watch");
      std::exit(1);
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    startTime_ = readClock();
    if (posix_spawn(&process_, command[0], &actions, nullptr, command, environ) != 0) {
      std::fprintf(stderr, "watch: cannot start %s\n", command[0]);
      std::exit(1);
    }
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    outputDescriptor_ = output[0];
  }

  [[nodiscard]] std::int64_t startTime() const { return startTime_; }
  [[nodiscard]] int descriptor() const { return outputDescriptor_; }
  [[nodiscard]] const std::string& output() const { return output_; }

  /// Returns false at the end of the output, which is the end of the program.
  bool readOutput() {
    char text[4096];
    const ssize_t length = read(outputDescriptor_, text, sizeof text);
    if (length > 0) {
      output_.append(text, static_cast<std::size_t>(length));
    }
    return length != 0;
  }

  /// Waits for the end of the program. Returns its exit status, or -1 if a signal ended it.
  int wait(rusage& usage) {
    int status = 0;
    wait4(process_, &status, 0, &usage);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t process_ = 0;
  int outputDescriptor_ = -1;
  std::int64_t startTime_ = 0;
  std::string output_;
};

std::vector<Point> parsePoints(const std::string& text) {
  std::vector<Point> points;
  std::istringstream list(text);
  for (std::string item; std::getline(list, item, ';');) {
    Point point{};
    if (std::sscanf(item.c_str(), "%hd,%hd", &point.x, &point.y) == 2) {
      points.push_back(point);
    }
  }
  return points;
}

std::int64_t microseconds(timeval time) {
  return std::int64_t{time.tv_sec} * 1'000'000 + time.tv_usec;
}

// Prints each line of the program's output as a member of the JSON object.
void printTimestamps(const std::string& output) {
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string name;
    words >> name;
    std::printf(R"(, "%s": [)", name.c_str());
    const char* separator = "";
    for (long long value = 0; words >> value; separator = ", ") {
      std::printf("%s%lld", separator, value);
    }
    std::printf("]");
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<Point> points = argc > 3 ? parsePoints(argv[1]) : std::vector<Point>();
  if (points.empty() || std::string(argv[2]) != "--") {
    std::fprintf(stderr, "usage: watch X,Y[;X,Y...] -- PROGRAM ARGUMENTS...\n");
    return 2;
  }
  ScreenWatcher screen(points);
  Program program(argv + 3);
  for (bool isRunning = true; isRunning;) {
    pollfd inputs[] = {{screen.descriptor(), POLLIN, 0}, {program.descriptor(), POLLIN, 0}};
    poll(inputs, 2, -1);
    screen.handleDamage();
    if (inputs[1].revents != 0) {
      isRunning = program.readOutput();
    }
  }
  rusage usage{};
  const int status = program.wait(usage);
  // The server may remove the program's windows after the program has ended.
  screen.waitForWhiteEnd();

  std::printf(R"({"process_start": %lld, "white_start": %lld, "white_end": %lld, "status": %d, )",
              static_cast<long long>(program.startTime()),
              static_cast<long long>(screen.whiteStart()),
              static_cast<long long>(screen.whiteEnd()), status);
  std::printf(R"("cpu_microseconds": %lld, "voluntary_switches": %ld)",
              static_cast<long long>(microseconds(usage.ru_utime) + microseconds(usage.ru_stime)),
              usage.ru_nvcsw);
  printTimestamps(program.output());
  std::printf("}\n");
  return 0;
}
