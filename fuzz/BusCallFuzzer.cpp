// Calls of the extension's bus interface with any arguments that the bus lets through.
//
// An input is a row of texts: the method, the targeted or only url, the action, the platform data
// (as GVariant text, or else an activation token), and the other urls.
#include <cstring>
#include <optional>

#include "fuzz/support/Input.h"
#include "fuzz/support/OwnHome.h"
#include "fuzz/support/PeerBus.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/BusNames.h"
#include "platform/linux/desktop/LaunchContext.h"
#include "platform/linux/process/FinderSyncService.h"

using platform::FileURL;
using platform::ObjectHandle;
using platform::StringHandle;
using platform::VariantHandle;

namespace {

constexpr const char *knownAction = "updateItems:";

// Notes what reaches it.
class Principal final : public platform::FIFinderSync {
 public:
  explicit Principal(FinderSyncService &service) : service_(service) {}

  void beginObservingDirectoryAtURL(const FileURL &url) override { urls.push_back(url); }
  void endObservingDirectoryAtURL(const FileURL &url) override { urls.push_back(url); }
  void requestBadgeIdentifierForURL(const FileURL &url) override {
    urls.push_back(url);
    service_.setBadgeIdentifier("modified", url);
  }
  std::optional<platform::Menu> menuForMenuKind(platform::FIMenuKind /*kind*/) override {
    noteSelection();
    return std::nullopt;
  }
  bool performAction(std::string_view action) override {
    noteSelection();
    return action == knownAction;
  }

  bool isCalled = false;
  std::vector<FileURL> urls;
  std::optional<FileURL> targeted;
  std::string token;

 private:
  void noteSelection() {
    isCalled = true;
    urls = service_.selectedItemURLs();
    targeted = service_.targetedURL();
    token = service_.activationToken();
  }

  FinderSyncService &service_;
};

struct Arguments {
  std::string method;
  std::string target;
  std::string action;
  VariantHandle platformData;
  std::vector<std::string> urls;

  bool areURLsValid() const {
    for (const std::string &text : urls) {
      if (!FileURL::fromText(text)) {
        return false;
      }
    }
    return true;
  }

  // Empty for none that is a text.
  std::string token() const {
    const char *text = "";
    g_variant_lookup(platformData.get(), "activation-token", "&s", &text);
    return text;
  }
};

VariantHandle platformDataOfText(const char *text) {
  const VariantHandle parsed(
      g_variant_parse(G_VARIANT_TYPE_VARDICT, text, nullptr, nullptr, nullptr));
  if (parsed != nullptr) {
    return VariantHandle(g_variant_get_normal_form(parsed.get()));
  }
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
  if (*text != '\0') {
    g_variant_builder_add(&builder, "{sv}", "activation-token", g_variant_new_string(text));
  }
  return VariantHandle(g_variant_ref_sink(g_variant_builder_end(&builder)));
}

Arguments argumentsOfInput(std::string_view input) {
  std::vector<std::string> fields = fieldsOfInput(input, 4);
  for (std::string &field : fields) {
    field = StringHandle(g_utf8_make_valid(field.c_str(), -1)).get();
  }
  return {fields[0],
          fields[1],
          fields[2],
          platformDataOfText(fields[3].c_str()),
          {fields.begin() + 4, fields.end()}};
}

VariantHandle variantOfURLs(const std::vector<std::string> &urls) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
  for (const std::string &url : urls) {
    g_variant_builder_add(&builder, "s", url.c_str());
  }
  return VariantHandle(g_variant_ref_sink(g_variant_builder_end(&builder)));
}

bool areTexts(const std::vector<FileURL> &urls, const std::vector<std::string> &texts) {
  return std::equal(urls.begin(), urls.end(), texts.begin(), texts.end(),
                    [](const FileURL &url, const std::string &text) { return url.text() == text; });
}

class Extension {
 public:
  Extension() {
    std::string reason;
    mustHold(service_.exportObject(bus_.service(), reason), "the object can be exported");
    service_.setPrincipalObject(principal_);
  }

