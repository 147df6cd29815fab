#include "tests/scanner/RandomWorkingCopy.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>

#include "tests/support/processes/Command.h"

namespace fs = std::filesystem;

namespace {

const std::vector<std::string> &firstFolders() {
  static const std::vector<std::string> folders = {"folder", "deep folder/inner", "földer @2",
                                                   "folder/nested/further"};
  return folders;
}

const std::vector<std::string> &firstFiles() {
  static const std::vector<std::string> files = {"plain.txt", "with space", "at@sign",
                                                 "trailing@", "ümläut",     "%41"};
  return files;
}

CommandOptions commandOptions(const std::string &directory) {
  CommandOptions options;
  options.directory = directory;
  options.environment["LC_ALL"] = "C.UTF-8";
  return options;
}

// The "@" at the end says that those before it belong to the name, and the "./" that a "-" does.
std::string target(const std::string &path) {
  const bool isRelative = !path.starts_with("/") && !path.starts_with("file:");
  return (isRelative ? "./" : "") + path + "@";
}

}  // namespace

RandomWorkingCopy::RandomWorkingCopy(const TemporaryDirectory &directory, unsigned seed,
                                     Externals externals)
    : base_(directory.path()),
      path_(base_ + "/wörk @1"),
      otherPath_(base_ + "/other"),
      repositoryURL_("file://" + base_ + "/repository"),
      random_(seed),
      externals_(externals) {
  runSuccessfully({"svnadmin", "create", base_ + "/repository"});
  fs::create_directory_symlink("repository", base_ + "/same repository");
  fs::create_directory(base_ + "/outside");
  const std::string import = base_ + "/import";
  for (const std::string &file : firstFiles()) {
    writeFile(import + "/trunk/" + file, "first line\nsecond line\n");
    for (const std::string &folder : firstFolders()) {
      writeFile(import + "/trunk/" + folder + "/" + file, "first line\nsecond line\n");
    }
  }
  fs::copy(import + "/trunk", import + "/branch", fs::copy_options::recursive);
  writeFile(import + "/branch/only here", "branch\n");
  writeFile(import + "/library/of files/file", "library\n");
  run(base_, {"import", "--quiet", "-m", "a commit of the test", import, repositoryURL_});
  const std::string depth = below(6) == 0 ? "immediates" : "infinity";
  run(base_, {"checkout", "--quiet", "--depth", depth, repositoryURL_ + "/trunk", path_});
  run(base_, {"checkout", "--quiet", repositoryURL_ + "/trunk", otherPath_});
  if (!fs::exists(path_ + "/.svn") || !fs::exists(otherPath_ + "/.svn")) {
    throw std::runtime_error("There is no working copy:\n" + history_);
  }
}

void RandomWorkingCopy::change() {
  using Self = RandomWorkingCopy;
  static constexpr std::array steps = {
      &Self::editFile,
      &Self::editFile,
      &Self::editWithoutChange,
      &Self::removeFromDisk,
      &Self::removeFolderFromDisk,
      &Self::deleteEntry,
      &Self::deleteKeepingLocal,
      &Self::makeVersionedFolder,
      &Self::makeUnversionedFile,
      &Self::makeUnversionedFolder,
      &Self::makeSymbolicLink,
      &Self::addFile,
      &Self::addFolder,
      &Self::moveEntry,
      &Self::copyEntry,
      &Self::setProperty,
      &Self::ignoreNames,
      &Self::lockFile,
      &Self::lockFile,
      &Self::lockAndEditFile,
      &Self::unlockFile,
      &Self::setChangelist,
      &Self::revertEntry,
      &Self::updateToSomeRevision,
      &Self::conflictInText,
      &Self::conflictInProperty,
      &Self::conflictInTree,
      &Self::resolveEntry,
      &Self::switchFolder,
      &Self::setExternals,
      &Self::replaceFile,
      &Self::obstruct,
      &Self::makeSparse,
      &Self::commit,
  };
  (this->*steps[below(steps.size())])();
}

void RandomWorkingCopy::rearrange() {
  using Self = RandomWorkingCopy;
  static constexpr std::array steps = {
      &Self::renameOnDisk, &Self::renameOnDisk,    &Self::moveOut,       &Self::moveIn,
      &Self::moveIn,       &Self::createManyFiles, &Self::editManyFiles, &Self::cleanUp,
      &Self::relocate,     &Self::revertAll,       &Self::updateAll,     &Self::commitAll,
  };
  (this->*steps[below(steps.size())])();
}

