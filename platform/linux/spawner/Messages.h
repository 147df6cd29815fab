// What the extension and its spawner say to each other: a word, texts and open files, in one
// message of a socket that keeps messages apart. Both ends are checked: the spawner may be more
// than whoever speaks to it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Result.h"
#include "platform/linux/Packets.h"

namespace platform {

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
