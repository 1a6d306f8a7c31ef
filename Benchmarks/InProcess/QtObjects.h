// A Qt signal and a Qt slot. Qt's meta-object compiler requires them in a header.
#pragma once

#include <QObject>
#include <cstdint>

namespace vel::bench {

class QtSender : public QObject {
  Q_OBJECT
 signals:
  void tickOccurred();
};

class QtReceiver : public QObject {
  Q_OBJECT
 public slots:
  void countCall() { ++callCount; }

 public:
  std::int64_t callCount = 0;
};

}  // namespace vel::bench
