// Helpers of the fuzz targets: the input written to a file the reader opens by name, and a
// check that stops the run with a message when an invariant of a reader does not hold.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

// A file of this process, in memory when /dev/shm is there, so that writing it costs little.
inline std::string scratch_path(const char* suffix) {
  static const std::string stem = std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") +
                                  "/celvane_fuzz_" + std::to_string(getpid());
  return stem + suffix;
}

inline void write_file(const std::string& path, const std::string& bytes) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) std::abort();
  if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size()) std::abort();
  std::fclose(f);
}

[[noreturn]] inline void fail(const char* what, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: invariant broken: %s\n", file, line, what);
  std::abort();
}

}  // namespace fuzz

#define FUZZ_CHECK(condition) \
  do {                        \
    if (!(condition)) fuzz::fail(#condition, __FILE__, __LINE__); \
  } while (0)

#include "raster/Trl_Terrain.h"
#include "toolkit/directory.h"

namespace fuzz {

// A terrain of 30 by 30 cells (one tile) of 5 m from (0, 0), its clutter a building block in the
// middle, for the readers that place users on a terrain.
inline Trl_Terrain* small_terrain() {
  std::string map = "# memory mapped matrix, (C) 2001, Tarnwick Radio Labs\n";
  char header[256];
  std::snprintf(header, sizeof header, "filesize  %10u\npagesize  %10u\nentrysize %10u\nrows      %10u\ncolumns   %10u\n",
                8192u, 4096u, 2u, 30u, 30u);
  map += header;
  map += "xlc 0 ylc 0 gridsize 5 minimum 0 maximum 30\n";
  map.resize(8192, '\0');
  std::string urb = "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 5\n40 40\n0 40\n";
  for (int r = 1; r < 40; ++r) urb += (r >= 10 && r < 30) ? "0 10 20 10\n" : "0 40\n";
  const std::string& path = scratch_path(".terrain.map");
  write_file(path, map);
  write_file(path.substr(0, path.size() - 4) + ".urb", urb);
  Trl_Terrain* terrain = new Trl_Terrain;
  terrain->load(tk::to_drive_path(path), [](const tk::string&) {});
  if (!terrain->loaded()) std::abort();
  return terrain;
}

}  // namespace fuzz
