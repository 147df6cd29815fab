#include "platform/linux/values/PropertyListShape.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/GLibHandles.h"

namespace platform {

namespace {

constexpr std::string_view binaryMagic = "bplist00";

// --- XML ---

enum class ElementKind { list, dictionary, array, key, wholeNumber, leaf, unknown };

ElementKind kindOfElement(std::string_view name) {
  if (name == "plist") return ElementKind::list;
  if (name == "dict") return ElementKind::dictionary;
  if (name == "array") return ElementKind::array;
  if (name == "key") return ElementKind::key;
  if (name == "integer") return ElementKind::wholeNumber;
  for (const std::string_view leaf : {"string", "real", "data", "date", "true", "false"}) {
    if (name == leaf) return ElementKind::leaf;
  }
  return ElementKind::unknown;
}

struct OpenElement {
  ElementKind kind;
  unsigned children = 0;  // a whole number's text counts as one
};

struct XMLCheck {
  std::vector<OpenElement> open;
  bool sawList = false;

  // Whether an element may begin inside the innermost open one.
  bool mayBegin(ElementKind kind) const {
    if (kind == ElementKind::unknown || open.size() >= greatestPropertyListDepth) {
      return false;
    }
    if (open.empty()) {
      return kind == ElementKind::list && !sawList;
    }
    if (kind == ElementKind::list) {
      return false;
    }
    const OpenElement &parent = open.back();
    switch (parent.kind) {
      case ElementKind::list:
        return parent.children == 0 && kind != ElementKind::key;
      case ElementKind::array:
        return kind != ElementKind::key;
      case ElementKind::dictionary:  // keys and values take turns
        return (kind == ElementKind::key) == (parent.children % 2 == 0);
      default:
        return false;
    }
  }
};

void refuse(GError **error) {
  g_set_error_literal(error, G_MARKUP_ERROR, G_MARKUP_ERROR_INVALID_CONTENT, "");
}

void beginElement(GMarkupParseContext *, const char *name, const char **, const char **,
                  gpointer data, GError **error) {
  auto &check = *static_cast<XMLCheck *>(data);
  const ElementKind kind = kindOfElement(name);
  if (!check.mayBegin(kind)) {
    refuse(error);
    return;
  }
  if (!check.open.empty()) {
    ++check.open.back().children;
  }
  check.sawList = true;
  check.open.push_back({kind});
}

void endElement(GMarkupParseContext *, const char *, gpointer data, GError **error) {
  auto &check = *static_cast<XMLCheck *>(data);
  const OpenElement element = check.open.back();
  check.open.pop_back();
  const bool complete = element.kind == ElementKind::dictionary    ? element.children % 2 == 0
                        : element.kind == ElementKind::list        ? element.children == 1
                        : element.kind == ElementKind::wholeNumber ? element.children == 1
                                                                   : true;
  if (!complete) {
    refuse(error);
  }
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

// Decimal or hexadecimal, in 64 bits with a sign, blanks around it.
bool isWholeNumber(const std::string &text) {
  const bool isHexadecimal = text.find_first_of("xX") != std::string::npos;
  char *end = nullptr;
  errno = 0;
  g_ascii_strtoll(text.c_str(), &end, isHexadecimal ? 16 : 10);
  return end != text.c_str() && errno == 0 && isBlank(end);
}

void readText(GMarkupParseContext *, const char *text, gsize length, gpointer data,
              GError **error) {
  auto &check = *static_cast<XMLCheck *>(data);
  const ElementKind kind = check.open.empty() ? ElementKind::list : check.open.back().kind;
  const bool valid = kind == ElementKind::leaf || kind == ElementKind::key ? true
                     : kind == ElementKind::wholeNumber ? isWholeNumber(std::string(text, length))
                                                        : isBlank({text, length});
  if (!valid) {
    refuse(error);
  } else if (kind == ElementKind::wholeNumber) {
    ++check.open.back().children;
  }
}

// --- Binary ---

constexpr std::size_t trailerSize = 32;

class BinaryCheck {
 public:
  explicit BinaryCheck(std::string_view bytes) : bytes_(bytes) {}

  bool isBounded() {
    if (!readTrailer()) {
      return false;
    }
    states_.assign(objectCount_, State{});
    return expandedSizeOf(topObject_, 0) > 0;
  }

 private:
  enum class Progress : std::uint8_t { notSeen, open, done };
  struct State {
    Progress progress = Progress::notSeen;
    std::uint32_t size = 0;   // values once expanded
    std::uint16_t depth = 0;  // levels beneath and including it
  };

  // Big-endian. Requires position + width <= size and width <= 8.
  std::uint64_t number(std::size_t position, std::size_t width) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
      value = value << 8 | static_cast<unsigned char>(bytes_[position + i]);
    }
    return value;
  }

  bool readTrailer() {
    if (bytes_.size() < binaryMagic.size() + trailerSize + 1) {
      return false;
    }
    const std::size_t trailer = bytes_.size() - trailerSize;
    offsetWidth_ = number(trailer + 6, 1);
    referenceWidth_ = number(trailer + 7, 1);
    objectCount_ = number(trailer + 8, 8);
    topObject_ = number(trailer + 16, 8);
    offsetTable_ = number(trailer + 24, 8);
    return offsetWidth_ >= 1 && offsetWidth_ <= 8 && referenceWidth_ >= 1 && referenceWidth_ <= 8 &&
           offsetTable_ >= binaryMagic.size() && offsetTable_ < trailer &&
           objectCount_ <= (trailer - offsetTable_) / offsetWidth_ && topObject_ < objectCount_;
  }

