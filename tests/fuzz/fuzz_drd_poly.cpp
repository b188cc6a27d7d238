// The polygon form of ".drd" through Trl_RxPolyDistribution. Its users are not sampled
// here: a draw inside a polygon repeats without limit, so a sliver polygon of a huge bounding
// box keeps a sample busy for as long as it takes, by design.
#include <cstdint>
#include <sstream>
#include <string>

#include "fuzz/fuzz_support.h"
#include "network/Trl_RxPolyDistribution.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  Trl_RxPolyDistribution* d = new Trl_RxPolyDistribution(in);
  if (d->valid) {
    FUZZ_CHECK(d->polygons.size() == d->values.size() && d->polygons.size() > 0);
    FUZZ_CHECK(d->low <= d->high && d->total >= 0);
    for (const tk::polygon& p : d->polygons) FUZZ_CHECK(p.size() >= 4);
  }
  d->unref();
  return 0;
}
