// Qt 6: a splash screen and a timer.
#include <QApplication>
#include <QEventLoop>
#include <QPixmap>
#include <QSplashScreen>
#include <QTimer>
#include <memory>
#include <optional>

#include "Benchmarks/OnScreen/Programs/timestamps.h"

namespace {

std::unique_ptr<QSplashScreen> showWindow(int x, int y, int width, int height) {
  QPixmap picture(width, height);
  picture.fill(Qt::white);
  auto splash = std::make_unique<QSplashScreen>(picture);
  splash->move(x, y);
  splash->show();
  return splash;
}

void runLoop(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

void showFirstWindow() {
  auto splash = showWindow(FIRST_X, FIRST_Y, FIRST_WIDTH, FIRST_HEIGHT);
  runLoop(FIRST_MILLISECONDS);
  splash.reset();
  runLoop(PAUSE_MILLISECONDS);
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments = parse_arguments(argc, argv);
  std::optional<QApplication> application;
  if (arguments.mode != MODE_COLD) {
    application.emplace(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    showFirstWindow();
  }
  show_start = read_clock();
  if (arguments.mode == MODE_COLD) {
    application.emplace(argc, argv);
  }
  const auto splash = showWindow(arguments.x, arguments.y, arguments.width, arguments.height);
  show_end = read_clock();
  QTimer timer;
  timer.setTimerType(Qt::PreciseTimer);
  QObject::connect(&timer, &QTimer::timeout, [&] {
    record_tick();
    if (tick_count >= arguments.ticks) {
      hide_start = read_clock();
      splash->close();
      QApplication::quit();
    }
  });
  timer.start(100);
  QApplication::exec();
  print_timestamps();
  return 0;
}
