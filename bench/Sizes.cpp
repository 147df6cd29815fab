#include "bench/Sizes.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string_view>

std::vector<int> sizesInArguments(int argumentCount, char **arguments,
                                  const std::vector<int> &usualSizes) {
  std::vector<int> sizes;
  for (int i = 1; i < argumentCount; ++i) {
    const std::string_view text = arguments[i];
    int size = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size);
    if (error != std::errc() || end != text.data() + text.size() || size <= 0) {
      std::fprintf(stderr, "Usage: %s [NUMBER-OF-FILES…]\n", arguments[0]);
      std::exit(2);
    }
    sizes.push_back(size);
  }
  return sizes.empty() ? usualSizes : sizes;
}
