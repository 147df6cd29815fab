// Qt's URLs of items as the client's paths, and back.
#pragma once

#include <QUrl>
#include <string>

namespace filemanagers {

// The path of a local item, without a trailing slash; empty for any other.
std::string pathOf(const QUrl &url);

QUrl urlOf(const std::string &path);

}  // namespace filemanagers
