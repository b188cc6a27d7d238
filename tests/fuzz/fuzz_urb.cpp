// The ".urb" clutter raster through Trl_Clutter, read from a stream as the terrain loader does.
#include <cstdint>
#include <sstream>
#include <string>

#include "fuzz/fuzz_support.h"
#include "raster/Trl_Clutter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  Trl_Clutter clutter(in);
  if (!clutter.valid) return 0;
  FUZZ_CHECK(clutter.rows > 0 && clutter.columns > 0 && clutter.columns <= 65535);
  FUZZ_CHECK(clutter.grid.nx == clutter.columns && clutter.grid.ny == clutter.rows);
  // An accepted raster answers every cell of its grid; row 0 may be one that has no runs.
  std::uint32_t step_r = clutter.rows > 64 ? clutter.rows / 64 : 1, step_c = clutter.columns > 64 ? clutter.columns / 64 : 1;
  int built = 0;
  for (std::uint32_t r = 0; r < clutter.rows; r += step_r)
    for (std::uint32_t c = 0; c < clutter.columns; c += step_c) built += clutter.built(static_cast<int>(c), static_cast<int>(r));
  built += clutter.built(static_cast<int>(clutter.columns - 1), static_cast<int>(clutter.rows - 1));
  (void)built;
  return 0;
}
