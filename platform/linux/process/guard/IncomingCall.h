// A call of a client, with what is needed to answer it.
#pragma once

#include <string>

#include "platform/linux/GLibHandles.h"
#include "platform/linux/process/guard/WaitingCalls.h"

// Whether whoever has sent the call waits for an answer.
bool expectsAnswer(GDBusMessage *call);

struct IncomingCall {
  // The arguments are in one piece: as they arrive, each of them is an object by itself, which take
  // several times the memory.
  IncomingCall(GDBusMessage *message, WaitingCalls::Place place);

  // Floating `values`, a tuple; null for none. Neither is made where no answer is expected.
  platform::ObjectHandle<GDBusMessage> answer(GVariant *values) const;
  platform::ObjectHandle<GDBusMessage> refusal(const GError *error) const;

  const std::string client;
  const std::string interface;
  const std::string method;
  const platform::VariantHandle arguments;

 private:
  platform::ObjectHandle<GDBusMessage> reply(GDBusMessageType type) const;

  const guint32 serial_;
  const bool isAnswered_;
  const WaitingCalls::Place place_;
};
