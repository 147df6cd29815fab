// What has the extension's name on a bus and says what the test wants it to. Works on a thread of
// its own, so that the test may wait meanwhile; its operations may be called from any thread.
#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "FinderSync1.h"
#include "platform/linux/MainContextQueues.h"
#include "tests/support/bus/PrivateBus.h"

class ExtensionStandIn {
 public:
  enum class OnRequest { answers, staysSilent, leavesTheBus };
  using Paths = std::vector<std::string>;

  // Has the name when it is made. Its badges are "modified", "added" and "locked", with the icons
  // that the extension gives them; its menu has one item, "Stand-in", with one entry.
  ExtensionStandIn(const PrivateBus &bus, const Paths &directories,
                   OnRequest onRequest = OnRequest::answers);

  // Leaves the bus, as a process that ends.
  ~ExtensionStandIn();
  ExtensionStandIn(const ExtensionStandIn &) = delete;
  ExtensionStandIn &operator=(const ExtensionStandIn &) = delete;

  // What requests for the path are answered with from now on. Says nothing by itself.
  void setBadge(const std::string &path, const std::string &badge);

  // Says one message of the badges of these paths, as of a change that nobody asked about.
  void announceChange(const Paths &paths);

  void setDirectories(const Paths &directories);

  // Answers are kept back until they are let go, in the order of the requests.
  void holdAnswers();
  void releaseAnswers();

  // Handles nothing until it is resumed, as a process that was stopped.
  void stop();
  void resume();

  // The paths of each request so far, in the order of arrival. Those that are answered at once have
  // their answers on the bus.
  std::vector<Paths> requests() const;

  // Folders that clients have begun and ended to observe, in the same way.
  Paths begunFolders() const;
  Paths endedFolders() const;

  // Waits until there have been that many requests; false if there are not.
  bool waitForRequests(std::size_t count) const;

 private:
  struct Handlers;

  void connectHandlers();
  void runInThread(const std::function<void()> &work);
  void emit(const char *client, const char *signal, const Paths &urls);

  const OnRequest onRequest_;
  const platform::Handle<GMainContext, g_main_context_unref> context_;
  const platform::Handle<GMainLoop, g_main_loop_unref> loop_;
  platform::MainContextQueue queue_;  // of the thread
  platform::ObjectHandle<GDBusConnection> connection_;
  platform::ObjectHandle<HalvernFinderSync1> skeleton_;

  // Guarded by the mutex.
  mutable std::mutex mutex_;
  mutable std::condition_variable hasRequest_;
  std::condition_variable isResumed_;
  bool isStopped_ = false;
  std::map<std::string, std::string> badges_;
  std::vector<Paths> requests_;
  Paths begunFolders_;
  Paths endedFolders_;

  // Of the thread.
  bool holdsAnswers_ = false;
  std::vector<std::pair<std::string, Paths>> heldAnswers_;  // client, urls

  std::thread thread_;
};
