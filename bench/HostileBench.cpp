// What a client has to wait for while another one does its worst, and what that takes of the
// extension's memory.
#include <atomic>
#include <cstdio>
#include <thread>

#include "bench/Asker.h"
#include "bench/Benchmark.h"
#include "bench/Machine.h"
#include "tests/support/bus/PublicNames.h"
#include "tests/support/bus/RawBusClient.h"

namespace {

constexpr std::size_t questionCount = 50;
constexpr std::size_t greatestCount = 100'000;  // of urls in one call

// What a client does, to the end of its answers; the url has a badge.
struct Attack {
  const char *title;
  std::function<void(RawBusClient &client, const std::string &url)> run;
};

// An array of so many bytes; the bus takes no more than 64 MiB in one.
GVariant *bytes(std::size_t size) {
  return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, std::string(size, 'x').data(), size, 1);
}

// As the bus carries it. GDBus would take gigabytes to make it.
std::string callWithEmptyStrings(RawBusClient &client, std::size_t count) {
  const platform::ObjectHandle<GDBusMessage> message = RawBusClient::call(
      "RequestBadgeIdentifiers", g_variant_new("(as)", static_cast<void *>(nullptr)));
  g_dbus_message_set_byte_order(message.get(), G_DBUS_MESSAGE_BYTE_ORDER_LITTLE_ENDIAN);
  g_dbus_message_set_serial(message.get(), client.takeSerial());
  gsize size = 0;
  const platform::Handle<guchar, g_free> blob(
      g_dbus_message_to_blob(message.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
  std::string text(reinterpret_cast<const char *>(blob.get()), size);
  const auto writeNumber = [&text](std::size_t offset, std::size_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
      text[offset + i] = static_cast<char>((number >> (8 * i)) & 0xff);
    }
  };
  const std::size_t arraySize = 8 * count - 3;  // the last one is not padded
  writeNumber(4, 4 + arraySize);
  writeNumber(size - 4, arraySize);
  return text + std::string(arraySize, '\0');
}

// Asks for badges in so many calls, and waits for all that are not refused.
void askForBadges(RawBusClient &client, const std::string &url, std::size_t callCount,
                  std::size_t urlCount) {
  client.send(RawBusClient::requestForBadges(urlCount, url).get(), callCount);
  client.waitForReplies(callCount);
  client.waitForBadges(client.counts()[""] * urlCount);
}

void callOften(RawBusClient &client, std::size_t count, const char *interface, const char *method,
               GVariant *arguments) {
  const platform::ObjectHandle<GDBusMessage> message(
      g_dbus_message_new_method_call(busName, objectPath, interface, method));
  if (arguments != nullptr) {
    g_dbus_message_set_body(message.get(), arguments);
  }
  client.send(message.get(), count);
  client.waitForReplies(count);
}

const Attack attacks[] = {
    {"100,000 calls of one url",
     [](RawBusClient &client, const std::string &url) { askForBadges(client, url, 100'000, 1); }},
    {"100,000 questions for a property",
     [](RawBusClient &client, const std::string &) {
       callOften(client, 100'000, "org.freedesktop.DBus.Properties", "Get",
                 g_variant_new("(ss)", interfaceName, "DirectoryURLs"));
     }},
    {"10,000 introspections",
     [](RawBusClient &client, const std::string &) {
       callOften(client, 10'000, "org.freedesktop.DBus.Introspectable", "Introspect", nullptr);
     }},
    {"1 call of 100,000 urls",
     [](RawBusClient &client, const std::string &url) {
       askForBadges(client, url, 1, greatestCount);
     }},
    {"20 calls of 100,000 urls",
     [](RawBusClient &client, const std::string &url) {
       askForBadges(client, url, 20, greatestCount);
     }},
    {"1,000 times the end of a folder, and a badge in it",
     [](RawBusClient &client, const std::string &url) {
       constexpr std::size_t count = 1'000;
       for (std::size_t i = 0; i < count; ++i) {
         client.send(
             RawBusClient::call("EndObservingDirectory", g_variant_new("(s)", url.c_str())).get());
         client.send(RawBusClient::requestForBadges(1, url).get());
       }
       client.waitForReplies(2 * count);
     }},
    {"10 messages of 100 MB",
     [](RawBusClient &client, const std::string &) {
       client.send(
           RawBusClient::call("RequestBadgeIdentifiers",
                              g_variant_new("(@ay@ay)", bytes(50'000'000), bytes(50'000'000)))
               .get(),
           10);
       client.waitForReplies(10);
     }},
    {"10 calls of 8,000,000 empty urls (64 MB)",
     [](RawBusClient &client, const std::string &) {
       for (int i = 0; i < 10; ++i) {
         client.sendBytes(callWithEmptyStrings(client, 8'000'000));
       }
       client.waitForReplies(10);
     }},
    {"10 calls of 2,000,000 empty urls (16 MB)",
     [](RawBusClient &client, const std::string &) {
       for (int i = 0; i < 10; ++i) {
         client.sendBytes(callWithEmptyStrings(client, 2'000'000));
       }
       client.waitForReplies(10);
     }},
};

// An extension with a client that asks for one badge and for the menu, again and again.
class Victim {
 public:
  Victim() {
    wc_.addFile("file.txt", "old");
    writeFile(wc_ / "file.txt", "new");
    session_.halvern({"add", wc_.path()});
    asker_.settle();
    ask([this] { return badges_.size() < questionCount; });
  }

  // A row of the table.
  void measure(const Attack &attack) {
    const Runs badgeAlone = summaryOf(badges_);
    RawBusClient hostile(session_.bus());
    std::atomic<bool> isOver = false;
    Seconds duration = 0;
    std::thread thread([&] {
      duration = timeOf([&] { attack.run(hostile, url_); });
      isOver = true;
    });
    ask([&isOver] { return !isOver; });
    thread.join();
    const Runs badge = summaryOf(badges_);
    const Runs menu = summaryOf(menus_);
    RawBusClient::Counts counts = hostile.counts();
    const long memory = peakMemoryOfProcess(std::to_string(session_.extensionProcess()));
    std::printf("| %s | %.2f | %zu | %zu | %.1f | %.1f, %.0f | %.1f, %.0f | %.0f |\n", attack.title,
                duration, counts[""], counts["org.freedesktop.DBus.Error.LimitsExceeded"],
                inMilliseconds(badgeAlone.median), inMilliseconds(badge.median),
                inMilliseconds(badge.greatest), inMilliseconds(menu.median),
                inMilliseconds(menu.greatest), static_cast<double>(memory) / 1024);
    std::fflush(stdout);
  }

 private:
  template <typename Condition>
  void ask(Condition goesOn) {
    badges_.clear();
    menus_.clear();
    do {
      badges_.push_back(asker_.ask({url_}, 1));
      menus_.push_back(timeOf([this] {
        const char *const none[] = {nullptr};
        asker_.client().answer("MenuForMenuKind", g_variant_new("(u^ass)", 0U, none, ""));
      }));
    } while (goesOn());
  }

  const ExtensionSession session_;
  const WorkingCopy wc_{session_.directory()};
  const std::string url_ = urlText(wc_ / "file.txt");
  Asker asker_{session_, wc_.path()};
  std::vector<Seconds> badges_;
  std::vector<Seconds> menus_;
};

}  // namespace

int main() {
  return runBenchmark([] {
    std::printf(
        "%s\n\nWhat a client waits for while another one is hostile; each row in a session of its "
        "own\n\n"
        "| the other one's | takes it, s | answered | refused | a badge alone, ms | a badge "
        "meanwhile: median, greatest | the menu meanwhile | peak MiB |\n"
        "|---|---|---|---|---|---|---|---|\n",
        machineText().c_str());
    for (const Attack &attack : attacks) {
      Victim().measure(attack);
    }
  });
}
