// Working copies whose databases are damaged at random, beside one that is whole: the extension
// lives on, and the whole one is answered for throughout.
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <random>

#include "tests/scanner/ForeignDatabase.h"
#include "tests/support/NumberFromEnvironment.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/session/ExtensionSession.h"

using platform::FileURL;

namespace {

std::string urlOf(const std::string &path) {
  return FileURL::fromPath(path).text();
}

std::size_t occurrences(const std::string &text, const std::string &part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos;
       at = text.find(part, at + part.size())) {
    ++count;
  }
  return count;
}

// Damages bytes as disks and crashes do, and contents as programs do.
class Damage {
 public:
  explicit Damage(unsigned long seed) : random_(seed) {}

  // Of a database that consists of `original`, in place.
  void apply(const WorkingCopy &wc, const std::string &original) {
    const std::string database = wc / ".svn/wc.db";
    if (below(2) == 0) {
      writeFile(database, ofBytes(original));
    } else {
      writeFile(database, original);
      for (std::size_t left = 1 + below(3); left > 0; --left) {
        damageContents(wc);
      }
    }
  }

 private:
  // A value that is valid SQL and nothing that Subversion writes there.
  void damageContents(const WorkingCopy &wc) {
    static const std::map<std::string, std::vector<std::string>> columns = {
        {"NODES",
         {"local_relpath", "op_depth", "parent_relpath", "repos_id", "repos_path", "revision",
          "presence", "moved_here", "moved_to", "kind", "properties", "depth", "checksum",
          "symlink_target", "changed_revision", "translated_size", "last_mod_time"}},
        {"REPOSITORY", {"root", "uuid"}},
        {"WCROOT", {"local_abspath"}},
        {"PRISTINE", {"checksum", "size", "refcount"}},
        {"LOCK", {"repos_relpath", "lock_token", "lock_owner"}},
        {"ACTUAL_NODE", {"local_relpath", "parent_relpath", "properties", "conflict_data"}},
        {"EXTERNALS", {"local_relpath", "parent_relpath", "presence", "kind"}}};
    static const std::vector<std::string> values = {
        "NULL",
        "''",
        "0",
        "-1",
        "9223372036854775807",
        "'..'",
        "'../wc'",
        "'/'",
        "'a//b'",
        "'a/'",
        "'.'",
        "x'ff'",
        "'(('",
        "'(9 x)'",
        "'normal'",
        "'base-deleted'",
        "'unknown'",
        "'symlink'",
        "'$sha1$0000000000000000000000000000000000000000'",
        "'$md5 $'",
        "'a/changed'"};
    const auto &[table, names] = *std::next(columns.begin(), static_cast<long>(below(7)));
    const std::string &column = names[below(names.size())];
    const std::string row = std::to_string(below(24));
    const ForeignDatabase contents(wc.path());
    contents.execute("PRAGMA ignore_check_constraints = 1");
    if (table == "EXTERNALS" || table == "ACTUAL_NODE") {  // which have no rows of their own
      contents.execute(
          "INSERT OR IGNORE INTO EXTERNALS (wc_id, local_relpath, parent_relpath, "
          "repos_id, presence, kind, def_local_relpath, def_repos_relpath) VALUES (1, "
          "'a/external', 'a', 1, 'normal', 'dir', '', ''); INSERT OR IGNORE INTO "
          "ACTUAL_NODE (wc_id, local_relpath, parent_relpath) VALUES (1, 'a/clean', 'a')");
    }
    try {
      contents.execute("UPDATE OR IGNORE " + table + " SET " + column + " = " +
                       values[below(values.size())] + " WHERE rowid = (SELECT rowid FROM " + table +
                       " LIMIT 1 OFFSET " + row + " % (SELECT COUNT(*) FROM " + table + "))");
    } catch (const std::exception &) {
      // SQLite itself refuses what the schema does not bear.
    }
  }

  std::string ofBytes(std::string bytes) {
    switch (below(8)) {
      case 0:  // one byte
        bytes[below(bytes.size())] = anyByte();
        break;
      case 1:  // some bytes
        for (std::size_t left = 1 + below(200); left > 0; --left) {
          bytes[below(bytes.size())] = anyByte();
        }
        break;
      case 2:  // what SQLite reads first
        for (std::size_t left = 1 + below(8); left > 0; --left) {
          bytes[below(200)] = anyByte();
        }
        break;
      case 3:  // the head of a page
        bytes[pageIn(bytes) + below(16)] = anyByte();
        break;
      case 4:  // a page that was never written
        bytes.replace(pageIn(bytes), pageSize, pageSize, '\0');
        break;
      case 5:  // a page in place of another
        bytes.replace(pageIn(bytes), pageSize, bytes.substr(pageIn(bytes), pageSize));
        break;
      case 6:  // garbage
        for (std::size_t at = pageIn(bytes), left = 1 + below(pageSize); left > 0; --left) {
          bytes[at++] = anyByte();
        }
        break;
      default:  // cut off
        bytes.resize(below(bytes.size()));
        break;
    }
    return bytes;
  }

