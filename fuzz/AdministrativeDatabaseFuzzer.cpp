// A working copy's database with anything in it, as the scanner reads it by itself.
#include <algorithm>
#include <filesystem>

#include "fuzz/support/Input.h"
#include "fuzz/support/OwnHome.h"
#include "fuzz/support/Promise.h"
#include "platform/Paths.h"
#include "scanner/AdministrativeDatabase.h"
#include "scanner/AdministrativeFiles.h"

namespace {

constexpr int sampleSize = 50;

void checkExternals(const std::string &root, const AdministrativeDatabase &database) {
  const auto externals = database.externals();
  for (const std::string &path : externals.value_or(std::vector<std::string>())) {
    mustHold(path.starts_with(root + "/"), "an external lies in its working copy");
    mustHold(platform::lexicallyStandardizedPath(path, "") == path,
             "an external's path is standardised");
  }
}

void checkSample(const std::string &root, const AdministrativeDatabase &database) {
  const auto nodes = database.sampleOfNodes(sampleSize);
  if (nodes) {
    mustHold(nodes->size() <= sampleSize, "a sample is as small as it is to be");
    mustHold(std::is_sorted(nodes->begin(), nodes->end()), "a sample is sorted");
    for (const SampledNode &node : *nodes) {
      mustHold(node.path.starts_with(root), "a node's path begins with the working copy's");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  static const std::string root = OwnHome::get() / "working copy";
  const std::string file = databaseOfWorkingCopy(root);
  // With what an earlier input may have left beside it.
  std::filesystem::remove_all(root);
  std::filesystem::create_directories(std::filesystem::path(file).parent_path());
  writeWholeFile(file, textOfInput(bytes, size));

  mustHold(sizeOfAdministrativeDatabase(root) == size, "a database has the size of its file");
  mustHold(topOfWorkingCopy(root + "/folder/file") == root, "a database marks a working copy");
  const AdministrativeDatabase database(root);
  checkExternals(root, database);
  checkSample(root, database);
  mustHold(readWholeFile(file) == textOfInput(bytes, size), "a database is only read");
  return 0;
}
