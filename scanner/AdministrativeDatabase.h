// The few questions about a working copy for which the Subversion library has no call, put to its
// database (".svn/wc.db") with SQLite. Reads only, and never waits for another program.
//
// The tables NODES and EXTERNALS are as Subversion has had them since 1.7. What cannot be read, for
// whatever reason, has no answer; callers then do without.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;

struct SampledNode {
  std::string path;  // absolute
  bool isDirectory = false;

  bool operator==(const SampledNode &) const = default;
  bool operator<(const SampledNode &other) const { return path < other.path; }
};

class AdministrativeDatabase {
 public:
  explicit AdministrativeDatabase(std::string root);

  // Where the externals are that the last update has brought: absolute paths. None also where one
  // of them would lie outside the working copy.
  std::optional<std::vector<std::string>> externals() const;

  // At most that many nodes, spread evenly over the order in which they are stored: what is below a
  // directory occurs in them in proportion. Sorted by the bytes of the paths.
  std::optional<std::vector<SampledNode>> sampleOfNodes(int count) const;

 private:
  struct Closing {
    void operator()(sqlite3 *connection) const;
  };

  const std::string root_;
  const std::unique_ptr<sqlite3, Closing> connection_;  // null where it cannot be opened
};
