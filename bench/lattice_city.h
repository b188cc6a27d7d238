// A synthetic city of 3 km by 3 km for the search benchmarks: base stations on a regular
// grid, users by a fixed linear congruential walk, so that every run sees the same plan and
// the searches have work to do. The simple model's table is prepared with the downlink step on.
#pragma once

#include <cmath>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "search/Trl_Assigner.h"

struct LatticeCity {
  tk::list<Trl_Tx> tx;
  tk::list<Trl_Rx> rx;
  Trl_Assigner assigner;
  LatticeCity(int stations, int users, double rate) {
    const int side = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(stations))));
    for (int t = 0; t < stations; ++t) {
      const double x = 3000.0 * (t % side + 0.5) / side, y = 3000.0 * (t / side + 0.5) / side;
      tx.append(Trl_Tx(tk::d3_point(x, y, 30), tk::string("BS%04d", t), t, 20, 2, 1,
                       std::pow(10.0, 0.9), std::pow(10.0, 0.5), 0.4, 0));
    }
    unsigned state = 12345;
    auto next = [&state]() {
      state = state * 1103515245u + 12345u;
      return (state >> 8) / double(1 << 24);
    };
    for (int r = 0; r < users; ++r)
      rx.append(Trl_Rx(tk::d3_point(3000 * next(), 3000 * next(), 1.5), r, std::pow(10.0, 1.0),
                       std::pow(10.0, 0.55), std::pow(10.0, 0.9), std::pow(10.0, -0.9), 1e-8,
                       std::pow(10.0, -0.3), 0.66, rate, rate, 0));
    Trl_Assigner::parameters p;
    p.validate_downlink = true;
    Trl_Motorola model(32.2, 35.1);
    assigner.prepare(tx, rx, p, model);
  }
};
