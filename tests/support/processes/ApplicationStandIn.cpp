// A program that does nothing until it is ended, in place of an application that is launched.
#include <unistd.h>

int main() {
  // It outlives a test that breaks, but not for ever.
  constexpr unsigned longestTest = 600;  // seconds
  alarm(longestTest);
  pause();
  return 1;
}
