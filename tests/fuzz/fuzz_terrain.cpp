// Trl_Terrain::load joining a ".map" and the ".urb" beside it, by a drive path as the
// planner gives it. Input: byte 0 the extra zero pages of the ".map" (bits 0-6), bytes 1-2
// the length of its page 0 text (little-endian), that text, then the whole ".urb".
#include <cstdint>
#include <string>

#include "fuzz/fuzz_support.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/directory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  if (size < 3) return 0;
  size_t pages = data[0] & 0x7f;
  size_t head = (data[1] | (data[2] << 8)) % 4097;
  if (head > size - 3) head = size - 3;
  std::string map(reinterpret_cast<const char*>(data + 3), head);
  map.resize(4096 * (pages + 1), '\0');
  std::string urb(reinterpret_cast<const char*>(data + 3 + head), size - 3 - head);
  const std::string map_path = fuzz::scratch_path(".map");
  std::string urb_path = map_path.substr(0, map_path.size() - 4) + ".urb";
  fuzz::write_file(map_path, map);
  fuzz::write_file(urb_path, urb);
  {
    Trl_Terrain terrain;
    int messages = 0;
    terrain.load(tk::to_drive_path(map_path), [&](const tk::string&) { ++messages; });
    // Both rasters, or neither and a message.
    FUZZ_CHECK((terrain.heightfield == nullptr) == (terrain.clutter == nullptr));
    if (terrain.loaded()) {
      FUZZ_CHECK(messages == 0);
      const Trl_Grid& g = terrain.grid;
      FUZZ_CHECK(g.nx >= 1 && g.ny >= 1);
      // The common rectangle lies in the height raster and, shifted, in the clutter.
      for (tk::point p : {tk::point(g.x0, g.y0), tk::point(g.x1, g.y1)}) {
        int i = terrain.height_grid().column_of(p), j = terrain.height_grid().row_of(p);
        FUZZ_CHECK(i >= 0 && j >= 0 && i < static_cast<int>(terrain.height_grid().nx) &&
                   j < static_cast<int>(terrain.height_grid().ny));
        (void)terrain.height(i, j);
        if (terrain.in_clutter(i, j)) (void)terrain.is_open(i, j);
      }
    }
  }
  std::remove(map_path.c_str());
  std::remove(urb_path.c_str());
  return 0;
}
