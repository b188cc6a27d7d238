// The body shared by the two IMT-2000 targets: one ".ent" file through one of the record's
// readers (check and parse) on a fresh record. A file the check refuses leaves the record
// as it was; every polygon of an accepted one can be asked for.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "fuzz/fuzz_support.h"
#include "network/Trl_Imt2000Traffic.h"
#include "toolkit/directory.h"

namespace fuzz {

inline int read_ent(const std::uint8_t* data, size_t size, int (Trl_Imt2000Traffic::*read)(const tk::string&)) {
  const std::string path = scratch_path(".ent");
  write_file(path, std::string(reinterpret_cast<const char*>(data), size));
  Trl_Imt2000Traffic traffic;
  const Trl_Imt2000Traffic before;
  const int result = (traffic.*read)(tk::to_drive_path(path));
  FUZZ_CHECK(result == 0 || result == 1);
  if (result == 1) {
    FUZZ_CHECK(traffic.error.str() == "Incorrect Input File Format");
    FUZZ_CHECK(std::memcmp(traffic.Rp, before.Rp, sizeof before.Rp) == 0);
    FUZZ_CHECK(std::memcmp(traffic.Lambda, before.Lambda, sizeof before.Lambda) == 0);
    FUZZ_CHECK(traffic.poligono == before.poligono);
  }
  FUZZ_CHECK(traffic.poligono >= 0);
  for (int p = 0; p < traffic.poligono && p < 64; ++p) (void)traffic.polygon_vertices(p);
  std::remove(path.c_str());
  return 0;
}

}  // namespace fuzz
