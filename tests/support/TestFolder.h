// Test support: a scratch folder under the test temp folder that belongs to this test
// process alone. CTest runs tests as separate processes at once, so a fixed folder name
// would let one test's tear-down remove another's files.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

inline std::filesystem::path test_folder(const std::string& name) {
  return std::filesystem::path(testing::TempDir()) / (name + "_" + std::to_string(getpid()));
}
