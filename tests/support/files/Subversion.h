// A real repository with a working copy, driven by the Subversion command-line client.
#pragma once

#include <string>
#include <vector>

#include "tests/support/files/TemporaryDirectory.h"

class WorkingCopy {
 public:
  // An empty repository, and a working copy of it at revision 0 named `name`. Both lie below
  // `directory`, beside each other, as does the client's configuration.
  explicit WorkingCopy(const TemporaryDirectory &directory, const std::string &name = "wc");

  const std::string &path() const { return path_; }
  std::string operator/(std::string_view relative) const {
    return path_ + "/" + std::string(relative);
  }
  const std::string &repositoryURL() const { return repositoryURL_; }

  // Runs `svn` in the working copy with these arguments and returns its output; failing throws.
  // Relative paths are those in the working copy.
  std::string svn(std::vector<std::string> arguments) const;

  // A second working copy of the same repository, beside the first.
  WorkingCopy checkOutAgain(const std::string &name) const;

  // Writes a file, adds it with its folders, and commits everything.
  void addFile(std::string_view relative, std::string_view contents) const;
  void commit() const { svn({"commit", "-m", "a commit of the test"}); }

 private:
  WorkingCopy(std::string base, std::string repositoryURL, const std::string &name);

  std::string base_;
  std::string repositoryURL_;
  std::string path_;
};
