#include "tests/companion/open/OpenSession.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "platform/linux/values/PropertyListCoding.h"

using platform::Array;
using platform::Dictionary;

namespace fs = std::filesystem;

namespace {

constexpr const char *commandsBelowData =
    "data/group-containers/7KQ2M9XR4T.com.morvane.shared/FinderSync/Commands";

// The paths of what is in the folder, which need not exist.
std::vector<std::string> filesIn(const std::string &folder) {
  std::vector<std::string> paths;
  std::error_code error;
  for (const auto &entry : fs::directory_iterator(folder, error)) {
    paths.push_back(entry.path());
  }
  return paths;
}

}  // namespace

OpenSession::OpenSession() {
  environment_.environment = {{"HOME", directory_ / "home"},
                              {"PATH", directory_ / "bin"},
                              {"TMPDIR", directory_ / "temporary"},
                              {"XDG_DATA_HOME", directory_ / "data"},
                              {"XDG_STATE_HOME", directory_ / "state"},
                              {"XDG_CONFIG_HOME", directory_ / "configuration"},
                              {"XDG_DATA_DIRS", directory_ / "none"},
                              {"XDG_CONFIG_DIRS", directory_ / "none"},
                              {"XDG_RUNTIME_DIR", directory_ / "runtime"},
                              {"DBUS_SESSION_BUS_ADDRESS", bus_.address()}};
  environment_.unset = {"DISPLAY", "WAYLAND_DISPLAY", "XDG_CURRENT_DESKTOP",  "SVN_EDITOR",
                        "VISUAL",  "EDITOR",          "XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"};
  for (const char *name : {"home", "bin", "temporary", "runtime", commandsBelowData}) {
    fs::create_directories(directory_ / name);
  }
}

std::string OpenSession::leave(const std::string &action,
                               const std::vector<std::string> &paths) const {
  Array array;
  for (const std::string &path : paths) {
    array.emplace_back(path);
  }
  return leave(Dictionary{{"action", action},
                          {"paths", std::move(array)},
                          {"date", platform::Date(std::chrono::seconds(1'700'000'000))}});
}

std::string OpenSession::leave(const Dictionary &command) const {
  return leaveBytes(platform::xmlPropertyList(command).value());
}

std::string OpenSession::leaveBytes(std::string_view bytes) const {
  char identifier[37];
  std::snprintf(identifier, sizeof identifier, "0A1B2C3D-4E5F-6071-8293-A4B5C6D7%04X",
                static_cast<unsigned>(++commandCount_));
  const fs::path path = directory_ / (std::string(commandsBelowData) + "/" + identifier + ".plist");
  writeFile(path, bytes);
  fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
  return std::string("halvern://finder-sync-command?id=") + identifier;
}

bool OpenSession::isLeft(const std::string &url) const {
  return fs::exists(directory_ / (std::string(commandsBelowData) + "/" +
                                  url.substr(url.find('=') + 1) + ".plist"));
}

void OpenSession::set(const std::string &name, const std::string &value) {
  environment_.environment[name] = value;
  std::erase(environment_.unset, name);
}

std::string OpenSession::install(const std::string &name, const std::string &script) const {
  std::string path = directory_ / ("bin/" + name);
  writeFile(path, "#!/bin/sh\nPATH=/usr/bin:/bin\n" + script);
  fs::permissions(path, fs::perms::owner_all);
  return path;
}

void OpenSession::installRecorder(const std::string &name, const std::string &output,
                                  int status) const {
  const std::string base = directory_ / name;
  writeFile(base + ".output", output);
  install(name, "printf '[%s]\\n' \"$@\" > '" + base + ".arguments'\n" +  //
                    "cat > '" + base + ".input'\n" +                      //
                    "cat '" + base + ".output'\n" +                       //
                    "exit " + std::to_string(status) + "\n");
}

std::string OpenSession::argumentsOf(const std::string &name) const {
  return readFileForTest(directory_ / (name + ".arguments"));
}

std::string OpenSession::inputOf(const std::string &name) const {
  return readFileForTest(directory_ / (name + ".input"));
}

bool OpenSession::wasRun(const std::string &name) const {
  return fs::exists(directory_ / (name + ".arguments"));
}

std::vector<std::string> OpenSession::command(const std::string &url,
                                              const std::vector<std::string> &options) const {
  std::vector<std::string> line = {OPEN_STAND_IN, "open"};
  line.insert(line.end(), options.begin(), options.end());
  line.push_back(url);
  return line;
}

CommandResult OpenSession::open(const std::string &url) const {
  return runCommand(command(url), environment());
}

CommandOptions OpenSession::environment() const {
  return environment_;
}

std::vector<std::string> OpenSession::temporaryFiles() const {
  return filesIn(directory_ / "temporary");
}

std::vector<std::string> OpenSession::keptMessages() const {
  return filesIn(directory_ / "state/halvern");
}
