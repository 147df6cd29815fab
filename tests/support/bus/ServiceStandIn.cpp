#include "tests/support/bus/ServiceStandIn.h"

#include <chrono>
#include <stdexcept>

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::Handle;
using platform::StringHandle;
using platform::VariantHandle;

struct ServiceStandIn::Handlers {
  static void called(GDBusConnection * /*connection*/, const char * /*sender*/,
                     const char * /*path*/, const char * /*interface*/, const char *method,
                     GVariant *arguments, GDBusMethodInvocation *invocation, gpointer data) {
    auto &self = *static_cast<ServiceStandIn *>(data);
    const StringHandle text(g_variant_print(arguments, FALSE));
    {
      const std::lock_guard lock(self.mutex_);
      self.calls_.push_back(method + std::string(text.get()));
    }
    self.called_.notify_all();
    switch (self.onCall_) {
      case OnCall::answers: {
        const VariantHandle answer(
            g_variant_parse(nullptr, self.answer_.c_str(), nullptr, nullptr, nullptr));
        g_dbus_method_invocation_return_value(invocation, answer.get());
        break;
      }
      case OnCall::refuses:
        g_dbus_method_invocation_return_dbus_error(invocation, "com.example.Refused", "refused");
        break;
      case OnCall::staysSilent:
        g_object_unref(invocation);
        break;
    }
  }
};

ServiceStandIn::ServiceStandIn(const PrivateBus &bus, const Description &description, OnCall onCall)
    : onCall_(onCall),
      answer_(description.answer),
      context_(g_main_context_new()),
      loop_(g_main_loop_new(context_.get(), FALSE)) {
  ErrorHandle error;
  const Handle<GDBusNodeInfo, g_dbus_node_info_unref> node(
      g_dbus_node_info_new_for_xml(description.interface.c_str(), ErrorOut(error)));
  if (node == nullptr) {
    throw std::runtime_error(error->message);
  }
  static const GDBusInterfaceVTable table{Handlers::called, nullptr, nullptr, {}};
  // Calls are handled in the context that is the thread's own when the object is registered.
  g_main_context_push_thread_default(context_.get());
  connection_ = bus.connect();
  registration_ =
      g_dbus_connection_register_object(connection_.get(), description.objectPath.c_str(),
                                        node->interfaces[0], &table, this, nullptr, nullptr);
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "RequestName", g_variant_new("(su)", description.name.c_str(), 4U), G_VARIANT_TYPE("(u)"),
      G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
  g_main_context_pop_thread_default(context_.get());
  if (reply == nullptr) {
    throw std::runtime_error(error->message);
  }
  thread_ = std::thread([this] {
    g_main_context_push_thread_default(context_.get());
    g_main_loop_run(loop_.get());
    g_main_context_pop_thread_default(context_.get());
  });
}

ServiceStandIn::~ServiceStandIn() {
  // In the loop, so that it does not begin after it was told to end.
  const Handle<GSource, g_source_unref> end(g_idle_source_new());
  g_source_set_callback(
      end.get(),
      [](gpointer loop) -> gboolean {
        g_main_loop_quit(static_cast<GMainLoop *>(loop));
        return G_SOURCE_REMOVE;
      },
      loop_.get(), nullptr);
  g_source_attach(end.get(), context_.get());
  thread_.join();
  g_dbus_connection_unregister_object(connection_.get(), registration_);
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

std::vector<std::string> ServiceStandIn::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

std::vector<std::string> ServiceStandIn::waitForCalls(std::size_t count) const {
  constexpr std::chrono::seconds patience{30};
  std::unique_lock lock(mutex_);
  called_.wait_for(lock, patience, [this, count] { return calls_.size() >= count; });
  return calls_;
}
