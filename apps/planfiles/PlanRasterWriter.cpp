#include "planfiles/PlanRasterWriter.h"

#include <algorithm>
#include <cstdio>
#include <fstream>

PlanRasterWriter::PlanRasterWriter(int columns, int rows, double x0, double y0, double cell)
    : columns(columns), rows(rows), x0(x0), y0(y0), cell(cell) {}

// Page 0 is the text header with the placing; then tiles of 32 rows by 64 columns, one
// 4096-byte page each, in rows of tiles from the south, little-endian 16-bit heights.
bool PlanRasterWriter::write_heights(const std::string& path, const std::vector<short>& heights) const {
  const std::uint64_t across = (columns + 63) / 64, down = (rows + 31) / 32;
  const std::uint64_t file_size = down * across * 4096 + 4096;
  std::vector<char> bytes(file_size, 0);
  const short low = *std::min_element(heights.begin(), heights.end());
  const short high = *std::max_element(heights.begin(), heights.end());
  const int written = std::snprintf(bytes.data(), 4096,
                                    "# memory mapped matrix, (C) 2001, Tarnwick Radio Labs\n"
                                    "filesize  %10llu\npagesize  %10u\nentrysize %10u\nrows      %10u\ncolumns   %10u\n"
                                    "xlc %.17g ylc %.17g gridsize %.17g minimum %d maximum %d\n",
                                    static_cast<unsigned long long>(file_size), 4096u, 2u,
                                    static_cast<unsigned>(rows), static_cast<unsigned>(columns), x0, y0, cell, low, high);
  if (written <= 0 || written >= 4096) return false;
  for (int r = 0; r < rows; ++r)
    for (int c = 0; c < columns; ++c) {
      const std::uint64_t entry = ((r / 32) * across + c / 64) * 2048 + (r % 32) * 64 + (c % 64);
      const auto h = static_cast<std::uint16_t>(heights[static_cast<size_t>(r) * columns + c]);
      bytes[4096 + 2 * entry] = static_cast<char>(h & 0xff);
      bytes[4096 + 2 * entry + 1] = static_cast<char>(h >> 8);
    }
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(out);
}

// Each row: 0 or 1 for open or built at its start and the run lengths, or 2 for a row that
// repeats the one before.
bool PlanRasterWriter::write_clutter(const std::string& path, const std::vector<std::uint8_t>& built) const {
  std::ofstream out(path);
  out << "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n";
  char placing[128];
  std::snprintf(placing, sizeof placing, "%.17g %.17g %.17g\n", x0, y0, cell);
  out << placing << rows << " " << columns << "\n";
  std::vector<int> previous;
  for (int r = 0; r < rows; ++r) {
    const std::uint8_t* row = built.data() + static_cast<size_t>(r) * columns;
    std::vector<int> code{row[0] ? 1 : 0};
    int start = 0;
    for (int c = 1; c <= columns; ++c)
      if (c == columns || (row[c] != 0) != (row[start] != 0)) {
        code.push_back(c - start);
        start = c;
      }
    if (r > 0 && code == previous) {
      out << "2\n";
      continue;
    }
    for (size_t k = 0; k < code.size(); ++k) out << (k ? " " : "") << code[k];
    out << "\n";
    previous = code;
  }
  return static_cast<bool>(out);
}
