#include "platform/linux/process/guard/GuardedStream.h"

#include <vector>

#include "platform/linux/process/guard/MessageSieve.h"

using platform::Handle;
using platform::ObjectHandle;

namespace {

using SourceHandle = Handle<GSource, g_source_unref>;

constexpr std::size_t readSize = 64 << 10;  // bytes, at a time

struct GuardedInput {
  GFilterInputStream base;
  MessageSieve *sieve;
  std::vector<char> *buffer;
};
struct GuardedInputClass {
  GFilterInputStreamClass base;
};

struct GuardedOutput {
  GFilterOutputStream base;
};
struct GuardedOutputClass {
  GFilterOutputStreamClass base;
};

void pollInput(gpointer interface, gpointer data);
void pollOutput(gpointer interface, gpointer data);

// NOLINTBEGIN: GObject's ways
G_DEFINE_TYPE_WITH_CODE(GuardedInput, guarded_input, G_TYPE_FILTER_INPUT_STREAM,
                        G_IMPLEMENT_INTERFACE(G_TYPE_POLLABLE_INPUT_STREAM, pollInput))
G_DEFINE_TYPE_WITH_CODE(GuardedOutput, guarded_output, G_TYPE_FILTER_OUTPUT_STREAM,
                        G_IMPLEMENT_INTERFACE(G_TYPE_POLLABLE_OUTPUT_STREAM, pollOutput))
// NOLINTEND

GPollableInputStream *baseOf(gpointer self) {
  return G_POLLABLE_INPUT_STREAM(
      g_filter_input_stream_get_base_stream(static_cast<GFilterInputStream *>(self)));
}

gssize readThroughSieve(gpointer stream, void *target, gsize size, gboolean isBlocking,
                        GCancellable *cancellable, GError **error) {
  const GuardedInput &self = *static_cast<GuardedInput *>(stream);
  while (true) {
    if (const std::size_t count = self.sieve->take(static_cast<char *>(target), size)) {
      return static_cast<gssize>(count);
    }
    const gssize count =
        g_pollable_stream_read(G_INPUT_STREAM(baseOf(stream)), self.buffer->data(),
                               self.buffer->size(), isBlocking, cancellable, error);
    if (count <= 0) {
      return count;
    }
    self.sieve->add({self.buffer->data(), static_cast<std::size_t>(count)});
  }
}

void guarded_input_init(GuardedInput *self) {
  self->sieve = new MessageSieve;                  // NOLINT: the object owns both
  self->buffer = new std::vector<char>(readSize);  // NOLINT
}

void guarded_input_class_init(GuardedInputClass *type) {
  G_OBJECT_CLASS(type)->finalize = [](GObject *object) {
    const GuardedInput *self = reinterpret_cast<GuardedInput *>(object);
    delete self->sieve;   // NOLINT: see above
    delete self->buffer;  // NOLINT
    G_OBJECT_CLASS(guarded_input_parent_class)->finalize(object);
  };
  G_INPUT_STREAM_CLASS(type)->read_fn = [](GInputStream *self, void *target, gsize size,
                                           GCancellable *cancellable, GError **error) {
    return readThroughSieve(self, target, size, TRUE, cancellable, error);
  };
}

void pollInput(gpointer interface, gpointer /*data*/) {
  auto *poll = static_cast<GPollableInputStreamInterface *>(interface);
  poll->can_poll = [](GPollableInputStream *self) {
    return g_pollable_input_stream_can_poll(baseOf(self));
  };
  // Both are asked only when nothing is left in the sieve: a read takes that first.
  poll->is_readable = [](GPollableInputStream *self) {
    return g_pollable_input_stream_is_readable(baseOf(self));
  };
  poll->create_source = [](GPollableInputStream *self, GCancellable *cancellable) {
    const SourceHandle source(g_pollable_input_stream_create_source(baseOf(self), nullptr));
    return g_pollable_source_new_full(self, source.get(), cancellable);
  };
  poll->read_nonblocking = [](GPollableInputStream *self, void *target, gsize size,
                              GError **error) {
    return readThroughSieve(self, target, size, FALSE, nullptr, error);
  };
}

// The output does nothing by itself. It is there because GDBus writes to a socket that it sees as
// such past the stream, with means that it has only for a socket that it reads from, too.
GPollableOutputStream *targetOf(gpointer self) {
  return G_POLLABLE_OUTPUT_STREAM(
      g_filter_output_stream_get_base_stream(static_cast<GFilterOutputStream *>(self)));
}

void guarded_output_init(GuardedOutput * /*self*/) {}

void guarded_output_class_init(GuardedOutputClass * /*type*/) {}

void pollOutput(gpointer interface, gpointer /*data*/) {
  auto *poll = static_cast<GPollableOutputStreamInterface *>(interface);
  poll->can_poll = [](GPollableOutputStream *self) {
    return g_pollable_output_stream_can_poll(targetOf(self));
  };
  poll->is_writable = [](GPollableOutputStream *self) {
    return g_pollable_output_stream_is_writable(targetOf(self));
  };
  poll->create_source = [](GPollableOutputStream *self, GCancellable *cancellable) {
    const SourceHandle source(g_pollable_output_stream_create_source(targetOf(self), nullptr));
    return g_pollable_source_new_full(self, source.get(), cancellable);
  };
  poll->write_nonblocking = [](GPollableOutputStream *self, const void *bytes, gsize size,
                               GError **error) {
    return g_pollable_stream_write(G_OUTPUT_STREAM(targetOf(self)), bytes, size, FALSE, nullptr,
                                   error);
  };
}

}  // namespace

ObjectHandle<GIOStream> guardedStream(GIOStream *connection) {
  const ObjectHandle<GInputStream> input(G_INPUT_STREAM(
      g_object_new(guarded_input_get_type(), "base-stream",
                   g_io_stream_get_input_stream(connection), "close-base-stream", FALSE, nullptr)));
  const ObjectHandle<GOutputStream> output(G_OUTPUT_STREAM(g_object_new(
      guarded_output_get_type(), "base-stream", g_io_stream_get_output_stream(connection),
      "close-base-stream", FALSE, nullptr)));
  ObjectHandle<GIOStream> stream(g_simple_io_stream_new(input.get(), output.get()));
  // The connection lasts as long as its streams do.
  g_object_set_data_full(G_OBJECT(stream.get()), "connection", g_object_ref(connection),
                         g_object_unref);
  return stream;
}
