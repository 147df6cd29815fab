#include "tests/filemanagers/qt/PausedBus.h"

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <utility>

using platform::VariantHandle;

PausedBus::PausedBus(pid_t bus) : bus_(bus) {
  kill(bus_, SIGSTOP);
  patience_ = std::thread([this] {
    std::unique_lock lock(mutex_);
    if (!isResumed_.wait_for(lock, std::chrono::seconds(10), [this] { return !isPaused_; })) {
      isPaused_ = false;
      kill(bus_, SIGCONT);
    }
  });
}

PausedBus::~PausedBus() {
  resume();
  patience_.join();
}

bool PausedBus::resume() {
  const std::lock_guard lock(mutex_);
  const bool wasPaused = std::exchange(isPaused_, false);
  if (wasPaused) {
    kill(bus_, SIGCONT);
  }
  isResumed_.notify_all();
  return wasPaused;
}

pid_t PausedBus::processOf(const PrivateBus &bus) {
  const auto connection = bus.connect();
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "GetConnectionUnixProcessID", g_variant_new("(s)", "org.freedesktop.DBus"),
      G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  if (reply == nullptr) {
    throw std::runtime_error("The bus does not tell its process");
  }
  guint32 process = 0;
  g_variant_get(reply.get(), "(u)", &process);
  return static_cast<pid_t>(process);
}
