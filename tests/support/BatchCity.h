// Test support: the batch program played in a scratch folder of this test process that holds
// a copy of the scenario city's files under data/.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/TestFolder.h"

inline std::string read_file(const std::filesystem::path& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// A fresh folder named after `name`, with the city's files in data/.
inline std::filesystem::path city_folder(const std::string& name) {
  const std::filesystem::path dir = test_folder(name);
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir);
  std::filesystem::copy(std::filesystem::path(CELVANE_SOURCE_DIR) / "tests/scenarios/data", dir / "data");
  return dir;
}

// Runs celvane-batch with --seed 1 in the folder on the script (a path, or a name in the
// folder) and writes the transcript to `transcript`; returns the program's status.
inline int play_batch(const std::filesystem::path& dir, const std::string& script,
                      const std::string& transcript = "transcript.txt") {
  const std::string command = "cd '" + dir.string() + "' && '" + CELVANE_BINARY_DIR + "/apps/celvane-batch' --seed 1 " +
                              "--transcript " + transcript + " '" + script + "' > /dev/null 2>&1";
  return std::system(command.c_str());
}
