#include "platform/linux/process/guard/WireValues.h"

namespace {

// The bus allows 64 containers in each other. Each takes two steps at the most, as a variant that
// holds one.
constexpr int greatestDepth = 128;

// Of the first complete type in the signature; 0 if there is none.
std::size_t lengthOfType(std::string_view signature) {
  std::size_t length = 0;
  while (length < signature.size() && signature[length] == 'a') {
    ++length;
  }
  int open = 0;
  do {
    if (length == signature.size()) {
      return 0;
    }
    const char code = signature[length++];
    if (code == '(' || code == '{') {
      ++open;
    } else if (code == ')' || code == '}') {
      --open;
    }
  } while (open > 0);
  return length;
}

// 0 for what is no type.
std::size_t alignmentOfType(char code) {
  switch (code) {
    case 'y':
    case 'g':
    case 'v':
      return 1;
    case 'n':
    case 'q':
      return 2;
    case 'b':
    case 'i':
    case 'u':
    case 'h':
    case 's':
    case 'o':
    case 'a':
      return 4;
    case 'x':
    case 't':
    case 'd':
    case '(':
    case '{':
      return 8;
    default:
      return 0;
  }
}

}  // namespace

bool WireValues::skip(std::string_view signature) {
  while (!signature.empty()) {
    if (!skipOne(signature, 0)) {
      return false;
    }
  }
  return true;
}

bool WireValues::skipOne(std::string_view &signature, int depth) {
  const std::size_t length = lengthOfType(signature);
  if (length == 0 || depth == greatestDepth || countLeft_ == 0) {
    return false;
  }
  --countLeft_;
  std::string_view type = signature.substr(0, length);
  signature.remove_prefix(length);
  switch (type.front()) {
    case 's':
    case 'o': {
      const std::optional<std::uint32_t> size = number();
      return size && advance(std::size_t{*size} + 1);
    }
    case 'g':
      return this->signature().has_value();
    case 'v': {
      std::optional<std::string_view> inner = this->signature();
      return inner && skipOne(*inner, depth + 1) && inner->empty();
    }
    case 'a':
      return skipArray(type.substr(1), depth);
    case '(':
    case '{': {
      type = type.substr(1, length - 2);
      bool isWhole = alignTo(8) && !type.empty();
      while (isWhole && !type.empty()) {
        isWhole = skipOne(type, depth + 1);
      }
      return isWhole;
    }
    default:
      return skipFixed(alignmentOfType(type.front()));
  }
}

bool WireValues::skipArray(std::string_view elementType, int depth) {
  const std::optional<std::uint32_t> size = number();
  const std::size_t alignment = alignmentOfType(elementType.front());
  if (!size || alignment == 0 || !alignTo(alignment)) {
    return false;
  }
  const std::size_t end = position_ + *size;
  if (elementType == "y") {
    return advance(*size);
  }
  while (position_ < end) {
    std::string_view type = elementType;
    if (!skipOne(type, depth + 1)) {
      return false;
    }
  }
  return position_ == end;
}

// The types of a fixed size are aligned to that.
bool WireValues::skipFixed(std::size_t size) {
  return size != 0 && alignTo(size) && advance(size);
}

bool WireValues::advance(std::size_t size) {
  if (size > bytes_.size() - position_) {
    return false;
  }
  position_ += size;
  return true;
}

std::optional<std::uint8_t> WireValues::byte() {
  const std::size_t from = position_;
  if (!advance(1)) {
    return std::nullopt;
  }
  return static_cast<std::uint8_t>(bytes_[from]);
}

std::optional<std::uint32_t> WireValues::number() {
  if (!alignTo(4) || bytes_.size() - position_ < 4) {
    return std::nullopt;
  }
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const auto next = static_cast<std::uint8_t>(bytes_[position_ + (isBigEndian_ ? i : 3 - i)]);
    value = (value << 8) | next;
  }
  position_ += 4;
  return value;
}

std::optional<std::string_view> WireValues::signature() {
  const std::optional<std::uint8_t> size = byte();
  const std::size_t from = position_;
  if (!size || !advance(std::size_t{*size} + 1)) {
    return std::nullopt;
  }
  return bytes_.substr(from, *size);
}
