#include "tests/system/CommandFixture.h"

#include <algorithm>
#include <stdexcept>

namespace {

// In English, whatever the language of the test is.
ExtensionSession::Setup withDataOfSystem(ExtensionSession::Setup setup, const std::string &path) {
  setup.environment["XDG_DATA_DIRS"] = path;
  setup.environment["LC_ALL"] = "C";
  return setup;
}

}  // namespace

CommandFixture::CommandFixture(ExtensionSession::Setup setup)
    : session(withDataOfSystem(std::move(setup), dataOfSystem.path())) {}

std::string CommandFixture::entryOfApplication(const std::string &lines) {
  return "[Desktop Entry]\nType=Application\nName=Halvern\nExec=\"" +
         LaunchedPrograms::standInProgram() + "\" %u\n" + lines;
}

void CommandFixture::installApplication(const std::string &lines) const {
  writeFile(session / "data/applications/com.morvane.v3.desktop", entryOfApplication(lines));
}

void CommandFixture::installApplicationForAll() const {
  writeFile(dataOfSystem / "applications/com.morvane.v3.desktop", entryOfApplication());
}

void CommandFixture::start() {
  client.catchUp();
  launched.begin();
}

std::string CommandFixture::perform(const std::string &action,
                                    const std::vector<std::string> &selected,
                                    const std::string &targeted, GVariant *platformData) {
  std::vector<const char *> texts;
  texts.reserve(selected.size() + 1);
  for (const std::string &url : selected) {
    texts.push_back(url.c_str());
  }
  texts.push_back(nullptr);
  GVariant *data = platformData == nullptr ? g_variant_new("a{sv}", nullptr) : platformData;
  return client.call("PerformMenuAction", g_variant_new("(s^ass@a{sv})", action.c_str(),
                                                        texts.data(), targeted.c_str(), data));
}

std::string CommandFixture::performWithToken(const std::string &action, const std::string &token) {
  return perform(
      action, {"file:///wc/item"}, "",
      g_variant_new_parsed("{'activation-token': <%s>, 'other': <true>}", token.c_str()));
}

std::vector<std::string> CommandFixture::commandNames() const {
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(commandDirectory())) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

platform::Dictionary CommandFixture::command() const {
  const std::vector<std::string> names = commandNames();
  if (names.size() != 1) {
    throw std::runtime_error("There are " + std::to_string(names.size()) + " commands");
  }
  return session.sharedDictionary("Commands/" + names.front());
}

std::vector<std::string> CommandFixture::sentPaths() const {
  const platform::Dictionary sent = command();
  std::vector<std::string> paths;
  for (const platform::PropertyList &path : *sent.at("paths").as<platform::Array>()) {
    paths.push_back(*path.as<std::string>());
  }
  return paths;
}

std::string CommandFixture::launchedURL() const {
  const std::vector<std::string> arguments = launched.only().arguments();
  if (arguments.size() != 2) {
    throw std::runtime_error("The program was given another number of arguments than one");
  }
  return arguments[1];
}
