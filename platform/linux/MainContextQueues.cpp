#include "platform/linux/MainContextQueues.h"

#include <algorithm>
#include <future>
#include <map>
#include <utility>
#include <vector>

namespace platform {

namespace {

using ContextHandle = Handle<GMainContext, g_main_context_unref>;
using LoopHandle = Handle<GMainLoop, g_main_loop_unref>;

class SerialQueue final : public MainContextQueue {
 public:
  explicit SerialQueue(const std::string &label)
      : SerialQueue(label, ContextHandle(g_main_context_new())) {}

  SerialQueue(const SerialQueue &) = delete;
  SerialQueue &operator=(const SerialQueue &) = delete;

  ~SerialQueue() override {
    async([loop = loop_] { g_main_loop_quit(loop.get()); });
    if (isCurrent()) {
      thread_.detach();
    } else {
      thread_.join();
    }
  }

 private:
  SerialQueue(const std::string &label, ContextHandle context)
      : MainContextQueue(context.get(), G_PRIORITY_DEFAULT, {}),
        loop_(g_main_loop_new(context.get(), FALSE), g_main_loop_unref) {
    std::promise<void> started;
    // The thread keeps the loop, and with it the context, as long as it needs them.
    thread_ = std::thread([this, &started, loop = loop_, label] {
      // The kernel keeps 15 bytes of a thread's name; the end of the label tells queues apart.
      constexpr std::size_t kept = 15;
      const std::string name = label.size() > kept ? label.substr(label.size() - kept) : label;
      pthread_setname_np(pthread_self(), name.c_str());
      setThread(std::this_thread::get_id());
      started.set_value();
      g_main_loop_run(loop.get());
    });
    started.get_future().wait();
  }

  const std::shared_ptr<GMainLoop> loop_;
  std::thread thread_;
};

}  // namespace

// All blocks of a queue, behind one source: a main context looks at every source that it has each
// time it turns, and a burst of requests or a storm of file-system events leaves thousands of
// blocks. They belong to the source, so they last while it runs one of them that ends the queue.
class MainContextQueue::Blocks {
 public:
  static SourceHandle makeSource() {
    SourceHandle source(g_source_new(&sourceFunctions, sizeof(Source)));
    reinterpret_cast<Source *>(source.get())->blocks = new Blocks(source.get());  // NOLINT
    return source;
  }

  static Blocks &ofSource(const SourceHandle &source) {
    return *reinterpret_cast<Source *>(source.get())->blocks;
  }

  void add(std::chrono::microseconds delay, Block block) {
    const LockGuard guard(lock_);
    const gint64 dueTime = g_get_monotonic_time() + std::max<gint64>(0, delay.count());
    const bool isFirst = waiting_.empty() || dueTime < waiting_.begin()->first;
    waiting_.emplace_hint(waiting_.end(), dueTime, std::move(block));
    if (isFirst) {
      setReadyTime();
    }
  }

  // No more will be added. Those that are due still run.
  void close() {
    std::multimap<gint64, Block> forgotten;  // ends without the lock
    const LockGuard guard(lock_);
    isClosed_ = true;
    for (auto block = firstNotDue(); block != waiting_.end();) {
      forgotten.insert(waiting_.extract(block++));
    }
    if (waiting_.empty()) {
      g_source_destroy(source_);
    }
  }

 private:
  struct Source {
    GSource base;
    Blocks *blocks;
  };

  explicit Blocks(GSource *source) : source_(source) {}

  static gboolean dispatch(GSource *source, GSourceFunc /*callback*/, gpointer /*data*/) {
    return reinterpret_cast<Source *>(source)->blocks->run() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
  }

  static void finalize(GSource *source) {
    delete reinterpret_cast<Source *>(source)->blocks;  // NOLINT: the C structure owns it
  }

  static inline GSourceFuncs sourceFunctions = {nullptr,  nullptr, dispatch,
                                                finalize, nullptr, nullptr};

  // Whether the source is still needed.
  bool run() {
    for (Block &block : takeDue()) {
      std::exchange(block, nullptr)();  // which ends with its run
    }
    const LockGuard guard(lock_);
    return !isClosed_ || !waiting_.empty();
  }

  std::vector<Block> takeDue() {
    std::vector<Block> due;
    const LockGuard guard(lock_);
    const auto end = firstNotDue();
    for (auto block = waiting_.begin(); block != end; block = waiting_.erase(block)) {
      due.push_back(std::move(block->second));
    }
    setReadyTime();
    return due;
  }

  std::multimap<gint64, Block>::iterator firstNotDue() KTR_REQUIRES(lock_) {
    return waiting_.upper_bound(g_get_monotonic_time());
  }

  void setReadyTime() KTR_REQUIRES(lock_) {
    g_source_set_ready_time(source_, waiting_.empty() ? -1 : waiting_.begin()->first);
  }

  GSource *const source_;  // to which this belongs
  Lock lock_;
  // By the time when each is due, in microseconds of the monotonic clock.
  std::multimap<gint64, Block> waiting_ KTR_GUARDED_BY(lock_);
  bool isClosed_ KTR_GUARDED_BY(lock_) = false;
};

MainContextQueue::MainContextQueue(GMainContext *context, int priority, std::thread::id thread)
    : source_(Blocks::makeSource()), thread_(thread) {
  g_source_set_priority(source_.get(), priority);
  g_source_attach(source_.get(), context);
}

MainContextQueue::~MainContextQueue() {
  Blocks::ofSource(source_).close();
}

void MainContextQueue::async(Block block) {
  Blocks::ofSource(source_).add({}, std::move(block));
}

void MainContextQueue::asyncAfter(std::chrono::nanoseconds delay, Block block) {
  Blocks::ofSource(source_).add(std::chrono::ceil<std::chrono::microseconds>(delay),
                                std::move(block));
}

// Above the messages from the bus, whose dispatch has the default priority: what the process has
// begun comes before what it is asked next. (Of the messages that are found waiting together, each
// is dispatched before what another one of them puts here.)
MainContextQueues::MainContextQueues()
    : mainQueue_(nullptr, G_PRIORITY_HIGH, std::this_thread::get_id()) {}

std::shared_ptr<Queue> MainContextQueues::makeSerialQueue(const std::string &label) {
  return std::make_shared<SerialQueue>(label);
}

}  // namespace platform
