// Test support: base stations and users with the planner's default figures (20 W, 2 W pilot,
// 1 W a channel, 9 dBi and 5 dB noise figure up; Eb/N0 10 dB down and 5.5 dB up, 12.2 kbit/s
// unless another rate is given),
// and a plan of them spread over 3 km by 3 km by a seeded generator, prepared for assignments
// under the Motorola law.
#pragma once

#include <cmath>
#include <random>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "search/Trl_Assigner.h"

inline Trl_Tx default_station(const tk::d3_point& at, int number, int status = 0) {
  return Trl_Tx(at, tk::string("BS%04d", number), number, 20, 2, 1, std::pow(10.0, 0.9), std::pow(10.0, 0.5), 0.4,
                status);
}

inline Trl_Rx default_user(const tk::d3_point& at, int number, double rate = 12.2) {
  return Trl_Rx(at, number, std::pow(10.0, 1.0), std::pow(10.0, 0.55), std::pow(10.0, 0.9), std::pow(10.0, -0.9), 1e-8,
                std::pow(10.0, -0.3), 0.66, rate, rate, 0);
}

struct RandomPlan {
  tk::list<Trl_Tx> tx;
  tk::list<Trl_Rx> rx;
  Trl_Assigner assigner;

  RandomPlan() = default;
  // n base stations (the first `fixed` of them fixed) at 30 m and m users at 1.5 m.
  RandomPlan(unsigned seed, int n, int m, int fixed = 0, bool validate_downlink = true) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> at(0, 3000);
    for (int t = 0; t < n; ++t) tx.append(default_station(tk::d3_point(at(random), at(random), 30), t, t < fixed ? 3 : 0));
    for (int r = 0; r < m; ++r) rx.append(default_user(tk::d3_point(at(random), at(random), 1.5), r));
    prepare(validate_downlink);
  }
  void prepare(bool validate_downlink = true) {
    Trl_Assigner::parameters p;
    p.validate_downlink = validate_downlink;
    Trl_Motorola model(32.2, 35.1);
    assigner.prepare(tx, rx, p, model);
  }
};