std::string RandomWorkingCopy::status(const std::vector<std::string> &arguments) const {
  std::vector<std::string> command = {"svn", "status", "--config-dir", base_ + "/configuration"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  command.push_back(target(path_));
  return runSuccessfully(command, commandOptions(base_));
}

const std::string &RandomWorkingCopy::oneOf(const std::vector<std::string> &choices) {
  return choices[below(choices.size())];
}

std::string RandomWorkingCopy::newName() {
  static const std::vector<std::string> stems = {"new", "new name", "new@", "nëw", "-new"};
  return oneOf(stems) + std::to_string(++names_);
}

// Never of the size of another text, so that a change shows whatever the clock's resolution.
std::string RandomWorkingCopy::newText() {
  return std::string(40 + ++names_, 'x') + "\n";
}

std::string RandomWorkingCopy::entryThatIs(bool mayBeFile, bool mayBeFolder) {
  std::vector<std::string> entries;
  for (auto entry = fs::recursive_directory_iterator(path_);
       entry != fs::recursive_directory_iterator(); ++entry) {
    if (entry->path().filename() == ".svn") {
      entry.disable_recursion_pending();
      continue;
    }
    const bool isFolder = entry->is_directory() && !entry->is_symlink();
    if (isFolder ? mayBeFolder : mayBeFile) {
      entries.push_back(entry->path().string().substr(path_.size() + 1));
    }
  }
  std::sort(entries.begin(), entries.end());
  return entries.empty() ? "." : oneOf(entries);
}

std::string RandomWorkingCopy::anyFile() {
  return entryThatIs(true, false);
}

std::string RandomWorkingCopy::anyFolder() {
  return below(4) == 0 ? "." : entryThatIs(false, true);
}

std::string RandomWorkingCopy::anyEntry() {
  return entryThatIs(true, true);
}

bool RandomWorkingCopy::run(const std::string &directory, std::vector<std::string> arguments) {
  std::string line = "svn";
  for (const std::string &argument : arguments) {
    line += " '" + argument + "'";
  }
  arguments.insert(arguments.begin(),
                   {"svn", "--non-interactive", "--config-dir", base_ + "/configuration"});
  const CommandResult result = runCommand(arguments, commandOptions(directory));
  ++commandCount_;
  note(line + (result.status == 0 ? "" : " failed: " + result.errors));
  return result.status == 0;
}

bool RandomWorkingCopy::svn(std::vector<std::string> arguments) {
  return run(path_, std::move(arguments));
}

void RandomWorkingCopy::svnElsewhere(std::vector<std::string> arguments) {
  run(otherPath_, std::move(arguments));
}

void RandomWorkingCopy::editFile() {
  const std::string file = anyFile();
  if (file != "." && !fs::is_symlink(path_ + "/" + file)) {
    note("edit " + file);
    writeFile(path_ + "/" + file, newText());
  }
}

void RandomWorkingCopy::editWithoutChange() {
  const std::string file = anyFile();
  if (file != "." && !fs::is_symlink(path_ + "/" + file)) {
    note("touch " + file);
    fs::last_write_time(path_ + "/" + file, fs::file_time_type::clock::now());
  }
}

void RandomWorkingCopy::removeFromDisk() {
  const std::string file = anyFile();
  if (file != ".") {
    note("rm " + file);
    fs::remove(path_ + "/" + file);
  }
}

void RandomWorkingCopy::removeFolderFromDisk() {
  const std::string folder = entryThatIs(false, true);
  if (folder != "." && below(2) == 0) {
    note("rm -r " + folder);
    fs::remove_all(path_ + "/" + folder);
  }
}

void RandomWorkingCopy::deleteEntry() {
  svn({"delete", "--force", target(anyEntry())});
}

void RandomWorkingCopy::deleteKeepingLocal() {
  svn({"delete", "--keep-local", target(anyEntry())});
}

void RandomWorkingCopy::makeVersionedFolder() {
  svn({"mkdir", target(anyFolder() + "/" + newName())});
}

void RandomWorkingCopy::makeUnversionedFile() {
  const std::string file = anyFolder() + "/" + newName();
  note("create " + file);
  writeFile(path_ + "/" + file, newText());
}

void RandomWorkingCopy::makeUnversionedFolder() {
  const std::string folder = anyFolder() + "/" + newName();
  note("create folder " + folder);
  writeFile(path_ + "/" + folder + "/" + newName(), newText());
  fs::create_directories(path_ + "/" + folder + "/empty");
}

void RandomWorkingCopy::makeSymbolicLink() {
  const std::string link = anyFolder() + "/" + newName();
  note("link " + link);
  fs::create_symlink(below(2) == 0 ? "nowhere" : "..", path_ + "/" + link);
  if (below(2) == 0) {
    svn({"add", target(link)});
  }
}

void RandomWorkingCopy::addFile() {
  const std::string file = anyFolder() + "/" + newName();
  note("create " + file);
  writeFile(path_ + "/" + file, newText());
  svn({"add", target(file)});
}

void RandomWorkingCopy::addFolder() {
  const std::string folder = anyFolder() + "/" + newName();
  note("create folder " + folder);
  writeFile(path_ + "/" + folder + "/" + newName(), newText());
  fs::create_directories(path_ + "/" + folder + "/empty");
  svn({"add", below(3) == 0 ? "--depth=empty" : "--depth=infinity", target(folder)});
}

void RandomWorkingCopy::moveEntry() {
  svn({"move", target(anyEntry()), target(anyFolder() + "/" + newName())});
}

void RandomWorkingCopy::copyEntry() {
  svn({"copy", target(anyEntry()), target(anyFolder() + "/" + newName())});
}

void RandomWorkingCopy::setProperty() {
  svn({"propset", "name", newText(), target(anyEntry())});
}

void RandomWorkingCopy::ignoreNames() {
  svn({"propset", "svn:ignore", below(2) == 0 ? "new*" : "*.txt\nnëw*", target(anyFolder())});
}

void RandomWorkingCopy::lockFile() {
  svn({"lock", target(anyFile())});
}

void RandomWorkingCopy::lockAndEditFile() {
  const std::string file = anyFile();
  svn({"lock", target(file)});
  if (file != "." && !fs::is_symlink(path_ + "/" + file)) {
    note("edit " + file);
    writeFile(path_ + "/" + file, newText());
  }
}

void RandomWorkingCopy::unlockFile() {
  svn({"unlock", target(anyFile())});
}

void RandomWorkingCopy::setChangelist() {
  svn({"changelist", "list of changes", target(anyFile())});
}

void RandomWorkingCopy::revertEntry() {
  svn({"revert", below(2) == 0 ? "--depth=empty" : "--depth=infinity", target(anyEntry())});
}

void RandomWorkingCopy::updateToSomeRevision() {
  svn({"update", "--quiet", "--accept", "postpone", "-r",
       below(2) == 0 ? "HEAD" : std::to_string(1 + below(3)), target(anyFolder())});
}

// In each of the three, the other working copy commits a change to a file that is changed here too.

void RandomWorkingCopy::conflictInText() {
  const std::string file = oneOf(firstFolders()) + "/" + oneOf(firstFiles());
  svnElsewhere({"update", "--quiet", "--accept", "theirs-full"});
  for (const std::string &workingCopy : {otherPath_, path_}) {
    if (fs::is_regular_file(fs::symlink_status(workingCopy + "/" + file))) {
      note("edit " + file + (workingCopy == path_ ? "" : " elsewhere"));
      writeFile(workingCopy + "/" + file, newText());
    }
  }
  svnElsewhere({"commit", "--quiet", "-m", "a commit of the test"});
  svn({"update", "--quiet", "--accept", "postpone"});
}

void RandomWorkingCopy::conflictInProperty() {
  const std::string path = oneOf(firstFolders()) + (below(3) == 0 ? "" : "/" + oneOf(firstFiles()));
  svnElsewhere({"update", "--quiet", "--accept", "theirs-full"});
  svnElsewhere({"propset", "name", newText(), target(path)});
  svnElsewhere({"commit", "--quiet", "-m", "a commit of the test"});
  svn({"propset", "name", newText(), target(path)});
  svn({"update", "--quiet", "--accept", "postpone"});
}

void RandomWorkingCopy::conflictInTree() {
  const std::string file = oneOf(firstFolders()) + "/" + oneOf(firstFiles());
  svnElsewhere({"update", "--quiet", "--accept", "theirs-full"});
  const bool isDeletedHere = below(2) == 0;
  const std::string edited = (isDeletedHere ? otherPath_ : path_) + "/" + file;
  if (fs::is_regular_file(fs::symlink_status(edited))) {
    note("edit " + edited);
    writeFile(edited, newText());
  }
  run(isDeletedHere ? path_ : otherPath_, {"delete", "--force", target(file)});
  svnElsewhere({"commit", "--quiet", "-m", "a commit of the test"});
  svn({"update", "--quiet", "--accept", "postpone"});
}

void RandomWorkingCopy::resolveEntry() {
  if (below(3) == 0) {
    svn({"resolve", "--quiet", "--accept", "working", "--recursive", target(anyFolder())});
  }
}

void RandomWorkingCopy::switchFolder() {
  const std::string path = below(2) == 0 ? oneOf(firstFolders()) : oneOf(firstFiles());
  svn({"switch", "--quiet", "--accept", "postpone", "--ignore-ancestry",
       target(repositoryURL_ + "/branch/" + path), path});  // whose path takes no revision
}

void RandomWorkingCopy::setExternals() {
  if (externals_ == Externals::none) {
    return;
  }
  const std::string folder = anyFolder();
  svn({"propset", "svn:externals",
       "'^/library/of files' '" + newName() + "'\n'^/library/of files/file' '" + newName() + "'",
       target(folder)});
  svn({"update", "--quiet", "--accept", "postpone", target(folder)});
}

void RandomWorkingCopy::replaceFile() {
  const std::string file = anyFile();
  svn({"delete", "--force", target(file)});
  if (file != "." && fs::is_directory(fs::path(path_ + "/" + file).parent_path())) {
    note("create " + file);
    writeFile(path_ + "/" + file, newText());
    svn({"add", target(file)});
  }
}

void RandomWorkingCopy::obstruct() {
  const std::string entry = anyEntry();
  if (entry == ".") {
    return;
  }
  note("obstruct " + entry);
  const bool isFolder = fs::is_directory(fs::symlink_status(path_ + "/" + entry));
  fs::remove_all(path_ + "/" + entry);
  if (isFolder) {
    writeFile(path_ + "/" + entry, newText());
  } else {
    fs::create_directory(path_ + "/" + entry);
  }
}

void RandomWorkingCopy::makeSparse() {
  static const std::vector<std::string> depths = {"empty", "files", "immediates", "exclude",
                                                  "infinity"};
  svn({"update", "--quiet", "--accept", "postpone", "--set-depth", oneOf(depths),
       target(entryThatIs(false, true))});
}

void RandomWorkingCopy::commit() {
  svn({"commit", "--quiet", "-m", "a commit of the test", target(anyEntry())});
}

void RandomWorkingCopy::renameOnDisk() {
  const std::string entry = anyEntry();
  const std::string newEntry = anyFolder() + "/" + newName();
  std::error_code error;
  fs::rename(path_ + "/" + entry, path_ + "/" + newEntry, error);
  note("mv " + entry + " " + newEntry + (error ? " failed" : ""));
}

void RandomWorkingCopy::moveOut() {
  const std::string entry = anyEntry();
  if (entry != ".") {
    note("mv " + entry + " out of it");
    fs::rename(path_ + "/" + entry, base_ + "/outside/" + newName());
  }
}

// A tree that is full before it comes.
void RandomWorkingCopy::moveIn() {
  const std::string name = newName();
  for (const std::string &file : firstFiles()) {
    writeFile(base_ + "/outside/" + name + "/inner/" + file, newText());
  }
  const std::string folder = anyFolder();
  note("mv a tree to " + folder + "/" + name);
  fs::rename(base_ + "/outside/" + name, path_ + "/" + folder + "/" + name);
}

// More than one message about them names.
void RandomWorkingCopy::createManyFiles() {
  constexpr int count = 600;
  const std::string folder = anyFolder() + "/" + newName();
  note("create " + std::to_string(count) + " files in " + folder);
  for (int i = 0; i < count; ++i) {
    writeFile(path_ + "/" + folder + "/" + std::to_string(i), "");
  }
  if (below(2) == 0) {
    svn({"add", "--quiet", target(folder)});
  }
}

void RandomWorkingCopy::editManyFiles() {
  note("edit all files");
  const std::string text = newText();
  for (const auto &entry : fs::recursive_directory_iterator(path_)) {
    if (entry.is_regular_file() && !entry.is_symlink() &&
        entry.path().string().find("/.svn/") == std::string::npos) {
      writeFile(entry.path(), text);
    }
  }
}

void RandomWorkingCopy::cleanUp() {
  svn({"cleanup"});
}

void RandomWorkingCopy::relocate() {
  const std::string first = "file://" + base_ + "/repository";
  const std::string second = "file://" + base_ + "/same%20repository";
  const std::string &other = repositoryURL_ == first ? second : first;
  if (svn({"relocate", repositoryURL_, other})) {
    repositoryURL_ = other;
  }
}

void RandomWorkingCopy::revertAll() {
  svn({"revert", "--quiet", "--recursive", "."});
}

void RandomWorkingCopy::updateAll() {
  svn({"update", "--quiet", "--accept", "postpone"});
}

void RandomWorkingCopy::commitAll() {
  svn({"commit", "--quiet", "-m", "a commit of the test"});
}
