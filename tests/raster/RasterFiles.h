// Test support: ".map" and ".urb" files written byte by byte in the test, independent of
// the program's own writer, so a reader bug cannot hide behind a writer bug.
#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace raster_files {

// A ".map" file of the given shape; height(c, r) gives each cell. The tail is free text.
inline void write_map(const std::string& path, unsigned rows, unsigned columns,
                      const std::function<short(unsigned, unsigned)>& height, const std::string& tail,
                      long stored_size = -1, const char* line_end = "\n") {
  unsigned across = (columns + 63) / 64, down = (rows + 31) / 32;
  unsigned size = down * 32 * across * 64 * 2 + 4096;
  std::vector<char> bytes(size, 0);
  std::string header = "# memory mapped matrix, (C) 2001, Tarnwick Radio Labs";
  char line[64];
  std::snprintf(line, sizeof line, "%sfilesize  %10lu", line_end, stored_size < 0 ? (unsigned long)size : (unsigned long)stored_size);
  header += line;
  std::snprintf(line, sizeof line, "%spagesize  %10u", line_end, 4096u);
  header += line;
  std::snprintf(line, sizeof line, "%sentrysize %10u", line_end, 2u);
  header += line;
  std::snprintf(line, sizeof line, "%srows      %10u", line_end, rows);
  header += line;
  std::snprintf(line, sizeof line, "%scolumns   %10u%s", line_end, columns, line_end);
  header += line;
  header += tail;
  std::copy(header.begin(), header.end(), bytes.begin());
  for (unsigned r = 0; r < rows; ++r)
    for (unsigned c = 0; c < columns; ++c) {
      unsigned entry = ((r / 32) * across + c / 64) * 2048 + (r % 32) * 64 + (c % 64);
      short h = height(c, r);
      std::uint16_t u = static_cast<std::uint16_t>(h);
      bytes[4096 + 2 * entry] = static_cast<char>(u & 0xff);  // little-endian
      bytes[4096 + 2 * entry + 1] = static_cast<char>(u >> 8);
    }
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline void write_text(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

}  // namespace raster_files
