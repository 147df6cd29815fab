// watch_tree ROOT: the event source by itself, as a program that can be measured beside others that
// watch a tree. Says on standard error when all watches stand, and goes on until it is ended.
#include <cstdio>
#include <unistd.h>

#include "tests/platform/events/ReportedEvents.h"

int main(int argumentCount, char **arguments) {
  if (argumentCount != 2) {
    std::fprintf(stderr, "Usage: %s ROOT\n", arguments[0]);
    return 2;
  }
  ReportedEvents events({arguments[1]}, {}, ReportedEvents::productFlags,
                        std::chrono::steady_clock::duration::zero());
  if (!events.waitFor({arguments[1]})) {
    std::fputs("The watches do not stand.\n", stderr);
    return 1;
  }
  std::fputs("Watches established.\n", stderr);
  pause();
  return 0;
}
