// Someone who asks a running extension for badges, and takes the time.
#pragma once

#include <string>
#include <vector>

#include "bench/Measure.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/session/ExtensionSession.h"

std::string urlText(const std::string &path, bool isDirectory = false);

class Asker {
 public:
  // For the working copy at `rootPath`. Starts nothing.
  Asker(const ExtensionSession &session, const std::string &rootPath);

  // Starts the extension if need be, and waits until it has announced every working copy, which it
  // does by itself once all is watched: what is measured from then on is not disturbed.
  void settle();

  // From the question to the last answer, with so many urls in each call.
  Seconds ask(const std::vector<std::string> &urls, std::size_t urlsInCall);

  // The same for the root, asked for so often in one call.
  Seconds askForRoot(std::size_t count = 1);

  // Has the next answer need a scan.
  void forget();

  BusClient &client() { return client_; }

 private:
  BusClient client_;
  const std::string rootURL_;
};

// The first answer where nothing is cached, beside "svn status" in turn.
struct FirstAnswers {
  std::vector<Seconds> answers;
  std::vector<Seconds> statuses;
  long statusMemory = 0;  // KiB resident, the greatest
};
FirstAnswers compareFirstAnswers(Asker &asker, const std::string &rootPath, int runCount);
