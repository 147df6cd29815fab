#include "companion/Output.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

#include <glib.h>

namespace companion {

namespace {

constexpr std::size_t pieceSize = 1 << 16;  // bytes

// 0, or the error number.
int writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
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
    error_ = writeAll(STDOUT_FILENO, held_);
  }
  held_.clear();
  return error_ == 0;
}

bool Output::finish() {
  if (flush() || (error_ == EPIPE && mayReaderGo_)) {
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
