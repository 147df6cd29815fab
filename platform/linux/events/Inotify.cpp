#include "platform/linux/events/Inotify.h"

#include <array>
#include <unistd.h>

namespace platform {

Inotify::Inotify() : descriptor_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {}

Inotify::~Inotify() {
  if (isOpen()) {
    close(descriptor_);
  }
}

int Inotify::addWatch(const std::string &path, std::uint32_t mask) {
  return inotify_add_watch(descriptor_, path.c_str(), mask | IN_ONLYDIR | IN_MASK_ADD);
}

int Inotify::replaceWatch(const std::string &path, std::uint32_t mask) {
  return inotify_add_watch(descriptor_, path.c_str(), mask | IN_ONLYDIR);
}

void Inotify::removeWatch(int watch) {
  inotify_rm_watch(descriptor_, watch);
}

std::size_t Inotify::readEvents(const std::function<bool(const Event &event)> &visit) {
  // Some 2,000 events at a time.
  alignas(inotify_event) std::array<char, 64 << 10> buffer{};
  std::size_t count = 0;
  for (;;) {
    const ssize_t length = read(descriptor_, buffer.data(), buffer.size());
    if (length <= 0) {
      return count;
    }
    for (const char *position = buffer.data(); position < buffer.data() + length;) {
      const auto *raw = reinterpret_cast<const inotify_event *>(position);
      const Event event{raw->wd, raw->mask, raw->cookie,
                        raw->len == 0 ? std::string_view() : std::string_view(raw->name)};
      ++count;
      if (!visit(event)) {
        return count;
      }
      position += sizeof(inotify_event) + raw->len;
    }
  }
}

}  // namespace platform