  // The values that the object expands to; 0 if it is not bounded. Recursive, to the bound on
  // depth.
  std::uint32_t expandedSizeOf(std::uint64_t object, unsigned level) {
    if (object >= objectCount_ || level >= greatestPropertyListDepth) {
      return 0;
    }
    State &state = states_[object];
    if (state.progress == Progress::open) {
      return 0;  // a cycle
    }
    if (state.progress == Progress::done) {
      return level + state.depth <= greatestPropertyListDepth ? state.size : 0;
    }
    state.progress = Progress::open;
    std::uint64_t position = 0;
    std::uint64_t references = 0;
    std::uint64_t keys = 0;
    if (!readContainer(object, position, references, keys)) {
      return 0;
    }
    std::uint64_t size = 1;
    unsigned depth = 1;
    for (std::uint64_t i = 0; i < references; ++i) {
      const std::uint64_t child = number(position + i * referenceWidth_, referenceWidth_);
      const std::uint32_t childSize = expandedSizeOf(child, level + 1);
      size += childSize;
      if (childSize == 0 || size > greatestPropertyListSize || (i < keys && !isKey(child))) {
        return 0;
      }
      depth = std::max(depth, 1U + states_[child].depth);
    }
    state = {Progress::done, static_cast<std::uint32_t>(size), static_cast<std::uint16_t>(depth)};
    return state.size;
  }

  // Where an object's marker is.
  std::uint64_t positionOf(std::uint64_t object) const {
    return number(offsetTable_ + object * offsetWidth_, offsetWidth_);
  }

  // Where an object's references to others begin, how many they are, and how many of them are to
  // keys, which come first; none but for containers.
  bool readContainer(std::uint64_t object, std::uint64_t &position, std::uint64_t &references,
                     std::uint64_t &keys) const {
    position = positionOf(object);
    references = 0;
    keys = 0;
    if (position < binaryMagic.size() || position >= offsetTable_) {
      return false;
    }
    const auto marker = static_cast<unsigned char>(bytes_[position++]);
    const unsigned kind = marker >> 4;
    const bool isDictionary = kind == 0xD;
    if (kind != 0xA && !isDictionary) {
      return true;  // libplist checks the bounds of what holds no references
    }
    references = marker & 0xF;
    if (references == 0xF && !readLongCount(position, references)) {
      return false;
    }
    if (references > offsetTable_ || position > offsetTable_) {
      return false;
    }
    keys = isDictionary ? references : 0;
    references += keys;
    return references <= (offsetTable_ - position) / referenceWidth_;
  }

  // A text without null characters, at which libplist would end the process. The object's marker is
  // in the file.
  bool isKey(std::uint64_t object) const {
    std::uint64_t position = positionOf(object);
    const auto marker = static_cast<unsigned char>(bytes_[position++]);
    const unsigned kind = marker >> 4;
    const std::uint64_t width = kind == 0x5 ? 1 : 2;  // of a character, in bytes
    std::uint64_t length = marker & 0xF;
    if ((kind != 0x5 && kind != 0x6) || (length == 0xF && !readLongCount(position, length)) ||
        length > (offsetTable_ - position) / width) {
      return false;
    }
    for (std::uint64_t i = 0; i < length; ++i) {
      if (number(position + i * width, width) == 0) {
        return false;
      }
    }
    return true;
  }

  // A count that does not fit into the marker follows it as a whole number.
  bool readLongCount(std::uint64_t &position, std::uint64_t &count) const {
    if (position >= offsetTable_) {
      return false;
    }
    const auto marker = static_cast<unsigned char>(bytes_[position++]);
    const unsigned exponent = marker & 0xF;
    if (marker >> 4 != 1 || exponent > 3 || offsetTable_ - position < (1U << exponent)) {
      return false;
    }
    count = number(position, 1U << exponent);
    position += 1U << exponent;
    return true;
  }

  const std::string_view bytes_;
  std::uint64_t offsetWidth_ = 0;
  std::uint64_t referenceWidth_ = 0;
  std::uint64_t objectCount_ = 0;
  std::uint64_t topObject_ = 0;
  std::uint64_t offsetTable_ = 0;
  std::vector<State> states_;
};

}  // namespace

bool isBinaryPropertyList(std::string_view bytes) {
  return bytes.starts_with(binaryMagic);
}

bool isWellFormedXMLPropertyList(std::string_view bytes) {
  if (bytes.empty()) {
    return false;  // GLib does not take a null pointer for an empty text
  }
  static constexpr GMarkupParser parser = {beginElement, endElement, readText, nullptr, nullptr};
  XMLCheck check;
  const Handle<GMarkupParseContext, g_markup_parse_context_unref> context(
      g_markup_parse_context_new(&parser, G_MARKUP_TREAT_CDATA_AS_TEXT, &check, nullptr));
  return g_markup_parse_context_parse(context.get(), bytes.data(),
                                      static_cast<gssize>(bytes.size()), nullptr) != FALSE &&
         g_markup_parse_context_end_parse(context.get(), nullptr) != FALSE && check.sawList;
}

bool isBoundedBinaryPropertyList(std::string_view bytes) {
  return BinaryCheck(bytes).isBounded();
}

}  // namespace platform