  static constexpr std::size_t pageSize = 1024;  // a divisor of what SQLite has

  std::size_t below(std::size_t bound) { return random_() % bound; }
  char anyByte() { return static_cast<char>(below(256)); }
  std::size_t pageIn(const std::string &bytes) { return below(bytes.size() / pageSize) * pageSize; }

  std::mt19937 random_;
};

class CorruptDatabase : public testing::Test {
 protected:
  CorruptDatabase() {
    for (const WorkingCopy *wc : {&damaged, &whole}) {
      for (const char *folder : {"a", "a/b", "c"}) {
        for (const char *name : {"changed", "clean", "locked", "deleted", "conflict"}) {
          writeFile(*wc / (std::string(folder) + "/" + name), "contents");
        }
      }
      wc->svn({"add", "--quiet", "a", "c"});
      wc->commit();
      wc->svn({"update", "--quiet"});
      wc->svn({"delete", "--quiet", "a/deleted"});
      wc->svn({"lock", "--quiet", "c/locked"});
      wc->svn({"copy", "--quiet", "a/b", "copied"});
      wc->svn({"propset", "--quiet", "name", "value", "c"});
      writeFile(*wc / "a/changed", "another size");
      EXPECT_EQ(session.halvern({"add", wc->path()}).status, 0);
    }
    client.directoryURLs();  // starts the extension
  }

  // The badges of an item of each, from new scans. Empty if they do not come.
  BusClient::Badges badgesOfBoth() {
    const std::vector<std::string> urls = {urlOf(damaged / "a/changed"),
                                           urlOf(whole / "a/changed")};
    for (const WorkingCopy *wc : {&damaged, &whole}) {
      EXPECT_EQ(
          client.call("EndObservingDirectory", g_variant_new("(s)", urlOf(wc->path()).c_str())),
          "");
    }
    client.set.clear();
    EXPECT_EQ(client.requestBadges(urls), "");
    return client.waitForBadges(urls.size()) ? client.set : BusClient::Badges();
  }

  const ExtensionSession session{ExtensionSession::loggingSetup()};
  const WorkingCopy damaged{session.directory(), "damaged"};
  const WorkingCopy whole{session.directory(), "whole"};
  BusClient client{session.bus()};
};

}  // namespace

TEST_F(CorruptDatabase, CostsNothingBeyondItsWorkingCopy) {
  const unsigned long count = numberFromEnvironment("HALVERN_CORRUPTIONS", 100);
  const unsigned long seed = numberFromEnvironment("HALVERN_SEED", 7);
  const BusClient::Badges expected = {{urlOf(damaged / "a/changed"), "modified"},
                                      {urlOf(whole / "a/changed"), "modified"}};
  ASSERT_EQ(badgesOfBoth(), expected);
  const pid_t extension = session.extensionProcess();
  const std::string database = damaged / ".svn/wc.db";
  const std::string original = readFileForTest(database);

  Damage damage(seed);
  for (unsigned long i = 0; i < count; ++i) {
    damage.apply(damaged, original);
    const BusClient::Badges badges = badgesOfBoth();
    ASSERT_EQ(badges.size(), 2U) << "seed " << seed << ", corruption " << i;
    ASSERT_EQ(badges[1], expected[1]) << "seed " << seed << ", corruption " << i;
    ASSERT_EQ(session.extensionProcess(), extension) << "seed " << seed << ", corruption " << i;
    std::filesystem::remove(database + "-journal");
  }
  writeFile(database, original);
  EXPECT_EQ(badgesOfBoth(), expected);

  const std::string log = session.log();
  std::cout << count << " corruptions (seed " << seed << "): the library returned an error for "
            << occurrences(log, "Status scan of") - occurrences(log, "E200012")
            << ", ended the scan in " << occurrences(log, "The scan was ended") << ", hung in "
            << occurrences(log, "The scan hangs") << "\n";
}
