#include "platform/linux/values/PropertyListCoding.h"

#include <limits>

#include <plist/plist.h>

#include "platform/Text.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/values/PropertyListShape.h"

namespace platform {

namespace {

using NodeHandle = Handle<void, plist_free>;

constexpr std::chrono::seconds plistEpoch{978307200};  // 2001-01-01T00:00:00Z

// --- From libplist ---

std::optional<PropertyList> valueOfNode(plist_t node);

std::optional<PropertyList> stringOfNode(plist_t node) {
  std::uint64_t length = 0;
  const char *text = plist_get_string_ptr(node, &length);
  if (text == nullptr || !isValidUTF8({text, length})) {
    return std::nullopt;
  }
  return PropertyList(std::string(text, length));
}

Data dataOfNode(plist_t node) {
  std::uint64_t length = 0;
  const auto *bytes = reinterpret_cast<const std::byte *>(plist_get_data_ptr(node, &length));
  return bytes == nullptr ? Data() : Data(bytes, bytes + length);
}

Date dateOfNode(plist_t node) {
  std::int32_t seconds = 0;
  std::int32_t microseconds = 0;
  plist_get_date_val(node, &seconds, &microseconds);
  return Date(plistEpoch + std::chrono::seconds(seconds) + std::chrono::microseconds(microseconds));
}

std::optional<PropertyList> arrayOfNode(plist_t node) {
  Array array;
  plist_array_iter iteratorOut = nullptr;
  plist_array_new_iter(node, &iteratorOut);
  const Handle<void, free> iterator(iteratorOut);
  for (;;) {
    plist_t item = nullptr;
    plist_array_next_item(node, iterator.get(), &item);
    if (item == nullptr) {
      return PropertyList(std::move(array));
    }
    std::optional<PropertyList> value = valueOfNode(item);
    if (!value) {
      return std::nullopt;
    }
    array.push_back(*std::move(value));
  }
}

std::optional<PropertyList> dictionaryOfNode(plist_t node) {
  Dictionary dictionary;
  plist_dict_iter iteratorOut = nullptr;
  plist_dict_new_iter(node, &iteratorOut);
  const Handle<void, free> iterator(iteratorOut);
  for (;;) {
    char *keyOut = nullptr;
    plist_t item = nullptr;
    plist_dict_next_item(node, iterator.get(), &keyOut, &item);
    const Handle<char, free> key(keyOut);
    if (item == nullptr) {
      return PropertyList(std::move(dictionary));
    }
    std::optional<PropertyList> value = valueOfNode(item);
    if (key == nullptr || !isValidUTF8(key.get()) || !value) {
      return std::nullopt;
    }
    dictionary.insert_or_assign(key.get(), *std::move(value));
  }
}

std::optional<PropertyList> valueOfNode(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t value = 0;
      plist_get_bool_val(node, &value);
      return PropertyList(value != 0);
    }
    case PLIST_UINT: {
      std::uint64_t value = 0;
      plist_get_uint_val(node, &value);
      return PropertyList(static_cast<std::int64_t>(value));
    }
    case PLIST_REAL: {
      double value = 0;
      plist_get_real_val(node, &value);
      return PropertyList(value);
    }
    case PLIST_STRING:
      return stringOfNode(node);
    case PLIST_DATA:
      return PropertyList(dataOfNode(node));
    case PLIST_DATE:
      return PropertyList(Date(dateOfNode(node)));
    case PLIST_ARRAY:
      return arrayOfNode(node);
    case PLIST_DICT:
      return dictionaryOfNode(node);
    case PLIST_UID: {
      // As the XML form has it, which knows no such type.
      std::uint64_t value = 0;
      plist_get_uid_val(node, &value);
      return PropertyList(Dictionary{{"CF$UID", static_cast<std::int64_t>(value)}});
    }
    default:
      return std::nullopt;
  }
}

// --- To libplist ---

plist_t newNode(const PropertyList &value);

