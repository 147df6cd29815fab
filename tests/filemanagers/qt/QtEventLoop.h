// Qt's event loop in a test.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

// Turns the loop until the condition holds; false if it does not within the time that only a broken
// test takes.
template <typename Condition>
bool turnQtLoopUntil(Condition condition) {
  constexpr qint64 patience = 30'000;  // milliseconds
  QElapsedTimer time;
  time.start();
  QTimer waker;
  waker.start(20);
  bool holds = condition();
  while (!holds && time.elapsed() < patience) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    holds = condition();
  }
  return holds;
}
