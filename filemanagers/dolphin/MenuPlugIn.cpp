#include "filemanagers/dolphin/MenuPlugIn.h"

#include <QCoreApplication>

namespace filemanagers {

MenuPlugIn &MenuPlugIn::instance() {
  static MenuPlugIn &plugIn = *new MenuPlugIn;  // NOLINT: the application's
  return plugIn;
}

MenuPlugIn::MenuPlugIn()
    : QObject(QCoreApplication::instance()),
      client_(link_, mainLoop_, {.redraw = {}, .menuChanged = [this] { Q_EMIT menuChanged(); }}) {
  link_.open(client_);
}

}  // namespace filemanagers
