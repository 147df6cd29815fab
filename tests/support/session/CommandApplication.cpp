#include "tests/support/session/CommandApplication.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "tests/support/processes/LaunchedPrograms.h"

std::string CommandApplication::desktopEntry(const std::string &lines) {
  return "[Desktop Entry]\nType=Application\nName=Halvern\nExec=\"" +
         LaunchedPrograms::standInProgram() + "\" %u\n" + lines;
}

void CommandApplication::install(const std::string &lines) const {
  writeFile(session_ / "data/applications/com.morvane.v3.desktop", desktopEntry(lines));
}

std::vector<std::string> CommandApplication::commandNames() const {
  std::vector<std::string> names;
  std::error_code notThere;
  for (const auto &entry : std::filesystem::directory_iterator(commandDirectory(), notThere)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

platform::Dictionary CommandApplication::command() const {
  const std::vector<std::string> names = commandNames();
  if (names.size() != 1) {
    throw std::runtime_error("There are " + std::to_string(names.size()) + " commands");
  }
  return session_.sharedDictionary("Commands/" + names.front());
}

std::vector<std::string> CommandApplication::sentPaths() const {
  const platform::Dictionary sent = command();
  std::vector<std::string> paths;
  for (const platform::PropertyList &path : *sent.at("paths").as<platform::Array>()) {
    paths.push_back(*path.as<std::string>());
  }
  return paths;
}
