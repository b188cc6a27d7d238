// The grid form of ".drd" through Trl_RxGridDistribution, then a sample of its users.
#include <cstdint>
#include <sstream>
#include <string>

#include "fuzz/fuzz_support.h"
#include "network/Trl_RxGridDistribution.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  Trl_RxGridDistribution* d = new Trl_RxGridDistribution(in);
  if (d->valid) {
    const Trl_MatrixT<unsigned short, double>& m = *d->matrix;
    FUZZ_CHECK(m.columns >= 2 && m.rows >= 2 && d->grid.nx == m.columns && d->grid.ny == m.rows);
    FUZZ_CHECK(d->low <= d->high && d->total >= 0);
    // Sampling a few per cent keeps a run quick whatever the counts.
    if (d->total < 200000) {
      tk::list<Trl_Rx> users;
      Trl_RxTemplate values{1.5, 5, 5, 5, 0.125, 1e-6, 1, 1, 12.2, 12.2};
      d->sample(users, nullptr, 0.01, false, values);
    }
  } else {
    FUZZ_CHECK(d->matrix == nullptr || d->total == 0);
  }
  d->unref();
  return 0;
}
