// The one object of Dolphin's process that knows the context menu. Dolphin makes an action plug-in
// for every window, at its first context menu, and they all share this. For the main thread alone.
#pragma once

#include <QObject>

#include "filemanagers/client/ExtensionClient.h"
#include "filemanagers/qt/QtBusLink.h"
#include "filemanagers/qt/QtMainLoop.h"

namespace filemanagers {

class MenuPlugIn final : public QObject {
  Q_OBJECT

 public:
  // Lives as long as the application.
  static MenuPlugIn &instance();

  ExtensionClient &client() { return client_; }

 Q_SIGNALS:
  // What the client's menu calls answer.
  void menuChanged();

 private:
  MenuPlugIn();

  QtMainLoop mainLoop_;
  QtBusLink link_;
  ExtensionClient client_;
};

}  // namespace filemanagers
