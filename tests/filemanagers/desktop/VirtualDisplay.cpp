#include "tests/filemanagers/desktop/VirtualDisplay.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <xcb/xcb.h>

#include "tests/support/bus/PrivateBus.h"

namespace {

template <typename T>
struct Free {
  void operator()(T *reply) const { std::free(reply); }  // NOLINT: xcb allocates with malloc
};
template <typename T>
using ReplyHandle = std::unique_ptr<T, Free<T>>;

const xcb_screen_t &screenOf(xcb_connection_t *connection) {
  return *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}

}  // namespace

void VirtualDisplay::Disconnect::operator()(xcb_connection_t *connection) const {
  xcb_disconnect(connection);
}

VirtualDisplay::VirtualDisplay(const CommandOptions &options, const std::string &errorPath)
    : options_(options),
      server_(std::make_unique<RunningProgram>(
          std::vector<std::string>{"Xvfb", "-displayfd", "1", "-nolisten", "tcp", "-noreset",
                                   "-screen", "0",
                                   std::to_string(width) + "x" + std::to_string(height) + "x24"},
          options)) {
  std::string number = server_->readLines();
  if (number.empty()) {
    throw std::runtime_error("Xvfb: " + server_->readErrorLines());
  }
  number.pop_back();
  name_ = ":" + number;
  options_.environment["DISPLAY"] = name_;
  connection_.reset(xcb_connect(name_.c_str(), nullptr));
  if (xcb_connection_has_error(connection_.get()) != 0) {
    throw std::runtime_error("The display " + name_ + " cannot be reached");
  }
  windowManager_ =
      std::make_unique<QuietProgram>(std::vector<std::string>{"openbox"}, options_, errorPath);
  if (!turnMainLoopUntil([this] { return hasWindowManager(); })) {
    throw std::runtime_error("The window manager does not start");
  }
}

VirtualDisplay::~VirtualDisplay() {
  windowManager_.reset();
  connection_.reset();
  server_->sendSignal(SIGTERM);
  server_->waitForEnd();
}

bool VirtualDisplay::hasWindowManager() const {
  constexpr const char *property = "_NET_SUPPORTING_WM_CHECK";
  xcb_connection_t *connection = connection_.get();
  const ReplyHandle<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
      connection, xcb_intern_atom(connection, 0, std::strlen(property), property), nullptr));
  if (atom == nullptr) {
    return false;
  }
  const ReplyHandle<xcb_get_property_reply_t> value(xcb_get_property_reply(
      connection,
      xcb_get_property(connection, 0, screenOf(connection).root, atom->atom, XCB_ATOM_WINDOW, 0, 1),
      nullptr));
  return value != nullptr && xcb_get_property_value_length(value.get()) > 0;
}

Picture VirtualDisplay::picture() const {
  xcb_connection_t *connection = connection_.get();
  const ReplyHandle<xcb_get_image_reply_t> image(
      xcb_get_image_reply(connection,
                          xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP,
                                        screenOf(connection).root, 0, 0, width, height, ~0U),
                          nullptr));
  std::vector<std::uint32_t> pixels(std::size_t{width} * std::size_t{height});
  const std::size_t size = pixels.size() * sizeof pixels.front();
  if (image == nullptr ||
      static_cast<std::size_t>(xcb_get_image_data_length(image.get())) != size) {
    throw std::runtime_error("The screen cannot be read");
  }
  std::memcpy(pixels.data(), xcb_get_image_data(image.get()), size);
  return {width, height, std::move(pixels)};
}

std::optional<std::chrono::steady_clock::time_point> VirtualDisplay::waitUntilStill(
    std::chrono::milliseconds duration) const {
  using std::chrono::steady_clock;
  Picture last = picture();
  auto changed = steady_clock::now();
  const bool isStill = turnMainLoopUntil([&] {
    Picture now = picture();
    if (!(now == last)) {
      last = std::move(now);
      changed = steady_clock::now();
    }
    return steady_clock::now() - changed >= duration;
  });
  return isStill ? std::optional(changed) : std::nullopt;
}

void VirtualDisplay::operate(const std::vector<std::string> &commands) const {
  std::vector<std::string> arguments = {"xdotool"};
  arguments.insert(arguments.end(), commands.begin(), commands.end());
  runSuccessfully(arguments, options_);
}

void VirtualDisplay::click(int x, int y, int button) const {
  operate({"mousemove", std::to_string(x), std::to_string(y), "click", std::to_string(button)});
}

void VirtualDisplay::clickToo(int x, int y) const {
  operate({"keydown", "ctrl", "mousemove", std::to_string(x), std::to_string(y), "click", "1",
           "keyup", "ctrl"});
}
