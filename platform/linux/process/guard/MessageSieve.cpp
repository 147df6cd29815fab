#include "platform/linux/process/guard/MessageSieve.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/linux/process/guard/WireValues.h"

namespace {

constexpr std::size_t fixedPartSize = 16;
constexpr char methodCall = 1;
constexpr std::size_t typeOffset = 1;
constexpr std::size_t bodySizeOffset = 4;
constexpr std::size_t fieldsSizeOffset = 12;

// Header fields.
constexpr std::uint8_t signatureField = 8;
constexpr std::uint8_t fileDescriptorsField = 9;

// What is kept of memory that a large message took.
constexpr std::size_t keptCapacity = 64 << 10;

// A header of that size cannot have more.
constexpr std::size_t greatestFieldCount = MessageSieve::greatestHeaderSize;

std::size_t padded(std::size_t size) {
  return (size + 7) & ~std::size_t{7};
}

void writeNumber(std::string &message, std::size_t offset, std::size_t number, bool isBigEndian) {
  for (std::size_t i = 0; i < 4; ++i) {
    message[offset + (isBigEndian ? 3 - i : i)] = static_cast<char>((number >> (8 * i)) & 0xff);
  }
}

std::size_t numberAt(const std::string &message, std::size_t offset, bool isBigEndian) {
  WireValues values(message, isBigEndian, 1);
  values.moveTo(offset);
  return values.number().value_or(0);
}

// A field of the header that is read; they follow each other at multiples of eight bytes.
struct Field {
  std::uint8_t code = 0;
  std::size_t begin = 0;
  std::size_t end = 0;
  std::string_view signature;  // the value of the one that holds it
};

// None at the end, or where the header is not what it should be.
std::optional<Field> nextField(WireValues &values) {
  if (!values.alignTo(8)) {
    return std::nullopt;
  }
  Field field;
  field.begin = values.position();
  const std::optional<std::uint8_t> code = values.byte();
  const std::optional<std::string_view> type = code ? values.signature() : std::nullopt;
  if (!type) {
    return std::nullopt;
  }
  field.code = *code;
  if (*code == signatureField && *type == "g") {
    const std::optional<std::string_view> signature = values.signature();
    if (!signature) {
      return std::nullopt;
    }
    field.signature = *signature;
  } else if (!values.skip(*type)) {
    return std::nullopt;
  }
  field.end = values.position();
  return field;
}

void giveBack(std::string &text) {
  text.clear();
  if (text.capacity() > keptCapacity) {
    text.shrink_to_fit();
  }
}

}  // namespace

void MessageSieve::add(std::string_view bytes) {
  while (!bytes.empty()) {
    std::size_t size = std::min(unwanted_, bytes.size());
    unwanted_ -= size;
    if (size == 0) {
      size = std::min(wanted_ - message_.size(), bytes.size());
      message_ += bytes.substr(0, size);
      goOn();
    }
    bytes.remove_prefix(size);
  }
}

std::size_t MessageSieve::take(char *target, std::size_t size) {
  const std::size_t count = given_.copy(target, size, takenSize_);
  takenSize_ += count;
  if (takenSize_ == given_.size()) {
    takenSize_ = 0;
    giveBack(given_);
  }
  return count;
}

void MessageSieve::goOn() {
  if (stage_ == Stage::fixedPart && message_.size() == wanted_) {
    readFixedPart();
  }
  if (stage_ == Stage::header && message_.size() == wanted_) {
    if (bodySize_ > greatestBodySize) {
      unwanted_ = bodySize_;
      giveCallWithoutArguments();
      return;
    }
    stage_ = Stage::body;
    wanted_ += bodySize_;
    message_.reserve(wanted_);
  }
  if (stage_ == Stage::body && message_.size() == wanted_) {
    if (hasTooManyValues()) {
      giveCallWithoutArguments();
    } else {
      giveMessage();
    }
  }
}

void MessageSieve::readFixedPart() {
  bodySize_ = numberAt(message_, bodySizeOffset, isBigEndian());
  headerSize_ = fixedPartSize + padded(numberAt(message_, fieldsSizeOffset, isBigEndian()));
  if (headerSize_ > greatestHeaderSize) {
    unwanted_ = headerSize_ - fixedPartSize + bodySize_;
    beginMessage();
    return;
  }
  stage_ = Stage::header;
  wanted_ = headerSize_;
}

bool MessageSieve::hasTooManyValues() const {
  const std::string_view message = message_;
  WireValues fields(message.substr(0, headerSize_), isBigEndian(), greatestFieldCount);
  fields.moveTo(fixedPartSize);
  std::string_view signature;
  while (const std::optional<Field> field = nextField(fields)) {
    if (field->code == signatureField) {
      signature = field->signature;
    }
  }
  WireValues body(message.substr(headerSize_), isBigEndian(), greatestValueCount);
  return !body.skip(signature) || !body.isAtEnd();
}

void MessageSieve::giveMessage() {
  if (given_.empty()) {
    given_.swap(message_);
  } else {
    given_ += message_;
  }
  beginMessage();
}

void MessageSieve::giveCallWithoutArguments() {
  if (message_[typeOffset] == methodCall) {
    std::string call = message_.substr(0, fixedPartSize);
    const std::string_view header = std::string_view(message_).substr(0, headerSize_);
    WireValues fields(header, isBigEndian(), greatestFieldCount);
    fields.moveTo(fixedPartSize);
    while (const std::optional<Field> field = nextField(fields)) {
      if (field->code != signatureField && field->code != fileDescriptorsField) {
        call.resize(padded(call.size()), '\0');
        call += header.substr(field->begin, field->end - field->begin);
      }
    }
    call.resize(padded(call.size()), '\0');
    const std::array<char, 5> mark = {static_cast<char>(tooLargeField), 1, 'y', 0, 0};
    call.append(mark.data(), mark.size());
    writeNumber(call, bodySizeOffset, 0, isBigEndian());
    writeNumber(call, fieldsSizeOffset, call.size() - fixedPartSize, isBigEndian());
    call.resize(padded(call.size()), '\0');
    given_ += call;
  }
  beginMessage();
}

void MessageSieve::beginMessage() {
  giveBack(message_);
  stage_ = Stage::fixedPart;
  wanted_ = fixedPartSize;
}
