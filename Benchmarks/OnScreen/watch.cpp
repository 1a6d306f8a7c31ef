// Starts a program and says when a place on the screen became white, and when it ceased to be: by
// damage events, so that looking costs the program nothing, and by the pixels themselves.
//
//     watch X,Y[;X,Y...] -- PROGRAM ARGUMENTS...
//
// Prints one line of JSON: times in nanoseconds of the steady clock ("started", "white": all places
// are, "gone": one is not any more), whether all places were white ever, the stamps that the
// program printed, and what it used.
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
#include <ctime>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace {

struct Freed {
  void operator()(void* memory) const { std::free(memory); }
};
template <class Reply>
using FromServer = std::unique_ptr<Reply, Freed>;

struct Place {
  std::int16_t x;
  std::int16_t y;
};

std::int64_t now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

class Screen {
 public:
  explicit Screen(std::vector<Place> places) : places_(std::move(places)) {
    if (xcb_connection_has_error(connection_) != 0) {
      std::fprintf(stderr, "watch: no display\n");
      std::exit(1);
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    const FromServer<xcb_damage_query_version_reply_t> version(xcb_damage_query_version_reply(
        connection_, xcb_damage_query_version(connection_, 1, 1), nullptr));
    damage_ = xcb_generate_id(connection_);
    xcb_damage_create(connection_, damage_, root_, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    static_cast<void>(allWhite());  // the server has done all of the above
  }

  [[nodiscard]] int descriptor() const { return xcb_get_file_descriptor(connection_); }

  /// Whether anything was drawn since the last time.
  bool takeDamage() {
    bool came = false;
    while (const FromServer<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
      came = true;
    }
    return came;
  }

  [[nodiscard]] bool allWhite() const {
    for (const Place place : places_) {
      const FromServer<xcb_get_image_reply_t> image(xcb_get_image_reply(
          connection_,
          xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root_, place.x, place.y, 1, 1, ~0U),
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

 private:
  std::vector<Place> places_;
  xcb_connection_t* connection_ = xcb_connect(nullptr, nullptr);
  xcb_window_t root_ = XCB_WINDOW_NONE;
  xcb_damage_damage_t damage_ = XCB_NONE;
};

std::vector<Place> placesFrom(const std::string& text) {
  std::vector<Place> places;
  std::istringstream list(text);
  for (std::string one; std::getline(list, one, ';');) {
    Place place{};
    if (std::sscanf(one.c_str(), "%hd,%hd", &place.x, &place.y) == 2) {
      places.push_back(place);
    }
  }
  return places;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<Place> places = argc > 3 ? placesFrom(argv[1]) : std::vector<Place>();
  if (places.empty() || std::string(argv[2]) != "--") {
    std::fprintf(stderr, "usage: watch X,Y[;X,Y...] -- PROGRAM ARGUMENTS...\n");
    return 2;
  }
  Screen screen(places);
  int output[2];
  if (pipe2(output, O_CLOEXEC | O_NONBLOCK) != 0) {
    return 1;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  pid_t program = 0;
  const std::int64_t started = now();
  if (posix_spawn(&program, argv[3], &actions, nullptr, argv + 3, environ) != 0) {
    std::fprintf(stderr, "watch: cannot start %s\n", argv[3]);
    return 1;
  }
  close(output[1]);

  std::int64_t white = 0;
  std::int64_t gone = 0;
  std::string printed;
  // The end of the program's output is the program's end.
  for (bool runs = true; runs;) {
    pollfd inputs[] = {{screen.descriptor(), POLLIN, 0}, {output[0], POLLIN, 0}};
    poll(inputs, 2, -1);
    if (screen.takeDamage()) {
      const bool isWhite = screen.allWhite();
      if (isWhite && white == 0) {
        white = now();
      } else if (!isWhite && white != 0 && gone == 0) {
        gone = now();
      }
    }
    if (inputs[1].revents != 0) {
      char text[4096];
      const ssize_t length = read(output[0], text, sizeof text);
      if (length > 0) {
        printed.append(text, static_cast<std::size_t>(length));
      }
      runs = length != 0;
    }
  }
  int status = 0;
  rusage used{};
  wait4(program, &status, 0, &used);
  // What the server does at the end of a connection comes a little later.
  for (int looks = 0; gone == 0 && white != 0 && looks < 100; ++looks) {
    pollfd input{screen.descriptor(), POLLIN, 0};
    poll(&input, 1, 10);
    if (screen.takeDamage() && !screen.allWhite()) {
      gone = now();
    }
  }

  const auto microseconds = [](timeval time) {
    return std::int64_t{time.tv_sec} * 1'000'000 + time.tv_usec;
  };
  std::printf(R"({"started": %lld, "white": %lld, "gone": %lld, "status": %d, )",
              static_cast<long long>(started), static_cast<long long>(white),
              static_cast<long long>(gone), WIFEXITED(status) ? WEXITSTATUS(status) : -1);
  std::printf(R"("microseconds": %lld, "switches": %ld)",
              static_cast<long long>(microseconds(used.ru_utime) + microseconds(used.ru_stime)),
              used.ru_nvcsw);
  std::istringstream lines(printed);
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
  std::printf("}\n");
  return 0;
}
