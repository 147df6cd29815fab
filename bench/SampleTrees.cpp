#include "bench/SampleTrees.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "tests/scanner/ForeignDatabase.h"

namespace fs = std::filesystem;

namespace {

// Copies of the first directory, with contents and time stamps.
void copyDirectory(const WorkingCopy &wc, int fileCount, int filesInOne) {
  for (int i = filesInOne; i < fileCount; ++i) {
    const fs::path model = wc / pathInTree(i % filesInOne, filesInOne);
    const fs::path copy = wc / pathInTree(i, filesInOne);
    fs::create_directory(copy.parent_path());
    fs::copy_file(model, copy);
    fs::last_write_time(copy, fs::last_write_time(model));
  }
}

// The same in the database.
void copyRows(const std::string &root, int fileCount, int filesInOne) {
  const std::string factor = std::to_string(filesInOne);
  const std::string last = std::to_string((fileCount - 1) / filesInOne);
  const std::string copied =
      " op_depth, repos_id, revision, presence, kind, properties, depth, checksum,"
      " changed_revision, changed_date, changed_author, translated_size, last_mod_time";
  ForeignDatabase(root).execute(
      "WITH RECURSIVE copies(number) AS"
      " (SELECT 1 UNION ALL SELECT number + 1 FROM copies WHERE number < " +
      last +
      ")"
      " INSERT INTO NODES (wc_id, local_relpath, parent_relpath, repos_path," +
      copied +
      ")"
      " SELECT wc_id, path, parent, path," +
      copied +
      " FROM ("
      "  SELECT NODES.*, number,"
      "   CASE kind WHEN 'dir' THEN 'd' || number"
      "   ELSE 'd' || number || '/f' || (number * " +
      factor +
      " + substr(local_relpath, 5)) END"
      "   AS path,"
      "   CASE kind WHEN 'dir' THEN '' ELSE 'd' || number END AS parent"
      "  FROM copies, NODES WHERE local_relpath = 'd0' OR parent_relpath = 'd0')"
      " WHERE kind = 'dir' OR"
      "  number * " +
      factor + " + substr(local_relpath, 5) < " + std::to_string(fileCount) +
      " ORDER BY number, local_relpath");
}

}  // namespace

std::string pathInTree(int file, int filesInOne) {
  return "d" + std::to_string(file / filesInOne) + "/f" + std::to_string(file);
}

void writeTree(const std::string &path, int fileCount, int filesInOne) {
  for (int i = 0; i < fileCount; ++i) {
    writeFile(path + "/" + pathInTree(i, filesInOne), "file " + std::to_string(i) + "\n");
  }
}

WorkingCopy makeWorkingCopy(const TemporaryDirectory &directory, int fileCount, int filesInOne) {
  WorkingCopy wc(directory, "wc" + std::to_string(fileCount));
  writeTree(wc.path(), std::min(fileCount, filesInOne), filesInOne);
  wc.svn({"add", "--quiet", "d0"});
  wc.commit();
  wc.svn({"update", "--quiet"});
  if (fileCount > filesInOne) {
    copyDirectory(wc, fileCount, filesInOne);
    copyRows(wc.path(), fileCount, filesInOne);
  }
  if (!wc.svn({"status"}).empty()) {
    throw std::runtime_error("the working copy is not clean");
  }
  return wc;
}

void editEvery(const WorkingCopy &wc, int step, int fileCount, int filesInOne) {
  for (int i = 0; i < fileCount; i += step) {
    writeFile(wc / pathInTree(i, filesInOne), "edited, and of another size\n");
  }
}
