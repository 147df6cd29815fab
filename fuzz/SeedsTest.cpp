// Every fuzzer keeps its promises on its seeds, among them the inputs that once broke one.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <string_view>

#include <glib.h>

#include "fuzz/support/OwnHome.h"

// The build lists the fuzzers as FUZZER(name, folder of seeds).
#define FUZZER(name, folder) extern "C" int name(const std::uint8_t *bytes, std::size_t size);
#include "fuzzers.inc"
#undef FUZZER

namespace {

struct Fuzzer {
  std::string_view name;
  const char *folder;
  int (*tryInput)(const std::uint8_t *bytes, std::size_t size);
};

void PrintTo(const Fuzzer &fuzzer, std::ostream *stream) {
  *stream << fuzzer.name;
}

#define FUZZER(name, folder) {#name, folder, name},
constexpr Fuzzer fuzzers[] = {
#include "fuzzers.inc"
};
#undef FUZZER

class Seeds : public testing::TestWithParam<Fuzzer> {
 protected:
  static void tryInput(const std::string &input) {
    GetParam().tryInput(reinterpret_cast<const std::uint8_t *>(input.data()), input.size());
  }
};

std::string nameOfCase(const testing::TestParamInfo<Fuzzer> &fuzzer) {
  return std::string(fuzzer.param.name);
}

}  // namespace

// What breaks a promise ends the program.
TEST_P(Seeds, BreakNoPromise) {
  g_log_set_always_fatal(G_LOG_LEVEL_CRITICAL);
  tryInput("");
  int count = 0;
  for (const auto &seed : std::filesystem::directory_iterator(std::string(HALVERN_FUZZ_SEEDS) +
                                                              "/" + GetParam().folder)) {
    tryInput(readWholeFile(seed.path()));
    ++count;
  }
  EXPECT_GT(count, 0);
}

INSTANTIATE_TEST_SUITE_P(Of, Seeds, testing::ValuesIn(fuzzers), nameOfCase);
