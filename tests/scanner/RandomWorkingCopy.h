// A real working copy after a random sequence of edits and Subversion commands. The same seed makes
// the same sequence.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "tests/support/files/TemporaryDirectory.h"

class RandomWorkingCopy {
 public:
  enum class Externals { some, none };

  RandomWorkingCopy(const TemporaryDirectory &directory, unsigned seed,
                    Externals externals = Externals::some);

  const std::string &path() const { return path_; }

  // One edit or command, chosen at random. A command that the working copy's state does not allow
  // fails and leaves whatever it leaves.
  void change();

  // The same of what matters to those who follow along: trees that come, go and get other names,
  // many files at once, and commands that change nothing or everything.
  void rearrange();

  // The output of `svn status` with these further arguments; throws if it fails.
  std::string status(const std::vector<std::string> &arguments = {}) const;

  // How many Subversion commands have been run.
  unsigned long commandCount() const { return commandCount_; }

  // All changes so far, for the report of a mismatch.
  const std::string &history() const { return history_; }

 private:
  using Step = void (RandomWorkingCopy::*)();

  std::size_t below(std::size_t bound) { return random_() % bound; }
  const std::string &oneOf(const std::vector<std::string> &choices);
  std::string newName();
  std::string newText();

  // Relative paths of entries that are there, by kind; "." where there is none.
  std::string anyFile();
  std::string anyFolder();
  std::string anyEntry();
  std::string entryThatIs(bool mayBeFile, bool mayBeFolder);

  bool svn(std::vector<std::string> arguments);
  void svnElsewhere(std::vector<std::string> arguments);
  bool run(const std::string &directory, std::vector<std::string> arguments);
  void note(const std::string &text) { history_ += text + "\n"; }

  void editFile();
  void editWithoutChange();
  void removeFromDisk();
  void removeFolderFromDisk();
  void deleteEntry();
  void deleteKeepingLocal();
  void makeVersionedFolder();
  void makeUnversionedFile();
  void makeUnversionedFolder();
  void makeSymbolicLink();
  void addFile();
  void addFolder();
  void moveEntry();
  void copyEntry();
  void setProperty();
  void ignoreNames();
  void lockFile();
  void lockAndEditFile();
  void unlockFile();
  void setChangelist();
  void revertEntry();
  void updateToSomeRevision();
  void conflictInText();
  void conflictInProperty();
  void conflictInTree();
  void resolveEntry();
  void switchFolder();
  void setExternals();
  void replaceFile();
  void obstruct();
  void makeSparse();
  void commit();

  void renameOnDisk();
  void moveOut();
  void moveIn();
  void createManyFiles();
  void editManyFiles();
  void cleanUp();
  void relocate();
  void revertAll();
  void updateAll();
  void commitAll();

  const std::string base_;
  const std::string path_;
  const std::string otherPath_;
  std::string repositoryURL_;  // one of the two that there are
  std::mt19937 random_;
  const Externals externals_;
  unsigned names_ = 0;
  unsigned long commandCount_ = 0;
  std::string history_;
};
