// A home of the program's own, so that what it tries touches nobody's files and reaches no bus.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

class OwnHome {
 public:
  // The home of this process, made on first use, when the environment is changed to lead there. It
  // goes when the process ends well.
  static const OwnHome &get();

  // Absolute, without symbolic links in it.
  std::string path() const { return path_; }

  // The path of an entry in it; creates nothing.
  std::string operator/(std::string_view name) const { return path_ / name; }

  // The directory that the extension and the application share. It exists.
  std::string sharedDirectory() const;

 private:
  OwnHome();
  ~OwnHome();

  std::filesystem::path path_;
};

// Whole files. What fails ends the program.
void writeWholeFile(const std::string &path, std::string_view contents);
std::string readWholeFile(const std::string &path);
