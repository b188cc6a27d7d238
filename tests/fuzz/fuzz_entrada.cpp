// The IMT-2000 "Entrada" file through Trl_Imt2000Traffic::read_entrada, check and parse, on a
// fresh record. A file the check refuses leaves the record as it was.
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/fuzz_support.h"
#include "network/Trl_Imt2000Traffic.h"
#include "toolkit/directory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  const std::string path = fuzz::scratch_path(".ent");
  fuzz::write_file(path, std::string(reinterpret_cast<const char*>(data), size));
  Trl_Imt2000Traffic traffic;
  const Trl_Imt2000Traffic before;
  int result = traffic.read_entrada(tk::to_drive_path(path));
  FUZZ_CHECK(result == 0 || result == 1);
  if (result == 1) {
    FUZZ_CHECK(traffic.error.str() == "Incorrect Input File Format");
    FUZZ_CHECK(std::memcmp(traffic.Rp, before.Rp, sizeof before.Rp) == 0);
    FUZZ_CHECK(std::memcmp(traffic.Lambda, before.Lambda, sizeof before.Lambda) == 0);
    FUZZ_CHECK(traffic.poligono == before.poligono);
  }
  // Every polygon's vertices can be asked for.
  FUZZ_CHECK(traffic.poligono >= 0);
  for (int p = 0; p < traffic.poligono && p < 64; ++p) (void)traffic.polygon_vertices(p);
  std::remove(path.c_str());
  return 0;
}
