#include "raster/Trl_CoverageRaster.h"

Trl_CoverageRaster::Trl_CoverageRaster(const Trl_Grid& g)
    : refCount(1), matrix(g.ny, g.nx), legend(false, 14, 50, 10), grid(g) {}

void Trl_CoverageRaster::release() {
  if (--refCount == 0) delete this;
}
