// File URLs: from texts, from paths and from names. A path survives being written as a URL.
#include <algorithm>

#include "fuzz/support/Input.h"
#include "fuzz/support/Promise.h"
#include "platform/FileURL.h"

using platform::FileURL;

namespace {

void checkURL(const FileURL &url) {
  const std::string &path = url.path();
  mustHold(path.starts_with('/'), "the path of a URL is absolute");
  mustHold(path == "/" || !path.ends_with('/'), "the path of a URL has no slash at its end");
  mustHold(path.find('\0') == std::string::npos, "the path of a URL holds no NUL byte");
  const auto again = FileURL::fromText(url.text());
  mustHold(again && *again == url && again->path() == path, "a URL's text names its path");
}

// The folders above it, up to "/".
void climb(FileURL url) {
  while (const auto parent = url.deletingLastPathComponent()) {
    checkURL(*parent);
    mustHold(parent->path().size() < url.path().size(), "a folder's path is shorter");
    mustHold(parent->text().ends_with('/'), "a folder's URL ends in a slash");
    url = *parent;
  }
  mustHold(url.path() == "/", "the last folder is the root");
}

void tryText(std::string_view text) {
  const auto url = FileURL::fromText(std::string(text));
  if (!url) {
    return;
  }
  mustHold(url->text() == text, "a URL keeps its text");
  checkURL(*url);
  climb(*url);
  const FileURL own = FileURL::fromPath(url->path());
  mustHold(own.path() == url->path(), "a path read from a URL can be written as one");
}

void tryPath(const std::string &path) {
  std::string trimmed = path;
  while (trimmed.size() > 1 && trimmed.ends_with('/')) {
    trimmed.pop_back();
  }
  for (const bool isDirectory : {false, true}) {
    const FileURL url = FileURL::fromPath(path, isDirectory);
    checkURL(url);
    mustHold(url.path() == trimmed, "a path survives being written as a URL");
    mustHold(!isDirectory || url.text().ends_with('/'), "a directory's URL ends in a slash");
    climb(url);
  }
}

void tryName(const std::string &name) {
  const FileURL folder = FileURL::fromPath("/folder with % and ü", /*isDirectory=*/true);
  for (const bool isDirectory : {false, true}) {
    const FileURL item = folder.appendingPathComponent(name, isDirectory);
    checkURL(item);
    mustHold(item.path() == folder.path() + "/" + name, "a name survives being appended");
    mustHold(item.text().starts_with(folder.text()), "the folder's text stays as it is");
    mustHold(item.deletingLastPathComponent() == folder, "an item's folder is where it is");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const std::string_view input = textOfInput(bytes, size);
  tryText(input);
  std::string name(input);
  std::erase(name, '\0');
  tryPath("/" + name);
  std::erase(name, '/');
  if (!name.empty()) {
    tryName(name);
  }
  return 0;
}
