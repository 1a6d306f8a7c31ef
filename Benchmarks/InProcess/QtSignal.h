// A signal and a slot, as Qt's own compiler needs them.
#pragma once

#include <QObject>
#include <cstdint>

namespace vel::bench {

class QtSender : public QObject {
  Q_OBJECT
 signals:
  void ticked();
};

class QtListener : public QObject {
  Q_OBJECT
 public slots:
  void hear() { ++heard; }

 public:
  std::int64_t heard = 0;
};

}  // namespace vel::bench
