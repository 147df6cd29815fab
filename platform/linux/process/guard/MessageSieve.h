// Keeps messages that are too large away from GDBus, which makes an object of every value in a
// message before anybody can look at it: 120 MiB of empty strings become 2.5 GiB, and 13 seconds.
//
// Takes the bytes that come from the bus and gives those that GDBus is to read. A method call that
// is too large is given without its arguments and with a mark, so that it can be answered; any
// other message that is too large, which nobody waits for, is left out. The bus itself sees to it
// that messages are whole and what they say they are. For one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

class MessageSieve {
 public:
  // Bytes of arguments. The limit of a call, as its url texts count, is 16 MiB; on the wire each of
  // its 100,000 urls takes up to three bytes more.
  static constexpr std::size_t greatestBodySize = 17 << 20;
  // Values in one message, as the bus counts them: half as many again as a call may have urls.
  static constexpr std::size_t greatestValueCount = 150'000;
  // Names, paths and whatever else is in the header. Where that is larger, the call has no answer.
  static constexpr std::size_t greatestHeaderSize = 8 << 10;

  // The header field that marks a call that was too large. The bus gives no meaning to it, and it
  // is one that GDBus can be asked for; a client that sets it has its own call refused.
  static constexpr std::uint8_t tooLargeField = 15;

  void add(std::string_view bytes);

  // Moves as much as there is and as has room; how much that is.
  std::size_t take(char *target, std::size_t size);

 private:
  enum class Stage { fixedPart, header, body };

  // What follows once all that was wanted is there.
  void goOn();
  void readFixedPart();
  void giveMessage();
  void giveCallWithoutArguments();
  void beginMessage();

  bool isBigEndian() const { return message_.front() == 'B'; }
  bool hasTooManyValues() const;

  Stage stage_ = Stage::fixedPart;
  std::string message_;         // of the one that is being read, so far
  std::size_t wanted_ = 16;     // bytes of it, before anything can be decided
  std::size_t headerSize_ = 0;  // with its padding
  std::size_t bodySize_ = 0;
  std::size_t unwanted_ = 0;  // bytes that are left out, of those that come
  std::string given_;
  std::size_t takenSize_ = 0;  // of what is given
};
