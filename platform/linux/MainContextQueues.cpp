#include "platform/linux/MainContextQueues.h"

#include <future>
#include <map>
#include <vector>

namespace platform {

namespace {

// A source that runs one block.
struct BlockSource {
  GSource base;
  Queue::Block *block;
};

gboolean dispatchBlock(GSource *source, GSourceFunc /*callback*/, gpointer /*data*/) {
  (*reinterpret_cast<BlockSource *>(source)->block)();
  return G_SOURCE_REMOVE;
}

void finalizeBlock(GSource *source) {
  delete reinterpret_cast<BlockSource *>(source)->block;  // NOLINT: the C structure owns it
}

GSourceFuncs blockSourceFunctions = {nullptr,       nullptr, dispatchBlock,
                                     finalizeBlock, nullptr, nullptr};

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

// The blocks whose time has not come, behind one timer: a main context looks at every source that
// it has each time it turns, and a storm of file-system events leaves thousands of blocks.
class MainContextQueue::DelayedBlocks {
 public:
  DelayedBlocks(GMainContext *context, int priority)
      : timer_(g_source_new(&timerFunctions, sizeof(Timer)), g_source_unref) {
    reinterpret_cast<Timer *>(timer_.get())->blocks = this;
    g_source_set_priority(timer_.get(), priority);
    g_source_attach(timer_.get(), context);
  }
  DelayedBlocks(const DelayedBlocks &) = delete;
  DelayedBlocks &operator=(const DelayedBlocks &) = delete;
  ~DelayedBlocks() { g_source_destroy(timer_.get()); }

  // `readyTime` in microseconds of the monotonic clock.
  void add(gint64 readyTime, Block block) {
    const LockGuard guard(lock_);
    blocks_.emplace(readyTime, std::move(block));
    setTimer();
  }

 private:
  struct Timer {
    GSource base;
    DelayedBlocks *blocks;
  };

  static gboolean dispatchTimer(GSource *timer, GSourceFunc /*callback*/, gpointer /*data*/) {
    reinterpret_cast<Timer *>(timer)->blocks->runDue();
    return G_SOURCE_CONTINUE;
  }

  static inline GSourceFuncs timerFunctions = {nullptr, nullptr, dispatchTimer,
                                               nullptr, nullptr, nullptr};

  // The blocks are taken out first: one of them may be the queue's end, and of this object.
  void runDue() {
    std::vector<Block> due;
    {
      const LockGuard guard(lock_);
      const auto end = blocks_.upper_bound(g_source_get_time(timer_.get()));
      for (auto block = blocks_.begin(); block != end; block = blocks_.erase(block)) {
        due.push_back(std::move(block->second));
      }
      setTimer();
    }
    for (const Block &block : due) {
      block();
    }
  }

  void setTimer() KTR_REQUIRES(lock_) {
    g_source_set_ready_time(timer_.get(), blocks_.empty() ? -1 : blocks_.begin()->first);
  }

  const std::unique_ptr<GSource, decltype(&g_source_unref)> timer_;
  Lock lock_;
  std::multimap<gint64, Block> blocks_ KTR_GUARDED_BY(lock_);
};

MainContextQueue::MainContextQueue(GMainContext *context, int priority, std::thread::id thread)
    : delayed_(std::make_unique<DelayedBlocks>(context, priority)),
      context_(context),
      priority_(priority),
      thread_(thread) {}

MainContextQueue::~MainContextQueue() = default;

void MainContextQueue::async(Block block) {
  const Handle<GSource, g_source_unref> source(
      g_source_new(&blockSourceFunctions, sizeof(BlockSource)));
  reinterpret_cast<BlockSource *>(source.get())->block = new Block(std::move(block));  // NOLINT
  g_source_set_priority(source.get(), priority_);
  g_source_set_ready_time(source.get(), 0);
  g_source_attach(source.get(), context_);
}

void MainContextQueue::asyncAfter(std::chrono::nanoseconds delay, Block block) {
  const auto microseconds = std::chrono::ceil<std::chrono::microseconds>(delay).count();
  delayed_->add(g_get_monotonic_time() + microseconds, std::move(block));
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
