#include "companion/Interruption.h"

#include <csignal>
#include <unistd.h>

#include <glib-unix.h>

namespace companion {

namespace {

gboolean note(gpointer isThere) {
  *static_cast<bool *>(isThere) = true;
  return G_SOURCE_REMOVE;
}

gboolean noteReader(int /*descriptor*/, GIOCondition /*condition*/, gpointer isThere) {
  return note(isThere);
}

}  // namespace

Interruption::Interruption() {
  for (const int signal : {SIGINT, SIGTERM}) {
    sources_.emplace_back(g_unix_signal_source_new(signal));
    g_source_set_callback(sources_.back().get(), note, &isThere_, nullptr);
  }
  sources_.emplace_back(g_unix_fd_source_new(STDOUT_FILENO, G_IO_ERR));
  g_source_set_callback(sources_.back().get(), G_SOURCE_FUNC(noteReader), &isThere_, nullptr);
  for (const auto &source : sources_) {
    g_source_attach(source.get(), nullptr);
  }
}

Interruption::~Interruption() {
  for (const auto &source : sources_) {
    g_source_destroy(source.get());
  }
}

}  // namespace companion
