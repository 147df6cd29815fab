#include "filemanagers/dolphin/LocalPath.h"

#include <QFile>

namespace filemanagers {

std::string pathOf(const QUrl &url) {
  if (!url.isLocalFile()) {
    return "";
  }
  return QFile::encodeName(url.adjusted(QUrl::StripTrailingSlash).toLocalFile()).toStdString();
}

QUrl urlOf(const std::string &path) {
  return QUrl::fromLocalFile(QFile::decodeName(QByteArray::fromStdString(path)));
}

}  // namespace filemanagers