struct NodeMaker {
  plist_t operator()(bool value) const { return plist_new_bool(value ? 1 : 0); }
  plist_t operator()(std::int64_t value) const {
    return plist_new_uint(static_cast<std::uint64_t>(value));
  }
  plist_t operator()(double value) const { return plist_new_real(value); }
  plist_t operator()(const std::string &value) const { return plist_new_string(value.c_str()); }
  plist_t operator()(const Data &value) const {
    return plist_new_data(reinterpret_cast<const char *>(value.data()), value.size());
  }
  plist_t operator()(const Date &value) const {
    const auto seconds =
        std::chrono::floor<std::chrono::seconds>(value.time_since_epoch()) - plistEpoch;
    return plist_new_date(static_cast<std::int32_t>(seconds.count()), 0);
  }
  plist_t operator()(const Array &value) const {
    plist_t array = plist_new_array();
    for (const PropertyList &item : value) {
      plist_array_append_item(array, newNode(item));
    }
    return array;
  }
  plist_t operator()(const Dictionary &value) const {
    plist_t dictionary = plist_new_dict();
    for (const auto &[key, item] : value) {
      plist_dict_set_item(dictionary, key.c_str(), newNode(item));
    }
    return dictionary;
  }
};

plist_t newNode(const PropertyList &value) {
  return std::visit(NodeMaker(), value.value());
}

// libplist counts a date's seconds in 32 bits.
bool isDateInRange(const Date &date) {
  using Seconds = std::numeric_limits<std::int32_t>;
  const auto seconds =
      std::chrono::floor<std::chrono::seconds>(date.time_since_epoch()) - plistEpoch;
  return seconds.count() >= Seconds::min() && seconds.count() <= Seconds::max();
}

bool isXMLValue(const PropertyList &value) {
  if (const auto *date = value.as<Date>()) {
    return isDateInRange(*date);
  }
  if (const auto *text = value.as<std::string>()) {
    return isPropertyListText(*text);
  }
  if (const auto *array = value.as<Array>()) {
    for (const PropertyList &item : *array) {
      if (!isXMLValue(item)) {
        return false;
      }
    }
  }
  if (const auto *dictionary = value.as<Dictionary>()) {
    for (const auto &[key, item] : *dictionary) {
      if (!isPropertyListText(key) || !isXMLValue(item)) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

Result<Dictionary> dictionaryFromPropertyList(std::string_view bytes) {
  static constexpr std::string_view byteOrderMark = "\uFEFF";
  const auto failure = [](const char *reason) { return Result<Dictionary>::failure(reason); };
  if (bytes.starts_with(byteOrderMark)) {
    bytes.remove_prefix(byteOrderMark.size());
  }
  const bool isBinary = isBinaryPropertyList(bytes);
  if (isBinary ? !isBoundedBinaryPropertyList(bytes) : !isWellFormedXMLPropertyList(bytes)) {
    return failure("Not a property list");
  }
  plist_t nodeOut = nullptr;
  (isBinary ? plist_from_bin : plist_from_xml)(bytes.data(),
                                               static_cast<std::uint32_t>(bytes.size()), &nodeOut);
  const NodeHandle node(nodeOut);
  if (node == nullptr) {
    return failure("Not a property list");
  }
  if (plist_get_node_type(node.get()) != PLIST_DICT) {
    return failure("The property list's top level is not a dictionary");
  }
  std::optional<PropertyList> value = valueOfNode(node.get());
  if (!value) {
    return failure("The property list holds a value of an unknown kind");
  }
  return *value->as<Dictionary>();
}

std::optional<std::string> xmlPropertyList(const Dictionary &dictionary) {
  if (!isXMLValue(dictionary)) {
    return std::nullopt;
  }
  const NodeHandle node(newNode(dictionary));
  char *textOut = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(node.get(), &textOut, &length);
  const Handle<char, plist_to_xml_free> text(textOut);
  if (text == nullptr) {
    return std::nullopt;
  }
  // XML's readers take a carriage return for a line feed unless it is written as a reference.
  std::string xml;
  xml.reserve(length);
  for (const char character : std::string_view(text.get(), length)) {
    if (character == '\r') {
      xml += "&#13;";
    } else {
      xml += character;
    }
  }
  return xml;
}

Data binaryPropertyList(const Dictionary &dictionary) {
  const NodeHandle node(newNode(dictionary));
  char *bytesOut = nullptr;
  std::uint32_t length = 0;
  plist_to_bin(node.get(), &bytesOut, &length);
  const Handle<char, plist_to_bin_free> bytes(bytesOut);
  const auto *begin = reinterpret_cast<const std::byte *>(bytes.get());
  return {begin, begin + length};
}

}  // namespace platform
