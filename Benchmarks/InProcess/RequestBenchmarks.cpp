// Requests, contents and windows, compared with plain code that computes the same result.
#include <benchmark/benchmark.h>
#include <glib.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Benchmarks/InProcess/Fixtures.h"
#include "Benchmarks/InProcess/RunningApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel::bench {
namespace {

// Parses the parameters of a request.

void parseWithLibrary(benchmark::State& state) {
  const RunningApplication application(std::make_unique<VirtualClock>());
  const auto manager = LaunchScreenManager::init();
  const auto parameters = NSDictionary::dictionaryWithEntries(
      {{"mode", NSString::stringWithUTF8String("skip")},
       {"event", NSString::stringWithUTF8String("launch_end")},
       {"max_duration_time", NSString::stringWithUTF8String("5.5")}});
  for (auto _ : state) {
    benchmark::DoNotOptimize(manager->parseParameters(parameters));
  }
  manager->deactivate();
}
BENCHMARK(parseWithLibrary)->Name("parse a request/library");

void parseWithPlainCode(benchmark::State& state) {
  const std::map<std::string, std::string, std::less<>> parameters{
      {"mode", "skip"}, {"event", "launch_end"}, {"max_duration_time", "5.5"}};
  bool isSkipMode = false;
  std::string event;
  double duration = 0;
  for (auto _ : state) {
    if (const auto entry = parameters.find("mode"); entry != parameters.end()) {
      isSkipMode = entry->second == "skip";
    }
    if (const auto entry = parameters.find("event"); entry != parameters.end()) {
      event = entry->second;
    }
    if (const auto entry = parameters.find("max_duration_time"); entry != parameters.end()) {
      duration = static_cast<double>(std::strtof(entry->second.c_str(), nullptr));
    }
    benchmark::DoNotOptimize(isSkipMode);
    benchmark::DoNotOptimize(event);
    benchmark::DoNotOptimize(duration);
  }
}
BENCHMARK(parseWithPlainCode)->Name("parse a request/plain");

void parseWithGLib(benchmark::State& state) {
  GHashTable* const parameters = g_hash_table_new(g_str_hash, g_str_equal);
  const auto insert = [&](const char* key, const char* value) {
    g_hash_table_insert(parameters, const_cast<char*>(key), const_cast<char*>(value));
  };
  insert("mode", "skip");
  insert("event", "launch_end");
  insert("max_duration_time", "5.5");
  const auto find = [&](const char* key) {
    return static_cast<const char*>(g_hash_table_lookup(parameters, key));
  };
  for (auto _ : state) {
    benchmark::DoNotOptimize(g_str_equal(find("mode"), "skip"));
    char* const event = g_strdup(find("event"));
    benchmark::DoNotOptimize(event);
    benchmark::DoNotOptimize(g_ascii_strtod(find("max_duration_time"), nullptr));
    g_free(event);
  }
  g_hash_table_unref(parameters);
}
BENCHMARK(parseWithGLib)->Name("parse a request/GLib");

// Creates a manager, loads the content of a request, and destroys both.

void loadContentWithLibrary(benchmark::State& state) {
  const RunningApplication application(std::make_unique<VirtualClock>());
  const auto request = makeRequest("launch_end", 5);
  for (auto _ : state) {
    const auto manager = LaunchScreenManager::init();
    const auto view =
        manager->contentViewForContentData(manager->contentDataForContentRequest(request));
    benchmark::DoNotOptimize(view);
    manager->deactivate();
    NSRunLoop::mainRunLoop().pump();
  }
}
BENCHMARK(loadContentWithLibrary)->Name("request to loaded content/library");

void loadContentWithPlainCode(benchmark::State& state) {
  struct Request {
    std::string event = "launch_end";
    double duration = 5;
  };
  struct Controller {
    double secondsLeft;
    std::vector<void*> delegates;
    std::unique_ptr<std::string> view = std::make_unique<std::string>("view");
  };
  struct Content {
    std::shared_ptr<Request> request;
    std::shared_ptr<Controller> controller;
    int state = 0;
  };
  struct Manager {
    std::shared_ptr<Content> content = std::make_shared<Content>();
    std::string event;
    double secondsLeft = 0;
  };
  const auto request = std::make_shared<Request>();
  for (auto _ : state) {
    const auto manager = std::make_shared<Manager>();
    manager->event = request->event;
    manager->secondsLeft = request->duration;
    manager->content->request = request;
    manager->content->controller =
        std::make_shared<Controller>(Controller{manager->secondsLeft, {}});
    manager->content->controller->delegates.push_back(manager.get());
    manager->content->state = 3;
    benchmark::DoNotOptimize(manager.get());
  }
}
BENCHMARK(loadContentWithPlainCode)->Name("request to loaded content/plain");

// `isRequiredWindow` (does the window show the cover?) and `tempItemRequired` (does any window show
// a cover?). The size is the number of open windows.

/// A number of windows, and a launch screen that can be presented over the first window.
class WindowsWithLaunchScreen : private NonCopyable {
 public:
  explicit WindowsWithLaunchScreen(std::int64_t count) {
    for (std::int64_t index = 0; index < count; ++index) {
      windows_.push_back(openWindow("PlayerWindow"));
    }
    view_ = loadContent(manager_, 5);
  }
  ~WindowsWithLaunchScreen() { manager_->deactivate(); }

