// The sample city of the benchmarks: data/terrain.map of the source tree when it is there,
// otherwise a city of 500 by 500 cells of 2 m made by celvane-citygen in a folder of the
// benchmarks' own.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

inline std::string bench_city_file() {
  const std::string sample = std::string(CELVANE_SOURCE_DIR) + "/data/terrain.map";
  if (std::filesystem::exists(sample)) return sample;
  const std::string dir = (std::filesystem::temp_directory_path() / "celvane_bench_city").string();
  const std::string made = dir + "/terrain.map";
  if (!std::filesystem::exists(made)) {
    std::filesystem::create_directories(dir);
    const std::string command =
        std::string(CELVANE_BINARY_DIR) + "/apps/celvane-citygen --out " + dir + " --cells 500 --cell 2";
    if (std::system(command.c_str()) != 0) std::fprintf(stderr, "cannot make the sample city\n");
  }
  return made;
}
