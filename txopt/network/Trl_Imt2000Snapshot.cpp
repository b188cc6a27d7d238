#include "network/Trl_Imt2000Snapshot.h"

void Trl_Imt2000Snapshot::write(std::ostream& out) const {
  for (int k = 0; k < users(); ++k)
    out << "(x,y)=(" << x(k) << "," << y(k) << "), (i,j)=(" << bearers[2 * k] << "," << bearers[2 * k + 1]
        << "), (u,d)=(" << ebno[2 * k] << "," << ebno[2 * k + 1] << ")\n";
}
