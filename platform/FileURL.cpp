#include "platform/FileURL.h"

namespace platform {

namespace {

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

std::string textOfPath(const std::string &path, bool isDirectory) {
  std::string text = file_url_coding::textOfPath(path);
  if (isDirectory && text.back() != '/') {
    text += '/';
  }
  return text;
}

}  // namespace

FileURL::FileURL(std::string text, std::string path)
    : text_(std::move(text)), path_(withoutTrailingSlashes(std::move(path))) {}

std::optional<FileURL> FileURL::fromText(std::string text) {
  std::optional<std::string> path = file_url_coding::pathOfText(text);
  if (!path) {
    return std::nullopt;
  }
  return FileURL(std::move(text), *std::move(path));
}

FileURL FileURL::fromPath(std::string_view path, bool isDirectory) {
  std::string trimmed = withoutTrailingSlashes(std::string(path));
  std::string text = platform::textOfPath(trimmed, isDirectory);
  return {std::move(text), std::move(trimmed)};
}

FileURL FileURL::appendingPathComponent(std::string_view component, bool isDirectory) const {
  // The text that is already there stays as it is; only the new component is encoded.
  const std::string encoded = platform::textOfPath("/" + std::string(component), isDirectory);
  static const std::size_t prefixLength = file_url_coding::textOfPath("/").size();
  std::string text = text_;
  std::string path = path_;
  for (std::string *parent : {&text, &path}) {
    if (parent->back() != '/') {
      *parent += '/';
    }
  }
  text.append(encoded, prefixLength);
  path += component;
  return {std::move(text), std::move(path)};
}

std::optional<FileURL> FileURL::deletingLastPathComponent() const {
  if (path_ == "/") {
    return std::nullopt;
  }
  const std::string trimmed = withoutTrailingSlashes(text_);
  return FileURL(trimmed.substr(0, trimmed.rfind('/') + 1), path_.substr(0, path_.rfind('/') + 1));
}

}  // namespace platform