  void present() {
    as<CVPresentationFullScreen>(view_->presentation())
        ->presentForWindowWithPresentationMode(windows_.front(), 0);
  }
  [[nodiscard]] const Strong<LaunchScreenManager>& manager() const { return manager_; }
  [[nodiscard]] const Strong<NSWindow>& lastWindow() const { return windows_.back(); }

 private:
  Strong<LaunchScreenManager> manager_ = LaunchScreenManager::init();
  std::vector<Strong<NSWindow>> windows_;
  Strong<ContentView> view_;
};

struct PlainWindow {
  std::string className = "PlayerWindow";
  std::vector<std::string> children;
};

bool hasCover(const PlainWindow& window) {
  for (const std::string& child : window.children) {
    if (child == "LaunchScreenViewController") {
      return true;
    }
  }
  return false;
}

void isRequiredWithLibrary(benchmark::State& state) {
  const RunningApplication application(std::make_unique<VirtualClock>());
  WindowsWithLaunchScreen windows(state.range(0));
  windows.present();
  for (auto _ : state) {
    benchmark::DoNotOptimize(windows.manager()->isRequiredWindow(windows.lastWindow()));
  }
}
BENCHMARK(isRequiredWithLibrary)->Name("isRequiredWindow/library")->Arg(1)->Arg(100)->Arg(10'000);

void isRequiredWithPlainCode(benchmark::State& state) {
  const std::vector<PlainWindow> windows(static_cast<std::size_t>(state.range(0)));
  const PlainWindow* windowWithCover = &windows.front();
  for (auto _ : state) {
    benchmark::DoNotOptimize(windowWithCover);
    benchmark::DoNotOptimize(&windows.back() == windowWithCover || hasCover(windows.back()));
  }
}
BENCHMARK(isRequiredWithPlainCode)->Name("isRequiredWindow/plain")->Arg(1)->Arg(100)->Arg(10'000);

void tempItemRequiredWithLibrary(benchmark::State& state) {
  const RunningApplication application(std::make_unique<VirtualClock>());
  const WindowsWithLaunchScreen windows(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(windows.manager()->tempItemRequired());
  }
}
BENCHMARK(tempItemRequiredWithLibrary)
    ->Name("tempItemRequired/library")
    ->Arg(1)
    ->Arg(100)
    ->Arg(10'000);

void tempItemRequiredWithPlainCode(benchmark::State& state) {
  const std::vector<PlainWindow> windows(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    bool isRequired = false;
    for (const PlainWindow& window : windows) {
      isRequired = isRequired || hasCover(window);
    }
    benchmark::DoNotOptimize(isRequired);
  }
}
BENCHMARK(tempItemRequiredWithPlainCode)
    ->Name("tempItemRequired/plain")
    ->Arg(1)
    ->Arg(100)
    ->Arg(10'000);

void tempItemRequiredWithGLib(benchmark::State& state) {
  GPtrArray* const windows = g_ptr_array_new_with_free_func(
      [](gpointer list) { g_ptr_array_unref(static_cast<GPtrArray*>(list)); });
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    g_ptr_array_add(windows, g_ptr_array_new());
  }
  for (auto _ : state) {
    bool isRequired = false;
    for (guint index = 0; index < windows->len; ++index) {
      auto* const children = static_cast<GPtrArray*>(g_ptr_array_index(windows, index));
      for (guint child = 0; child < children->len; ++child) {
        isRequired = isRequired ||
                     g_str_equal(g_ptr_array_index(children, child), "LaunchScreenViewController");
      }
    }
    benchmark::DoNotOptimize(isRequired);
  }
  g_ptr_array_unref(windows);
}
BENCHMARK(tempItemRequiredWithGLib)->Name("tempItemRequired/GLib")->Arg(1)->Arg(100)->Arg(10'000);

}  // namespace
}  // namespace vel::bench
