#include "filemanagers/qt/QtMainLoop.h"

#include <QTimer>
#include <utility>

namespace filemanagers {

void QtMainLoop::callSoon(std::function<void()> function) {
  QTimer::singleShot(std::chrono::milliseconds(0), &context_, std::move(function));
}

// To the second, so that the system may wake up for several timers at once.
void QtMainLoop::callAfter(std::chrono::seconds delay, std::function<void()> function) {
  QTimer::singleShot(delay, Qt::VeryCoarseTimer, &context_, std::move(function));
}

}  // namespace filemanagers
