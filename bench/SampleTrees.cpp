#include "bench/SampleTrees.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "tests/scanner/ForeignDatabase.h"

namespace fs = std::filesystem;

namespace {

std::string directoryName(int directory) {
  return "/d" + std::to_string(directory);
}

std::string fileName(int directory, int file) {
  return directoryName(directory) + "/f" + std::to_string(directory * filesInDirectory + file);
}

// Copies of the first directory, with contents and time stamps.
void copyDirectory(const std::string &root, int fileCount) {
  for (int i = filesInDirectory; i < fileCount; ++i) {
    const int directory = i / filesInDirectory;
    const int file = i % filesInDirectory;
    if (file == 0) {
      fs::create_directory(root + directoryName(directory));
    }
    const std::string model = root + fileName(0, file);
    const std::string copy = root + fileName(directory, file);
    fs::copy_file(model, copy);
    fs::last_write_time(copy, fs::last_write_time(model));
  }
}

// The same in the database.
void copyRows(const std::string &root, int fileCount) {
  const std::string filesInOne = std::to_string(filesInDirectory);
  const std::string last = std::to_string((fileCount - 1) / filesInDirectory);
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
      filesInOne +
      " + substr(local_relpath, 5)) END"
      "   AS path,"
      "   CASE kind WHEN 'dir' THEN '' ELSE 'd' || number END AS parent"
      "  FROM copies, NODES WHERE local_relpath = 'd0' OR parent_relpath = 'd0')"
      " WHERE kind = 'dir' OR"
      "  number * " +
      filesInOne + " + substr(local_relpath, 5) < " + std::to_string(fileCount) +
      " ORDER BY number, local_relpath");
}

}  // namespace

void writeTree(const std::string &path, int fileCount, int filesInOne) {
  for (int i = 0; i < fileCount; ++i) {
    writeFile(path + "/d" + std::to_string(i / filesInOne) + "/f" + std::to_string(i),
              "file " + std::to_string(i) + "\n");
  }
}

WorkingCopy makeWorkingCopy(const TemporaryDirectory &directory, int fileCount) {
  WorkingCopy wc(directory, "wc" + std::to_string(fileCount));
  writeTree(wc.path(), std::min(fileCount, filesInDirectory), filesInDirectory);
  wc.svn({"add", "--quiet", "d0"});
  wc.commit();
  wc.svn({"update", "--quiet"});
  if (fileCount > filesInDirectory) {
    copyDirectory(wc.path(), fileCount);
    copyRows(wc.path(), fileCount);
  }
  if (!wc.svn({"status"}).empty()) {
    throw std::runtime_error("the working copy is not clean");
  }
  return wc;
}
