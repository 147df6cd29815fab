#include "tests/scanner/ForeignDatabase.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sqlite3.h>
#include <stdexcept>

void leaveJournalThatNames(const std::string &file, const std::string &root) {
  const auto number = [](std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
      bytes += static_cast<char>(value >> shift);
    }
    return bytes;
  };
  constexpr std::uint32_t pageSize = 4096;
  constexpr std::uint32_t sectorSize = 512;
  const std::string magic = "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7";
  const std::string database = root + "/.svn/wc.db";
  const auto pages = static_cast<std::uint32_t>(std::filesystem::file_size(database) / pageSize);
  std::string header =
      magic + number(0) + number(0) + number(pages) + number(sectorSize) + number(pageSize);
  header.resize(sectorSize);
  std::uint32_t sum = 0;
  for (const char each : file) {
    sum += static_cast<std::uint32_t>(each);
  }
  std::ofstream journal(database + "-journal", std::ios::binary);
  journal << header << number(0x4000'0000 / pageSize + 1) << file
          << number(static_cast<std::uint32_t>(file.size())) << number(sum) << magic;
  journal.close();
  if (!journal) {
    throw std::runtime_error("The journal cannot be written");
  }
}

ForeignDatabase::ForeignDatabase(const std::string &root) {
  sqlite3 *connection = nullptr;
  const int result =
      sqlite3_open_v2((root + "/.svn/wc.db").c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr);
  connection_.reset(connection);
  if (result != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection));
  }
  // Another program is not bound by what this one keeps to.
  sqlite3_set_authorizer(connection, nullptr, nullptr);
}

void ForeignDatabase::execute(const std::string &statements) const {
  if (sqlite3_exec(connection_.get(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection_.get()));
  }
}

void ForeignDatabase::grow() const {
  execute("CREATE TABLE ballast (bytes); INSERT INTO ballast VALUES (zeroblob(3000000))");
}

void ForeignDatabase::Closing::operator()(sqlite3 *connection) const {
  sqlite3_close(connection);
}
