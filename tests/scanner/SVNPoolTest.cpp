#include <fstream>
#include <gtest/gtest.h>
#include <string>

#include "scanner/SVNPool.h"
#include "tests/scanner/Scan.h"

namespace {

long residentMemory() {  // KiB
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) {
      return std::stol(line.substr(line.find(':') + 1));
    }
  }
  return 0;
}

void usePools(int count) {
  for (int i = 0; i < count; ++i) {
    const SVNPool pool;
    apr_pcalloc(pool, 10'000);
  }
}

}  // namespace

TEST(SVNPoolTest, WhatItHeldGoesBackToTheSystem) {
  KTREnsureSVNCoreInitialization();
  usePools(100);
  const long before = residentMemory();
  usePools(5000);
  EXPECT_LT(residentMemory() - before, 2048);
}
