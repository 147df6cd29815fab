#include "filemanagers/dolphin/OverlayIconPlugin.h"

#include <QHash>
#include <QStandardPaths>

#include "filemanagers/dolphin/LocalPath.h"

namespace filemanagers {

namespace {

// The file of the icon, since by their names Dolphin finds only icons whose folder was there when
// it started, and the extension makes that when it runs for the first time.
QString overlayOf(const QString &icon) {
  static QHash<QString, QString> found;  // there are few, and looking for one takes the disk
  QString &file = found[icon];
  if (file.isEmpty()) {
    file = QStandardPaths::locate(QStandardPaths::GenericDataLocation,
                                  "icons/hicolor/scalable/emblems/" + icon + ".svg");
  }
  return file.isEmpty() ? icon : file;
}

}  // namespace

OverlayIconPlugin::OverlayIconPlugin()
    : client_(link_, mainLoop_,
              {.redraw = [this](const std::string &path) { redraw(path); }, .menuChanged = [] {}}),
      items_(mainLoop_, {.redraw = [this](const std::string &path) { redraw(path); },
                         .leave = [this](const std::string &path) { client_.hideItem(path); }}) {
  link_.open(client_);
}

QStringList OverlayIconPlugin::getOverlays(const QUrl &item) {
  const std::string path = pathOf(item);
  if (path.empty() || !client_.isWorthwhile()) {
    return {};
  }
  items_.take(path);
  const std::string &icon = client_.showItem(path);
  return icon.empty() ? QStringList() : QStringList(overlayOf(QString::fromStdString(icon)));
}

// Dolphin then asks for the item, in the same call, if any window shows it. What it draws is that
// answer, not what is told here.
void OverlayIconPlugin::redraw(const std::string &path) {
  Q_EMIT overlaysChanged(urlOf(path), {});
}

}  // namespace filemanagers
