#include "propagation/Trl_Wang.h"

Trl_Wang::Trl_Wang(double a, double b, double c) : a(a), b(b), c(c) {}

double Trl_Wang::gain(const Trl_Tx&, const Trl_Rx&) { return 1.0; }

tk::string Trl_Wang::description() { return tk::string(""); }
