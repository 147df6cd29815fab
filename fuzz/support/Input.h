// The bytes of one input, as what is tried takes them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

inline std::string_view textOfInput(const std::uint8_t *bytes, std::size_t size) {
  return size == 0 ? std::string_view()
                   : std::string_view(reinterpret_cast<const char *>(bytes), size);
}

// For inputs of several texts: what is between NUL bytes, which occur in none of them. At least as
// many as are asked for, the last ones empty.
inline std::vector<std::string> fieldsOfInput(std::string_view input, std::size_t leastCount) {
  std::vector<std::string> fields;
  while (!input.empty()) {
    const std::size_t end = input.find('\0');
    fields.emplace_back(input.substr(0, end));
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
  }
  if (fields.size() < leastCount) {
    fields.resize(leastCount);
  }
  return fields;
}
