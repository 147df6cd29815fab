#include "filemanagers/glib/GLibMainLoop.h"

#include <utility>

namespace filemanagers {

struct GLibMainLoop::Call {
  GLibMainLoop &loop;
  GSource *source;
  std::function<void()> function;

  static gboolean run(gpointer data) {
    auto &call = *static_cast<Call *>(data);
    call.loop.sources_.erase(call.source);
    call.function();
    return G_SOURCE_REMOVE;
  }

  static void destroy(gpointer data) {
    const std::unique_ptr<Call> call(static_cast<Call *>(data));
  }
};

GLibMainLoop::~GLibMainLoop() {
  for (GSource *source : std::exchange(sources_, {})) {
    g_source_destroy(source);
  }
}

void GLibMainLoop::callSoon(std::function<void()> function) {
  attach(g_idle_source_new(), std::move(function));
}

// Not with GLib's timeouts of whole seconds, which may come a quarter of a second early.
void GLibMainLoop::callAfter(std::chrono::seconds delay, std::function<void()> function) {
  attach(g_timeout_source_new(static_cast<guint>(std::chrono::milliseconds(delay).count())),
         std::move(function));
}

void GLibMainLoop::attach(GSource *source, std::function<void()> function) {
  sources_.insert(source);
  g_source_set_callback(source, Call::run,
                        std::make_unique<Call>(Call{*this, source, std::move(function)}).release(),
                        Call::destroy);
  g_source_attach(source, nullptr);
  g_source_unref(source);
}

}  // namespace filemanagers
