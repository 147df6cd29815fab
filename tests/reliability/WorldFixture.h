// A working copy that is shown while something happens to it or to the processes that look at it,
// and what must hold afterwards: the same extension process, badges that are right by themselves,
// and a watch for each folder and no more.
#pragma once

#include <string>
#include <sys/types.h>

#include "tests/system/LiveFixture.h"

class WorldFixture : public LiveFixture {
 protected:
  WorldFixture();

  // Lists the working copy, shows all of it, and remembers which process does it. Some of its
  // badges are those of changes.
  void showAll();

  // That what is shown is right, and by which means; `root` is where the items are.
  void expectAllIsRight();

  // That no item is shown with a badge, once the extension has looked.
  void expectNoBadges();

  const std::string root = wc.path();
  pid_t extension = -1;

 private:
  std::size_t watchedFoldersOfRoot() const;

  std::size_t otherWatches_ = 0;  // of the folders above the root
};
