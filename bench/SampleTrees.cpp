#include "bench/SampleTrees.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "tests/scanner/ForeignDatabase.h"

namespace fs = std::filesystem;

namespace {

// Copies of the first directory, with contents and time stamps.
void copyDirectory(const WorkingCopy &wc, int fileCount, TreeShape shape) {
  for (int i = shape.filesInOne; i < fileCount; ++i) {
    const fs::path model = wc / pathInTree(i % shape.filesInOne, shape);
    const fs::path copy = wc / pathInTree(i, shape);
    fs::create_directories(copy.parent_path());
    fs::copy_file(model, copy);
    fs::last_write_time(copy, fs::last_write_time(model));
  }
}

// The same in the database.
void copyRows(const std::string &root, int fileCount, TreeShape shape) {
  const std::string numbers = std::to_string(fileCount) + ", " + std::to_string(shape.filesInOne) +
                              ", " + std::to_string(shape.directoriesInOne);
  const std::string copied =
      " op_depth, repos_id, revision, presence, kind, properties, depth, checksum,"
      " changed_revision, changed_date, changed_author, translated_size, last_mod_time";
  ForeignDatabase(root).execute(
      "WITH RECURSIVE shape(fileCount, filesInOne, directoriesInOne) AS (VALUES (" + numbers +
      ")),"
      " copies(number) AS (SELECT 1 UNION ALL SELECT number + 1 FROM copies, shape"
      "  WHERE (number + 1) * filesInOne < fileCount),"
      " places AS (SELECT number, number * filesInOne AS firstFile, fileCount,"
      "  't' || (number / directoriesInOne) AS top,"
      "  number % directoriesInOne = 0 AS isFirstInTop FROM copies, shape)"
      " INSERT INTO NODES (wc_id, local_relpath, parent_relpath, repos_path," +
      copied +
      ")"
      " SELECT wc_id, path, parent, path," +
      copied +
      " FROM (SELECT NODES.*, number, "
      "   CASE local_relpath WHEN 't0' THEN top WHEN 't0/d0' THEN top || '/d' || number"
      "    ELSE top || '/d' || number || '/f' || (firstFile + substr(local_relpath, 8)) END AS "
      "path,"
      "   CASE local_relpath WHEN 't0' THEN '' WHEN 't0/d0' THEN top"
      "    ELSE top || '/d' || number END AS parent"
      "  FROM places, NODES WHERE CASE local_relpath WHEN '' THEN 0 WHEN 't0' THEN isFirstInTop"
      "   WHEN 't0/d0' THEN 1 ELSE firstFile + substr(local_relpath, 8) < fileCount END)"
      " ORDER BY number, local_relpath");
}

}  // namespace

std::string pathInTree(int file, TreeShape shape) {
  const int directory = file / shape.filesInOne;
  return "t" + std::to_string(directory / shape.directoriesInOne) + "/d" +
         std::to_string(directory) + "/f" + std::to_string(file);
}

void writeTree(const std::string &path, int fileCount, TreeShape shape) {
  for (int i = 0; i < fileCount; ++i) {
    writeFile(path + "/" + pathInTree(i, shape), "file " + std::to_string(i) + "\n");
  }
}

WorkingCopy makeWorkingCopy(const TemporaryDirectory &directory, int fileCount, TreeShape shape) {
  WorkingCopy wc(directory, "wc" + std::to_string(fileCount));
  writeTree(wc.path(), std::min(fileCount, shape.filesInOne), shape);
  wc.svn({"add", "--quiet", "t0"});
  wc.commit();
  wc.svn({"update", "--quiet"});
  if (fileCount > shape.filesInOne) {
    copyDirectory(wc, fileCount, shape);
    copyRows(wc.path(), fileCount, shape);
  }
  if (!wc.svn({"status"}).empty()) {
    throw std::runtime_error("the working copy is not clean");
  }
  return wc;
}

void editEvery(const WorkingCopy &wc, int step, int fileCount, TreeShape shape) {
  for (int i = 0; i < fileCount; i += step) {
    writeFile(wc / pathInTree(i, shape), "edited, and of another size\n");
  }
}
