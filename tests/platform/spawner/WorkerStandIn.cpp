// A program in place of a status worker. Each byte that it is sent is a wish: 'e' echoes the next
// one, 'c' starts a child that stays and tells its number, 'x' ends.
#include <array>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr int requests = 3;
constexpr int reports = 4;
constexpr unsigned longestTest = 600;  // seconds; it outlives a test that breaks, but not for ever

void startChild() {
  const pid_t child = fork();
  if (child == 0) {
    alarm(longestTest);
    pause();
    _exit(1);
  }
  std::array<char, 16> text{};
  const int size = std::snprintf(text.data(), text.size(), "%d\n", child);
  if (write(reports, text.data(), static_cast<std::size_t>(size)) != size) {
    _exit(1);
  }
}

}  // namespace

int main() {
  alarm(longestTest);
  char wish = 0;
  while (read(requests, &wish, 1) == 1 && wish != 'x') {
    if (wish == 'c') {
      startChild();
    } else if (wish == 'e' && (read(requests, &wish, 1) != 1 || write(reports, &wish, 1) != 1)) {
      return 1;
    }
  }
  return 0;
}
