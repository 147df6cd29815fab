#include "platform/linux/process/ClientRequests.h"

#include <algorithm>

#include "FinderSync1.h"
#include "platform/linux/BusNames.h"
#include "platform/linux/process/MenuMessage.h"
#include "platform/linux/process/RequestArguments.h"

using platform::ErrorHandle;
using platform::FIFinderSync;
using platform::FileURL;
using platform::VariantHandle;

namespace {

// Of the main thread, before the main queue has its turn.
constexpr gint64 sliceTime = 4 * G_TIME_SPAN_MILLISECOND;

// Badges that one client's turn asks for.
constexpr std::size_t askedAtOnce = 100;

constexpr bool hasMore = true;
constexpr bool isDone = false;

VariantHandle child(GVariant *tuple, std::size_t index) {
  return VariantHandle(g_variant_get_child_value(tuple, index));
}

// Lasts as long as the call that the value is from, which is in one piece.
const char *text(const VariantHandle &value) {
  return g_variant_get_string(value.get(), nullptr);
}

// The principal object can ask for the selection while this lives.
class MenuScope {
 public:
  MenuScope(MenuRequest &current, MenuRequest request) : current_(current) {
    current_ = std::move(request);
  }
  ~MenuScope() { current_ = {}; }
  MenuScope(const MenuScope &) = delete;
  MenuScope &operator=(const MenuScope &) = delete;

 private:
  MenuRequest &current_;
};

}  // namespace

ClientRequests::ClientRequests(GDBusConnection *connection, GDBusInterfaceSkeleton *skeleton,
                               BadgeAnswers &answers, MenuRequest &menuRequest,
                               SpareMemory &spareMemory)
    : skeleton_(skeleton),
      answers_(answers),
      menuRequest_(menuRequest),
      spareMemory_(spareMemory),
      work_([this] { return work(); }),
      gate_(
          connection, platform::finderSyncObjectPath, halvern_finder_sync1_interface_info(),
          [this](std::unique_ptr<IncomingCall> call) {
            {
              const platform::LockGuard guard(lock_);
              incoming_.push_back(std::move(call));
            }
            work_.wake();
          },
          [this] { work_.wake(); }),
      watches_(connection, [this](const std::string &client) { clientLeft(client); }) {}

void ClientRequests::takeOnMore() {
  // Not for each badge: a slice finds room for some steps.
  if (!requests_.isEmpty() && answers_.awaitedCount() == greatestAwaitedCount / 2) {
    work_.wake();
  }
}

bool ClientRequests::work() {
  const gint64 end = g_get_monotonic_time() + sliceTime;
  bool didStep = true;
  while (didStep && g_get_monotonic_time() < end) {
    didStep = takeStep();
  }
  // After the steps: a call that follows a notification is dealt with in a later slice, and before
  // that the main queue has run empty, with the notification in it.
  takeIncomingCalls();
  return gate_.hasRoom() && (!calls_.isEmpty() || canAskForBadges());
}

bool ClientRequests::takeStep() {
  if (!gate_.hasRoom()) {
    return false;
  }
  const bool hasCall = !calls_.isEmpty();
  if (hasCall) {
    calls_.takeOne();
  }
  const bool hasRequest = canAskForBadges();
  if (hasRequest) {
    requests_.takeOne();
  }
  return hasCall || hasRequest;
}

bool ClientRequests::canAskForBadges() const {
  return !requests_.isEmpty() && answers_.awaitedCount() < greatestAwaitedCount;
}

void ClientRequests::takeIncomingCalls() {
  std::vector<Call> calls;
  {
    const platform::LockGuard guard(lock_);
    calls.swap(incoming_);
  }
  for (const Call &call : calls) {
    calls_.add(call->client, firstStep(call));
  }
}

Turns::Step ClientRequests::firstStep(const Call &call) {
  if (call->interface == platform::propertiesInterface) {
    return property(call);
  }
  if (call->method == "RequestBadgeIdentifiers") {
    return requestBadges(call);
  }
  if (call->method == "BeginObservingDirectory") {
    return observe(call, &FIFinderSync::beginObservingDirectoryAtURL);
  }
  if (call->method == "EndObservingDirectory") {
    return observe(call, &FIFinderSync::endObservingDirectoryAtURL);
  }
  return call->method == "MenuForMenuKind" ? menu(call) : performAction(call);
}

Turns::Step ClientRequests::withURLs(const Call &call, std::size_t argument, UseURLs use) {
  // Taken apart only when it is its turn: the texts' places take memory, too.
  return [this, call, argument, use = std::move(use),
          urls = std::shared_ptr<URLArguments>()]() mutable {
    ErrorHandle error;
    if (urls == nullptr) {
      error = checkCallSize(call->arguments.get());
      urls = std::make_shared<URLArguments>(child(call->arguments.get(), argument).get());
    }
    if (error || !urls->checkSome(error)) {
      refuse(call, error);
      return isDone;
    }
    if (!urls->areChecked()) {
      return hasMore;
    }
    use(*urls);
    spareMemory_.noteWork();
    return isDone;
  };
}

