#include "fuzz/support/OwnHome.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "fuzz/support/Promise.h"
#include "platform/SharedDirectory.h"

namespace {

namespace fs = std::filesystem;

void setVariable(const char *name, const std::string &value) {
  mustHold(setenv(name, value.c_str(), 1) == 0, "a variable can be set");
}

}  // namespace

const OwnHome &OwnHome::get() {
  static const OwnHome home;
  return home;
}

OwnHome::OwnHome() {
  std::string pattern = fs::canonical(fs::temp_directory_path()) / "halvern-fuzz-XXXXXX";
  mustHold(mkdtemp(pattern.data()) != nullptr, "there is a directory for temporary files");
  path_ = pattern;
  setVariable("HOME", path_);
  setVariable("XDG_DATA_HOME", *this / "data");
  setVariable("XDG_CONFIG_HOME", *this / "config");
  setVariable("XDG_STATE_HOME", *this / "state");
  setVariable("XDG_CACHE_HOME", *this / "cache");
  setVariable("XDG_RUNTIME_DIR", *this / "runtime");
  setVariable("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + *this / "no-bus");
  fs::create_directories(sharedDirectory());
}

OwnHome::~OwnHome() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string OwnHome::sharedDirectory() const {
  return *this / (std::string("data/group-containers/") + platform::applicationGroupIdentifier +
                  "/FinderSync");
}

void writeWholeFile(const std::string &path, std::string_view contents) {
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream << contents;
  stream.close();
  mustHold(stream.good(), "a file in the own home can be written");
}

std::string readWholeFile(const std::string &path) {
  std::ifstream stream(path, std::ios::binary);
  mustHold(stream.good(), "a file in the own home can be read");
  return {std::istreambuf_iterator<char>(stream), {}};
}
