#include "bench/SampleTrees.h"

#include <filesystem>

void writeTree(const std::string &path, int fileCount, int filesInOne) {
  for (int i = 0; i < fileCount; ++i) {
    writeFile(path + "/d" + std::to_string(i / filesInOne) + "/f" + std::to_string(i),
              "file " + std::to_string(i) + "\n");
  }
}

WorkingCopy makeWorkingCopy(const TemporaryDirectory &directory, int fileCount, int filesInOne) {
  WorkingCopy wc(directory, "wc" + std::to_string(fileCount));
  const std::string source = directory / ("source" + std::to_string(fileCount));
  writeTree(source, fileCount, filesInOne);
  wc.svn({"import", "--quiet", "-m", "a tree", source, wc.repositoryURL()});
  std::filesystem::remove_all(source);
  wc.svn({"update", "--quiet"});
  return wc;
}
