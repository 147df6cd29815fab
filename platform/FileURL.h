// A file URL: a value that keeps its percent-encoded text and knows the path that the text names.
//
// Equality, order and hash are those of the text. A path is bytes: a name that is not valid UTF-8
// survives path -> URL -> path. A directory's URL usually ends in "/", but nothing relies on it.
// Immutable, so it may be shared between threads. No operation touches the file system.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace platform {

class FileURL {
 public:
  // None unless the text is a file URL on this host that names an absolute path.
  static std::optional<FileURL> fromText(std::string text);

  // `path` must be absolute and hold no NUL byte.
  static FileURL fromPath(std::string_view path, bool isDirectory = false);

  const std::string &text() const { return text_; }

  // The decoded path: absolute, without a trailing "/" (except "/" itself), not standardised.
  const std::string &path() const { return path_; }

  // `component` is a name, not encoded, without "/".
  FileURL appendingPathComponent(std::string_view component, bool isDirectory = false) const;

  // The folder that holds the item, as a directory URL; none for "/".
  std::optional<FileURL> deletingLastPathComponent() const;

  friend bool operator==(const FileURL &a, const FileURL &b) { return a.text_ == b.text_; }
  friend auto operator<=>(const FileURL &a, const FileURL &b) { return a.text_ <=> b.text_; }

 private:
  FileURL(std::string text, std::string path);

  std::string text_;
  std::string path_;
};

using FileURLSet = std::set<FileURL>;

// How file URLs are written on this system; each platform provides the two functions.
namespace file_url_coding {

// The text of the URL of an absolute path without a trailing "/".
std::string textOfPath(const std::string &path);

// The path that a URL's text names, decoded; none if it is not a file URL on this host.
std::optional<std::string> pathOfText(const std::string &text);

}  // namespace file_url_coding

}  // namespace platform

template <>
struct std::hash<platform::FileURL> {
  std::size_t operator()(const platform::FileURL &url) const noexcept {
    return std::hash<std::string>()(url.text());
  }
};