Turns::Step ClientRequests::requestBadges(const Call &call) {
  return withURLs(call, 0, [this, call](const URLArguments &) {
    watches_.watch(call->client);
    answer(call, nullptr);
    requests_.add(call->client, askingStep(call));
  });
}

Turns::Step ClientRequests::askingStep(const Call &call) {
  return [this, call, next = std::size_t{0}, urls = std::shared_ptr<URLArguments>()]() mutable {
    if (urls == nullptr) {
      urls = std::make_shared<URLArguments>(child(call->arguments.get(), 0).get());
    }
    const std::size_t end = std::min(urls->size(), next + askedAtOnce);
    for (; next < end; ++next) {
      const FileURL url = urls->at(next);
      answers_.noteRequest(call->client, url.text());
      principalObject_->requestBadgeIdentifierForURL(url);
    }
    return next < urls->size();
  };
}

// Beside the client's requests for badges, whose order counts: the one that ends has the next be
// answered anew. So whoever ends again and again has the same working copy be looked at as often,
// and must not put all of that in front of others.
Turns::Step ClientRequests::observe(const Call &call, Observe method) {
  return [this, call, method] {
    requests_.add(call->client, [this, call, method] {
      ErrorHandle error = checkCallSize(call->arguments.get());
      const auto url =
          error ? std::nullopt : urlFromArgument(text(child(call->arguments.get(), 0)), error);
      if (url) {
        (principalObject_->*method)(*url);
        answer(call, nullptr);
        holdUntilAnswered(call->client);
        spareMemory_.noteWork();
      } else {
        refuse(call, error);
      }
      return isDone;
    });
    return isDone;
  };
}

// Look-ups are answered in their order, and one of what is in no working copy takes no time.
void ClientRequests::holdUntilAnswered(const std::string &client) {
  const FileURL nothing = FileURL::fromPath("/", true);
  requests_.hold(client);
  answers_.noteRequest(nothing.text(), [this, client] {
    requests_.release(client);
    work_.wake();
  });
  principalObject_->requestBadgeIdentifierForURL(nothing);
}

Turns::Step ClientRequests::menu(const Call &call) {
  return withURLs(call, 1, [this, call](const URLArguments &selected) {
    GVariant *arguments = call->arguments.get();
    ErrorHandle error;
    auto request = menuRequestFromArguments(selected, text(child(arguments, 2)), nullptr, error);
    if (!request) {
      refuse(call, error);
      return;
    }
    const MenuScope scope(menuRequest_, *std::move(request));
    const platform::FIMenuKind kind{g_variant_get_uint32(child(arguments, 0).get())};
    GVariant *menu = menuVariant(principalObject_->menuForMenuKind(kind));
    answer(call, g_variant_new_tuple(&menu, 1));
  });
}

Turns::Step ClientRequests::performAction(const Call &call) {
  return withURLs(call, 1, [this, call](const URLArguments &selected) {
    GVariant *arguments = call->arguments.get();
    ErrorHandle error;
    auto request = menuRequestFromArguments(selected, text(child(arguments, 2)),
                                            child(arguments, 3).get(), error);
    if (!request) {
      refuse(call, error);
      return;
    }
    const VariantHandle action = child(arguments, 0);
    const MenuScope scope(menuRequest_, *std::move(request));
    if (principalObject_->performAction(text(action))) {
      answer(call, nullptr);
    } else {
      error.reset(g_error_new(G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                              "There is no menu action “%s”", beginningOf(text(action)).c_str()));
      refuse(call, error);
    }
  });
}

Turns::Step ClientRequests::property(const Call &call) {
  return [this, call] {
    GVariant *arguments = call->arguments.get();
    ErrorHandle error;
    VariantHandle value;
    if (g_strcmp0(text(child(arguments, 0)), platform::finderSyncInterface) == 0) {
      value.reset(g_variant_take_ref(g_dbus_interface_skeleton_get_properties(skeleton_)));
      if (call->method == "Get") {
        value.reset(g_variant_lookup_value(value.get(), text(child(arguments, 1)), nullptr));
      }
    }
    if (value == nullptr) {
      error.reset(g_error_new_literal(G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                                      "There is no such property"));
      refuse(call, error);
    } else {
      answer(call, call->method == "Get" ? g_variant_new("(v)", value.get())
                                         : g_variant_new("(@a{sv})", value.get()));
    }
    return isDone;
  };
}

void ClientRequests::clientLeft(const std::string &client) {
  // When its calls have been dealt with: an action is carried out though nobody waits for it.
  takeIncomingCalls();
  calls_.add(client, [this, client] {
    requests_.forget(client);
    answers_.forgetClient(client);
    return isDone;
  });
  work_.wake();
}

void ClientRequests::answer(const Call &call, GVariant *values) {
  gate_.send(call->answer(values));
}

void ClientRequests::refuse(const Call &call, const ErrorHandle &error) {
  gate_.send(call->refusal(error.get()));
}
