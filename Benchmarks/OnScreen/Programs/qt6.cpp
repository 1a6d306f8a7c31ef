// Qt 6: a splash screen and a timer.
#include <QApplication>
#include <QPixmap>
#include <QSplashScreen>
#include <QTimer>

#include "Benchmarks/OnScreen/Programs/stamps.h"

int main(int argc, char** argv) {
  const Arguments arguments = arguments_of(argc, argv);
  QApplication application(argc, argv);
  stamp_called = stamp_now();
  QPixmap picture(arguments.width, arguments.height);
  picture.fill(Qt::white);
  QSplashScreen splash(picture);
  splash.move(arguments.x, arguments.y);
  splash.show();
  stamp_returned = stamp_now();
  QTimer timer;
  timer.setTimerType(Qt::PreciseTimer);
  QObject::connect(&timer, &QTimer::timeout, [&] {
    stamp_tick();
    if (stamp_tick_count >= arguments.tenths) {
      stamp_down = stamp_now();
      splash.close();
      QApplication::quit();
    }
  });
  timer.start(100);
  QApplication::exec();
  stamps_print();
  return 0;
}
