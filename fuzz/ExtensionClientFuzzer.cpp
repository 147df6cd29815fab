// What a file manager's plug-in does with any sequence of what it is shown and told.
//
// An input is a row of steps: a letter, and a url, or what else the step takes.
#include <deque>
#include <set>
#include <utility>

#include "filemanagers/client/ExtensionClient.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/Promise.h"
#include "platform/FileURL.h"

namespace {

using filemanagers::ExtensionClient;

class Loop final : public filemanagers::MainLoop {
 public:
  void callSoon(std::function<void()> function) override { due_.push_back(std::move(function)); }
  void callAfter(std::chrono::seconds /*delay*/, std::function<void()> function) override {
    delayed_.push_back(std::move(function));
  }

  // Calls what is due until nothing is. What a plug-in plans comes to an end.
  void runUntilIdle() {
    constexpr int enough = 10'000;
    for (int calls = 0; !due_.empty(); ++calls) {
      mustHold(calls < enough, "a plug-in comes to rest");
      const std::function<void()> function = std::move(due_.front());
      due_.pop_front();
      function();
    }
  }

  void letTimePass() {
    for (const std::function<void()> &function : std::exchange(delayed_, {})) {
      function();
      runUntilIdle();
    }
  }

 private:
  std::deque<std::function<void()>> due_;
  std::vector<std::function<void()>> delayed_;
};

class Link final : public filemanagers::ExtensionLink {
 public:
  void start() override {}
  void requestBadges(const std::vector<std::string> &paths) override {
    mustHold(isThere, "only an extension that is there is asked");
    const std::set<std::string> different(paths.begin(), paths.end());
    mustHold(!paths.empty() && different.size() == paths.size(), "a call asks once for each item");
    for (const std::string &path : paths) {
      asked.push_back(path);
    }
  }
  void beginObserving(const std::string & /*folder*/) override {
    mustHold(isThere, "only an extension that is there is asked");
  }
  void endObserving(const std::string & /*folder*/) override {
    mustHold(isThere, "only an extension that is there is asked");
  }
  void requestMenu(platform::FIMenuKind /*kind*/) override {
    mustHold(isThere, "only an extension that is there is asked");
  }
  void performAction(const std::string & /*action*/,
                     const filemanagers::MenuSelection & /*selection*/) override {}

  bool isThere = false;
  std::vector<std::string> asked;
};

class Plugin {
 public:
  Plugin()
      : client_(link_, loop_,
                {[this](const std::string &path) {
                   mustHold(shown_.contains(path), "only what is shown is drawn anew");
                   client_.showItem(path);
                 },
                 [] {}}) {}

  void step(char what, const std::string &argument) {
    const auto url = platform::FileURL::fromText("file://" + argument);
    const std::string path = url ? url->path() : "";
    switch (what) {
      case 's':
        if (!path.empty()) {
          shown_.insert(path);
          client_.showItem(path);
        }
        break;
      case 'h':
        if (shown_.erase(path) > 0) {
          client_.hideItem(path);
        }
        break;
      case 'd':
        if (link_.isThere && !path.empty()) {
          directories_.insert(path);
          client_.takeDirectories({directories_.begin(), directories_.end()});
        }
        break;
      case 'c':
        if (link_.isThere && !path.empty()) {
          client_.takeChanges({{path, "modified"}, {path + "/inner", "added"}});
        }
        break;
      case 'a':
        answer(argument);
        break;
      case '+':
        appear();
        break;
      case '-':
        vanish();
        break;
      case 'm':
        client_.menuForItems({path});
        client_.menuForFolder(path);
        break;
      case 't':
        loop_.letTimePass();
        break;
      default:
        loop_.runUntilIdle();
    }
  }

 private:
  void answer(const std::string &badge) {
    filemanagers::ExtensionEvents::Badges badges;
    for (const std::string &path : std::exchange(link_.asked, {})) {
      badges.emplace_back(path, badge);
    }
    client_.takeAnswers(badges);
  }

  void appear() {
    if (!std::exchange(link_.isThere, true)) {
      client_.appeared();
      client_.takeIconNames({{"modified", "emblem-modified"}, {"added", "emblem-added"}});
      client_.takeMenu(platform::FIMenuKind::contextualMenuForItems, {"", {{}}});
    }
  }

  void vanish() {
    if (std::exchange(link_.isThere, false)) {
      link_.asked.clear();
      directories_.clear();
      client_.vanished();
    }
  }

  Loop loop_;
  Link link_;
  std::set<std::string> shown_;
  std::set<std::string> directories_;
  ExtensionClient client_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  Plugin plugin;
  for (const std::string &step : fieldsOfInput(textOfInput(bytes, size), 0)) {
    plugin.step(step.empty() ? '\0' : step[0], step.empty() ? "" : step.substr(1));
  }
  return 0;
}
