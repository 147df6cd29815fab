#include "platform/linux/process/guard/MainLoopWork.h"

#include <utility>

struct MainLoopWork::Source {
  GSource base;
  MainLoopWork *work;

  static gboolean dispatch(GSource *source, GSourceFunc /*callback*/, gpointer /*data*/) {
    MainLoopWork &work = *reinterpret_cast<Source *>(source)->work;
    g_source_set_ready_time(source, -1);  // before it looks: what comes from now on wakes it again
    if (work.slice_()) {
      work.wake();
    }
    return G_SOURCE_CONTINUE;
  }

  static inline GSourceFuncs functions = {nullptr, nullptr, dispatch, nullptr, nullptr, nullptr};
};

MainLoopWork::MainLoopWork(std::function<bool()> slice)
    : slice_(std::move(slice)), source_(g_source_new(&Source::functions, sizeof(Source))) {
  reinterpret_cast<Source *>(source_.get())->work = this;
  g_source_attach(source_.get(), nullptr);
}

MainLoopWork::~MainLoopWork() {
  g_source_destroy(source_.get());
}

void MainLoopWork::wake() {
  g_source_set_ready_time(source_.get(), 0);
}
