// What the address sanitizer must not take for leaks: GLib forks a process that ends the bus of a
// test when the test has ended. It has the memory of all of the test's threads and none of these
// threads, and looks for leaks when it ends. The test itself does as it should.
#include <unistd.h>

static const pid_t testProcess = getpid();

extern "C" int __lsan_is_turned_off() {  // NOLINT: the sanitizer's name
  return getpid() == testProcess ? 0 : 1;
}
