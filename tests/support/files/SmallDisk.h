// The file system of 64 KiB that "in-own-root" brings, for tests of what happens when it is full.
#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

inline void requireSmallDisk() {
  ASSERT_TRUE(std::filesystem::is_directory("/small")) << "This program runs without its launcher";
  ASSERT_LE(std::filesystem::space("/small").capacity, 65536U);
}

inline void emptySmallDisk() {
  for (const auto &entry : std::filesystem::directory_iterator("/small")) {
    std::filesystem::remove_all(entry);
  }
}

// Takes what is left of it.
inline void fillSmallDisk() {
  std::ofstream stream("/small/filler", std::ios::binary);
  const std::string block(1024, 'x');
  while (stream << block << std::flush) {
  }
  ASSERT_EQ(std::filesystem::space("/small").available, 0U);
}
