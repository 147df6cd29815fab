// A display that nobody sees, with a window manager, a pointer and a keyboard.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/filemanagers/desktop/Picture.h"
#include "tests/filemanagers/desktop/QuietProgram.h"
#include "tests/support/processes/RunningProgram.h"

struct xcb_connection_t;

class VirtualDisplay {
 public:
  static constexpr int width = 1024;  // pixels
  static constexpr int height = 768;

  // `options` is the environment of its programs. What the window manager complains about goes to
  // that file.
  VirtualDisplay(const CommandOptions &options, const std::string &errorPath);
  ~VirtualDisplay();
  VirtualDisplay(const VirtualDisplay &) = delete;
  VirtualDisplay &operator=(const VirtualDisplay &) = delete;

  // Such as ":1".
  const std::string &name() const { return name_; }

  // What is on the screen now.
  Picture picture() const;

  // Waits until nothing has changed on the screen for that long. When something did last, or when
  // the wait began if nothing has; nothing if the screen does not come to rest within the time that
  // only a broken test takes.
  std::optional<std::chrono::steady_clock::time_point> waitUntilStill(
      std::chrono::milliseconds duration) const;

  // Has xdotool carry out its commands, such as {"key", "Escape"}. What they cause comes later.
  void operate(const std::vector<std::string> &commands) const;
  void press(const std::string &key) const { operate({"key", "--clearmodifiers", key}); }
  void click(int x, int y, int button = 1) const;
  // With the control key held down.
  void clickToo(int x, int y) const;

 private:
  struct Disconnect {
    void operator()(xcb_connection_t *connection) const;
  };

  bool hasWindowManager() const;

  CommandOptions options_;
  std::unique_ptr<RunningProgram> server_;
  std::string name_;
  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  std::unique_ptr<QuietProgram> windowManager_;
};