  void tryCall(const Arguments &arguments) {
    principal_.isCalled = false;
    principal_.urls.clear();
    if (arguments.method == "menu") {
      tryMenu(arguments);
    } else if (arguments.method == "perform") {
      tryAction(arguments);
    } else if (arguments.method == "request") {
      const VariantHandle urls = variantOfURLs(arguments.urls);
      const bool isDone = isDoneBy("RequestBadgeIdentifiers", g_variant_new("(@as)", urls.get()));
      mustHold(isDone == arguments.areURLsValid(), "a request is of valid urls");
      mustHold(areTexts(principal_.urls, isDone ? arguments.urls : std::vector<std::string>()),
               "all of a request arrives or nothing");
    } else {
      const bool begins = arguments.method == "begin";
      const bool isDone = isDoneBy(begins ? "BeginObservingDirectory" : "EndObservingDirectory",
                                   g_variant_new("(s)", arguments.target.c_str()));
      mustHold(isDone == FileURL::fromText(arguments.target).has_value(),
               "a directory is a valid url");
      mustHold(principal_.urls.size() == (isDone ? 2 : 0),
               "a directory arrives, and a question behind it, or nothing");
    }
    mustHold(service_.selectedItemURLs().empty() && !service_.targetedURL() &&
                 service_.activationToken().empty(),
             "a selection is known during a call alone");
  }

 private:
  // False if the call was refused, which is so for one of two reasons.
  bool isDoneBy(const char *method, GVariant *arguments) const {
    const auto answer =
        bus_.call(platform::finderSyncObjectPath, platform::finderSyncInterface, method, arguments);
    if (g_dbus_message_get_message_type(answer.get()) == G_DBUS_MESSAGE_TYPE_METHOD_RETURN) {
      return true;
    }
    const std::string_view name = g_dbus_message_get_error_name(answer.get());
    mustHold(name == "org.freedesktop.DBus.Error.InvalidArgs" ||
                 name == "org.freedesktop.DBus.Error.LimitsExceeded",
             "a call is refused for its arguments");
    return false;
  }

  void tryMenu(const Arguments &arguments) {
    const VariantHandle urls = variantOfURLs(arguments.urls);
    const bool isDone = isDoneBy(
        "MenuForMenuKind", g_variant_new("(u@ass)", static_cast<guint32>(arguments.action.size()),
                                         urls.get(), arguments.target.c_str()));
    mustHold(isDone == principal_.isCalled, "a menu is made exactly if the call is valid");
    mustHold(isDone == isSelectionValid(arguments), "a menu is for valid urls");
    checkSelection(arguments, "");
  }

  void tryAction(const Arguments &arguments) {
    const VariantHandle urls = variantOfURLs(arguments.urls);
    const bool isDone = isDoneBy(
        "PerformMenuAction", g_variant_new("(s@ass@a{sv})", arguments.action.c_str(), urls.get(),
                                           arguments.target.c_str(), arguments.platformData.get()));
    mustHold(isDone == (principal_.isCalled && arguments.action == knownAction),
             "an action is performed exactly if the call is valid");
    mustHold(!principal_.isCalled || isSelectionValid(arguments), "an action is for valid urls");
    checkSelection(arguments, arguments.token());
    if (principal_.isCalled && !principal_.token.empty()) {
      checkLaunch(principal_.token);
    }
  }

  static bool isSelectionValid(const Arguments &arguments) {
    return arguments.areURLsValid() &&
           (arguments.target.empty() || FileURL::fromText(arguments.target));
  }

  void checkSelection(const Arguments &arguments, const std::string &token) const {
    if (!principal_.isCalled) {
      return;
    }
    mustHold(areTexts(principal_.urls, arguments.urls), "the selection is the call's");
    mustHold((principal_.targeted ? principal_.targeted->text() : "") == arguments.target,
             "the targeted folder is the call's");
    mustHold(principal_.token == token, "the token is the call's");
  }

  // The program that is launched finds the token in its environment.
  static void checkLaunch(const std::string &token) {
    const auto context = platform::makeLaunchContext({}, token);
    const platform::Handle<char *, g_strfreev> environment(
        g_app_launch_context_get_environment(context.get()));
    const char *found = g_environ_getenv(environment.get(), "XDG_ACTIVATION_TOKEN");
    mustHold(found != nullptr && found == token, "a token goes into the environment");
  }

  const PeerBus bus_;
  FinderSyncService service_;
  Principal principal_{service_};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  OwnHome::get();
  static Extension extension;
  extension.tryCall(argumentsOfInput(textOfInput(bytes, size)));
  return 0;
}
