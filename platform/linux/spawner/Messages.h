// What the extension and its spawner say to each other: a word, texts and open files, in one
// message of a socket that keeps messages apart. Both ends are checked: the spawner may be more
// than whoever speaks to it.
#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"
#include "platform/linux/Packets.h"

namespace platform {

// What the spawner can be asked for, and what it answers. The first open file of each request is
// where the answer goes, and is closed by the spawner at the end of what was asked for.
struct SpawnerWords {
  const char *startWorker;      // files: socket, life; answered with `failed` or not at all
  const char *findApplication;  // texts: the entry's name; answered with `found` or not at all
  const char *launch;           // texts: those of `argumentsOfLaunch`; not answered
  const char *failed;           // texts: the reason
  const char *found;            // texts: the path
};
constexpr SpawnerWords spawnerWords{"start-worker", "find-application", "launch", "failed",
                                    "found"};

struct Message {
  std::string word;
  std::vector<std::string> texts;  // any bytes but null
  std::vector<FileDescriptor> files;
};

// Sends one message with copies of the open files. Waits while the receiver is behind, unless the
// socket has a limit of its own.
Outcome sendMessage(int socket, const std::string &word, const std::vector<std::string> &texts,
                    const std::vector<int> &files);

enum class Reception { message, nothingOfOurs, end };

// Waits for the next message. What is not a message of this kind is taken and dropped, with the
// open files in it. At the end, nobody has the other end of the socket any more.
Reception receiveMessage(int socket, Message &message);

}  // namespace platform
