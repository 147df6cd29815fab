#include "companion/Output.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <glib.h>

namespace companion {

namespace {

constexpr std::size_t pieceSize = 1 << 16;  // bytes

// 0, or the error number; ECANCELED once the descriptor `interruption`, if there is one, is
// readable while nobody reads.
int writeAll(int descriptor, std::string_view text, int interruption = -1) {
  while (!text.empty()) {
    // What fits into a pipe that is said to have room is written without waiting.
    std::size_t size = text.size();
    if (interruption >= 0) {
      std::array<pollfd, 2> descriptors = {{{descriptor, POLLOUT, 0}, {interruption, POLLIN, 0}}};
      poll(descriptors.data(), descriptors.size(), -1);
      if (descriptors[0].revents == 0 && descriptors[1].revents != 0) {
        return ECANCELED;
      }
      size = std::min<std::size_t>(size, PIPE_BUF);
    }
    const ssize_t count = ::write(descriptor, text.data(), size);
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

}  // namespace

void Output::write(std::string_view text) {
  held_ += text;
  if (held_.size() >= pieceSize) {
    flush();
  }
}

void Output::writeLine(std::string_view line) {
  write(std::string(line) + "\n");
}

bool Output::flush() {
  if (error_ == 0) {
    error_ = writeAll(STDOUT_FILENO, held_, interruption_);
  }
  held_.clear();
  return error_ == 0;
}

bool Output::finish() {
  if (flush() || (error_ == EPIPE && mayReaderGo_) || error_ == ECANCELED) {
    return true;
  }
  printError(std::string("standard output: ") + g_strerror(error_));
  return false;
}

void printError(std::string_view message) {
  // Where it cannot be written, there is nobody left to tell.
  writeAll(STDERR_FILENO, "halvern: " + std::string(message) + "\n");
}

}  // namespace companion
