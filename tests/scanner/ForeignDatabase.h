// The database of a working copy in the hands of another program, for tests and benchmarks.
#pragma once

#include <memory>
#include <string>

struct sqlite3;

// Leaves behind what SQLite does when a change of several databases is cut off before it has
// changed this one: a journal that names the file which is removed when the last of them is as it
// was.
void leaveJournalThatNames(const std::string &file, const std::string &root);

class ForeignDatabase {
 public:
  // `root` is the working copy's top directory. Throws if it cannot be opened.
  explicit ForeignDatabase(const std::string &root);

  // Carries out SQL; failing throws. A transaction that it begins ends with the object.
  void execute(const std::string &statements) const;

  // Makes the database as large as that of a working copy with many nodes.
  void grow() const;

 private:
  struct Closing {
    void operator()(sqlite3 *connection) const;
  };

  std::unique_ptr<sqlite3, Closing> connection_;
};
