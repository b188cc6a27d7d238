// The ".map" height raster through Trl_Heightfield, which maps a real file. Input: byte 0
// gives the file's length in pages beyond the first (bits 0-6) and whether it ends one byte
// short (bit 7); then the text of page 0 up to a zero byte; the bytes after it start page 1.
#include <cstdint>
#include <string>

#include "fuzz/fuzz_support.h"
#include "raster/Trl_Heightfield.h"

namespace {

std::string map_file_bytes(const std::uint8_t* data, size_t size) {
  if (size == 0) return std::string();
  size_t pages = data[0] & 0x7f;
  bool short_by_one = data[0] & 0x80;
  std::string rest(reinterpret_cast<const char*>(data + 1), size - 1);
  size_t zero = rest.find('\0');
  std::string head = rest.substr(0, zero), tiles = zero == std::string::npos ? "" : rest.substr(zero + 1);
  if (head.size() > 4096) head.resize(4096);
  std::string file = head;
  file.resize(4096, '\0');
  file += tiles;
  if (file.size() < 4096 * (pages + 1)) file.resize(4096 * (pages + 1), '\0');
  if (short_by_one) file.pop_back();
  return file;
}

// Every cell of an accepted raster, and the last entry of its last tile, lie in the view.
void check_accepted(const Trl_Heightfield& h) {
  const Trl_MappedMatrixT<short, double>& m = *h.matrix;
  FUZZ_CHECK(m.rows > 1 && m.columns > 1);
  FUZZ_CHECK(h.grid.nx == m.columns && h.grid.ny == m.rows);
  std::uint64_t last = m.entry(m.tiles_across * 64 - 1, m.tiles_down * 32 - 1);
  FUZZ_CHECK(4096 + 2 * (last + 1) <= m.mapping.mapped_bytes());
  int sum = 0;
  for (std::uint32_t r : {0u, m.rows / 2, m.rows - 1})
    for (std::uint32_t c : {0u, m.columns / 2, m.columns - 1}) sum += h.height(static_cast<int>(c), static_cast<int>(r));
  (void)sum;
  FUZZ_CHECK(h.view_x1 >= 0 && h.view_y1 >= 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  const std::string path = fuzz::scratch_path(".map");
  fuzz::write_file(path, map_file_bytes(data, size));
  {
    Trl_Heightfield field(path);
    if (field.valid)
      check_accepted(field);
    else
      FUZZ_CHECK(field.matrix == nullptr);
  }
  std::remove(path.c_str());
  return 0;
}
