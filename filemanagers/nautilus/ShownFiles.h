// Which of the file manager's file objects stand for the shown items. An item is shown for as long
// as its object lives, which no reference here prolongs. For the main thread alone.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include <glib-object.h>

#include "platform/linux/GLibHandles.h"

namespace filemanagers {

class ShownFiles {
 public:
  // `gone` is called when the object that was added last for a path is.
  explicit ShownFiles(std::function<void(const std::string &path)> gone);

  // The object stands for that path from now on; an object that was renamed has stood for another.
  void add(GObject *file, const std::string &path);

  // The object that was added last for the path; null for none.
  GObject *find(const std::string &path) const;

  // Of each folder one path, of a file of which the predicate holds.
  std::map<std::string, std::string> pathsByFolder(
      const std::function<bool(GObject *)> &predicate) const;

  // What is shown of the folder is gone, although its objects live on. Returns these.
  std::vector<platform::ObjectHandle<GObject>> removeFolder(const std::string &folder);

 private:
  struct Mark;

  const std::function<void(const std::string &path)> gone_;
  std::unordered_map<std::string, GObject *> files_;
};

}  // namespace filemanagers
