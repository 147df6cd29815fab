#include "bench/Asker.h"

#include <algorithm>
#include <set>
#include <stdexcept>

std::string urlText(const std::string &path, bool isDirectory) {
  return platform::FileURL::fromPath(path, isDirectory).text();
}

Asker::Asker(const ExtensionSession &session, const std::string &rootPath)
    : client_(session.bus()), rootURL_(urlText(rootPath, true)) {}

void Asker::settle() {
  const std::vector<std::string> roots = client_.directoryURLs();
  std::set<std::string> awaited(roots.begin(), roots.end());
  std::size_t seen = 0;
  const bool areAnnounced = turnMainLoopUntil([&] {
    for (; seen < client_.changed.size(); ++seen) {
      awaited.erase(client_.changed[seen].first);
    }
    return awaited.empty();
  });
  if (roots.empty() || !areAnnounced) {
    throw std::runtime_error("the extension announces nothing");
  }
}

Seconds Asker::ask(const std::vector<std::string> &urls, std::size_t urlsInCall) {
  std::vector<std::vector<std::string>> calls;
  for (auto from = urls.begin(); from != urls.end();) {
    const auto count = std::min(static_cast<std::ptrdiff_t>(urlsInCall), urls.end() - from);
    calls.emplace_back(from, from + count);
    from += count;
  }
  const std::size_t before = client_.set.size();
  return timeOf([&] {
    for (const std::vector<std::string> &call : calls) {
      if (!client_.requestBadges(call).empty()) {
        throw std::runtime_error("the extension refuses a question");
      }
    }
    if (!client_.waitForBadges(before + urls.size())) {
      throw std::runtime_error("the extension does not answer");
    }
  });
}

Seconds Asker::askForRoot(std::size_t count) {
  return ask(std::vector<std::string>(count, rootURL_), count);
}

void Asker::forget() {
  client_.call("EndObservingDirectory", g_variant_new("(s)", rootURL_.c_str()));
}

FirstAnswers compareFirstAnswers(Asker &asker, const std::string &rootPath, int runCount) {
  FirstAnswers compared;
  for (int i = 0; i < runCount; ++i) {
    const ProgramRun status = runProgram({"svn", "status", rootPath});
    compared.statuses.push_back(status.duration);
    compared.statusMemory = std::max(compared.statusMemory, status.peakMemory);
    asker.forget();
    compared.answers.push_back(asker.askForRoot());
  }
  return compared;
}
