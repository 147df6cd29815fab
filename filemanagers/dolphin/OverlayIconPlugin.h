// What Dolphin loads once, when its first window opens, and asks for the badges of items.
#pragma once

#include <KOverlayIconPlugin>

#include "filemanagers/client/ExtensionClient.h"
#include "filemanagers/client/ItemProbe.h"
#include "filemanagers/qt/QtBusLink.h"
#include "filemanagers/qt/QtMainLoop.h"

namespace filemanagers {

class OverlayIconPlugin final : public KOverlayIconPlugin {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "com.morvane.v3.OverlayIconPlugin" FILE "halvern-dolphin-overlays.json")

 public:
  OverlayIconPlugin();

  QStringList getOverlays(const QUrl &item) override;

 private:
  void redraw(const std::string &path);

  QtMainLoop mainLoop_;
  QtBusLink link_;
  ExtensionClient client_;
  ItemProbe items_;
};

}  // namespace filemanagers
