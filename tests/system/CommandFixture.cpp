#include "tests/system/CommandFixture.h"

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

std::string CommandFixture::launchedURL() const {
  const std::vector<std::string> arguments = launched.only().arguments();
  if (arguments.size() != 2) {
    throw std::runtime_error("The program was given another number of arguments than one");
  }
  return arguments[1];
}
