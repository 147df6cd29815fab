// A program in place of a status worker. Each packet that it is sent is a wish: "e" and more is
// answered with the rest of it, "c" starts a child that stays and tells its number, "x" ends.
#include <array>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr int extension = 3;           // its socket
constexpr unsigned longestTest = 600;  // seconds; it outlives a test that breaks, but not for ever

void startChild() {
  const pid_t child = fork();
  if (child == 0) {
    alarm(longestTest);
    pause();
    _exit(1);
  }
  std::array<char, 16> text{};
  const int size = std::snprintf(text.data(), text.size(), "%d", child);
  if (write(extension, text.data(), static_cast<std::size_t>(size)) != size) {
    _exit(1);
  }
}

}  // namespace

int main() {
  alarm(longestTest);
  std::array<char, 16> wish{};
  ssize_t size = 0;
  while ((size = read(extension, wish.data(), wish.size())) > 0 && wish[0] != 'x') {
    if (wish[0] == 'c') {
      startChild();
    } else if (wish[0] == 'e' &&
               write(extension, wish.data() + 1, static_cast<std::size_t>(size) - 1) != size - 1) {
      return 1;
    }
  }
  return 0;
}
