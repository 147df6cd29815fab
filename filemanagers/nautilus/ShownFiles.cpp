#include "filemanagers/nautilus/ShownFiles.h"

#include <memory>
#include <utility>
#include <vector>

#include "filemanagers/client/PathTree.h"

namespace filemanagers {

// Attached to a file object, and destroyed with it.
struct ShownFiles::Mark {
  ShownFiles &owner;
  GObject *file;
  std::string path;

  static GQuark quark() {
    static const GQuark quark = g_quark_from_static_string("halvern-shown-file");
    return quark;
  }

  static void destroy(gpointer data) {
    const std::unique_ptr<Mark> mark(static_cast<Mark *>(data));
    auto &files = mark->owner.files_;
    // Where a file was replaced, the old object may live for longer than the new one is there.
    const auto found = files.find(mark->path);
    if (found != files.end() && found->second == mark->file) {
      files.erase(found);
      mark->owner.gone_(mark->path);
    }
  }
};

ShownFiles::ShownFiles(std::function<void(const std::string &path)> gone)
    : gone_(std::move(gone)) {}

void ShownFiles::add(GObject *file, const std::string &path) {
  const auto *mark = static_cast<const Mark *>(g_object_get_qdata(file, Mark::quark()));
  if (mark == nullptr || mark->path != path) {
    g_object_set_qdata_full(file, Mark::quark(),
                            std::make_unique<Mark>(Mark{*this, file, path}).release(),
                            Mark::destroy);
  }
  files_[path] = file;
}

GObject *ShownFiles::find(const std::string &path) const {
  const auto found = files_.find(path);
  return found == files_.end() ? nullptr : found->second;
}

std::map<std::string, std::string> ShownFiles::pathsByFolder(
    const std::function<bool(GObject *)> &predicate) const {
  std::map<std::string, std::string> paths;
  for (const auto &[path, file] : files_) {
    if (predicate(file)) {
      paths.try_emplace(std::string(folderOf(path)), path);
    }
  }
  return paths;
}

std::vector<platform::ObjectHandle<GObject>> ShownFiles::removeFolder(const std::string &folder) {
  std::vector<std::string> gone;
  std::vector<platform::ObjectHandle<GObject>> files;
  std::erase_if(files_, [&](const auto &entry) {
    const bool isInFolder = folderOf(entry.first) == folder;
    if (isInFolder) {
      gone.push_back(entry.first);
      files.emplace_back(G_OBJECT(g_object_ref(entry.second)));
    }
    return isInFolder;
  });
  for (const std::string &path : gone) {
    gone_(path);
  }
  return files;
}

}  // namespace filemanagers
