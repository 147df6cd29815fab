// The default main context, which turns in the file manager's main thread.
#pragma once

#include <set>

#include "filemanagers/client/MainLoop.h"
#include "platform/linux/GLibHandles.h"

namespace filemanagers {

class GLibMainLoop final : public MainLoop {
 public:
  GLibMainLoop() = default;
  ~GLibMainLoop() override;
  GLibMainLoop(const GLibMainLoop &) = delete;
  GLibMainLoop &operator=(const GLibMainLoop &) = delete;

  void callSoon(std::function<void()> function) override;
  void callAfter(std::chrono::seconds delay, std::function<void()> function) override;

 private:
  struct Call;

  void attach(GSource *source, std::function<void()> function);

  std::set<GSource *> sources_;  // that have not run; they belong to the context
};

}  // namespace filemanagers
