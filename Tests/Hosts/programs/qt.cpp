// A Qt game. Builds with Qt 5 and Qt 6.
#include <QtCore/QTimer>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

namespace {

class Game : public QWidget {
 public:
  Game() {
    setWindowTitle("hosts-qt");
    resize(640, 480);
    move(100, 80);
    connect(&timer_, &QTimer::timeout, this, [this] {
      ++frame_;
      update();
    });
    timer_.start(33);
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(40, 80, 40));
    painter.fillRect(frame_ * 4 % width(), 40, 80, 80, QColor(160, 60, 40));
  }

 private:
  QTimer timer_;
  int frame_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  Game game;
  game.show();
  return QApplication::exec();
}
