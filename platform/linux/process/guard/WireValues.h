// The values of a D-Bus message, as the bus carries them: stepped over and counted, without taking
// any memory for them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

class WireValues {
 public:
  // `bytes` begin where the message does, or at another multiple of eight bytes from there. No more
  // than `greatestCount` values are stepped over.
  WireValues(std::string_view bytes, bool isBigEndian, std::size_t greatestCount)
      : bytes_(bytes), isBigEndian_(isBigEndian), countLeft_(greatestCount) {}

  // Steps over one value of each type in the signature. Each value that is part of another one
  // counts, too; a byte in an array of bytes does not. False where they are too many, or where the
  // bytes are not what the signature says.
  bool skip(std::string_view signature);

  std::size_t position() const { return position_; }
  void moveTo(std::size_t position) { position_ = position; }
  bool alignTo(std::size_t alignment) { return advance(-position_ & (alignment - 1)); }
  bool isAtEnd() const { return position_ == bytes_.size(); }

  // Read and stepped over; none at the end of the bytes.
  std::optional<std::uint8_t> byte();
  std::optional<std::uint32_t> number();
  std::optional<std::string_view> signature();

 private:
  // Of one complete type, which is taken off the signature.
  bool skipOne(std::string_view &signature, int depth);
  bool skipArray(std::string_view elementType, int depth);
  bool skipFixed(std::size_t size);
  bool advance(std::size_t size);

  const std::string_view bytes_;
  const bool isBigEndian_;
  std::size_t countLeft_;
  std::size_t position_ = 0;
};
