// The IMT-2000 "Entrada" file through Trl_Imt2000Traffic::read_entrada.
#include "fuzz/fuzz_ent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  return fuzz::read_ent(data, size, &Trl_Imt2000Traffic::read_entrada);
}
