#include "network/Trl_Imt2000Generator.h"

#include <cmath>

#include "network/Trl_Imt2000Traffic.h"
#include "network/Trl_RandomRegion.h"
#include "raster/Trl_Terrain.h"

namespace {

typedef Trl_Imt2000Traffic T;

// Which urban environment each selector quien[1..4] turns on, with its reference density
// (users per km2). The third and fourth pair crosswise with the record's defaults (180000
// for "Negocios", 380 for "Domestico"); planners' files are written for this pairing.
const int urban_environment[4] = {T::pedestrian, T::vehiculos, T::negocios, T::domestico};
const double urban_density[4] = {108000, 2780, 380, 180000};

}  // namespace

Trl_Imt2000Generator::Trl_Imt2000Generator(Trl_Imt2000Traffic& traffic_, const Trl_Terrain* terrain_,
                                           std::ostream& log_)
    : traffic(traffic_), terrain(terrain_), log(log_), source(Trl_RandomRegion::traffic_source()) {}

double Trl_Imt2000Generator::share(bool uplink, int s, int c) {
  // Services 3 to 5 ride the same bearers both ways; 0 to 2 use the wider downlink ones.
  static const double up[services][bearers] = {{0, 0, 0, 0, 1, 0, 0},   {0, 0, 0, 0, 1, 0, 0},
                                               {0, 0, 0, 0, 1, 0, 0},   {0, 0, 0.5, 0.5, 0, 0, 0},
                                               {0, 1, 0, 0, 0, 0, 0},   {1, 0, 0, 0, 0, 0, 0}};
  static const double down[services][bearers] = {{0, 0, 0, 0, 0, 0, 1},   {0, 0, 0, 0, 0, 0.5, 0.5},
                                                 {0, 0, 0, 0, 1, 0, 0},   {0, 0, 0.5, 0.5, 0, 0, 0},
                                                 {0, 1, 0, 0, 0, 0, 0},   {1, 0, 0, 0, 0, 0, 0}};
  return uplink ? up[s][c] : down[s][c];
}

double Trl_Imt2000Generator::poisson(double mean, tk::random_source& random) {
  if (mean > largest_mean) mean = largest_mean;
  const bool small = mean < 1;
  if (small) mean *= 1000;
  double k = -1, t = 0, r = 0;
  while (t < mean) {
    k += 1;
    random >> r;
    t -= std::log(r);
  }
  if (!small) return k;
  k /= 1000;
  random >> r;
  return r < k ? std::ceil(k) : std::floor(k);
}

Trl_Imt2000Snapshot Trl_Imt2000Generator::run() {
  Trl_Imt2000Snapshot result;
  result.longit = traffic.uplink ? 5 : 7;
  for (int c = 0; c < result.longit; ++c) result.rates[c] = traffic.Rp[c] * traffic.Ep[c];
  for (int p = 0; p < traffic.poligono; ++p) polygon_step(p, result);
  log << "n=" << result.n << "\n" << "longit=" << result.longit << "\n";
  if (result.n == 0) log << "n==0??\n";
  return result;
}

void Trl_Imt2000Generator::polygon_step(int p, Trl_Imt2000Snapshot& result) {
  traffic.current_polygon = tk::polygon(traffic.polygon_vertices(p), 2);
  box b = {0, 0, 0, 0};
  bool first = true;
  for (const tk::point& v : traffic.current_polygon.vertices()) {
    if (first || v.xcoord() < b.xmin) b.xmin = v.xcoord();
    if (first || v.xcoord() > b.xmax) b.xmax = v.xcoord();
    if (first || v.ycoord() < b.ymin) b.ymin = v.ycoord();
    if (first || v.ycoord() > b.ymax) b.ymax = v.ycoord();
    first = false;
  }
  set_densities(p);
  double outdoor[bearers] = {0}, indoor[bearers] = {0};
  counts(p, (b.xmax - b.xmin) * (b.ymax - b.ymin), outdoor, indoor);
  double expected = 0;
  for (int c = 0; c < bearers; ++c) {
    log << "int " << c << " " << indoor[c] << "\n" << "ext " << c << " " << outdoor[c] << "\n";
    expected += static_cast<long long>(indoor[c]) + static_cast<long long>(outdoor[c]);
  }
  log << "n_e " << static_cast<long long>(2 * expected) << "\n";
  if (expected == 0) log << "n==0??\n";
  int placed = 0;
  for (int c = 0; c < bearers; ++c) {
    placed += place(b, c, false, outdoor[c], result);
    placed += place(b, c, true, indoor[c], result);
  }
  if (placed == 0) log << "n==0??\n";
}

// A rural or suburban polygon sets its environment's density outright; an urban one scales
// the reference densities of its selected environments so that they add up to its own.
void Trl_Imt2000Generator::set_densities(int p) {
  const int kind = traffic.quien(p, 0);
  if (kind == 3 || kind == 2) {
    traffic.density[kind == 3 ? T::rural : T::suburban] = traffic.densidad[p];
    traffic.scale = 1;
    return;
  }
  double sum = 0;
  for (int k = 0; k < 4; ++k)
    if (traffic.quien(p, k + 1) == 1) sum += urban_density[k];
  traffic.scale = traffic.densidad[p] / sum;  // no selection: not finite, and nothing uses it
  if (kind != 1) return;
  for (int k = 0; k < 4; ++k)
    if (traffic.quien(p, k + 1) == 1) traffic.density[urban_environment[k]] = traffic.scale * urban_density[k];
}

// Street environments feed the outdoor counts and building environments the indoor ones;
// rural and suburban polygons give one set of counts to both.
void Trl_Imt2000Generator::counts(int p, double area, double outdoor[bearers], double indoor[bearers]) {
  double acc[services][bearers] = {{0}};
  const int kind = traffic.quien(p, 0);
  if (kind == 3 || kind == 2) {
    add_environment(kind == 3 ? T::rural : T::suburban, area, acc);
    totals(acc, outdoor);
    for (int c = 0; c < bearers; ++c) indoor[c] = outdoor[c];
    return;
  }
  for (int k = 0; k < 4; k += 2) {
    bool added = false;
    for (int e = k; e < k + 2; ++e)
      if (traffic.quien(p, e + 1) == 1) {
        add_environment(urban_environment[e], area, acc);
        added = true;
      }
    if (added) totals(acc, k == 0 ? outdoor : indoor);
    for (auto& row : acc)
      for (double& a : row) a = 0;
  }
}

// Mean active users of environment e per service and bearer in the area (m2), added to acc.
void Trl_Imt2000Generator::add_environment(int e, double area, double acc[services][bearers]) const {
  const T& t = traffic;
  for (int s = 0; s < services; ++s) {
    double busy;  // Erlang per user of the service at the busy hour
    if (s >= 3) {
      busy = t.Lambda[e][s] * t.Occupancy[s] * t.Average_Call_Dur[s] / 3600;
    } else {
      double volume = t.BitRate_DL[s] * t.Average_Call_Dur[s] * t.Occupancy[s];
      if (traffic.uplink) volume *= t.F_Asym[s];
      double rate = 0;
      for (int c = 0; c < bearers; ++c) rate += share(t.uplink, s, c) * t.Rp[c] * t.Ep[c];
      const double duration = volume / rate;  // s on the bearer
      busy = t.Lambda[e][s] * volume / (duration * 3600);
    }
    const double users = t.density[e] * t.Penetration_Rate[e][s] / 1000000 * area;
    for (int c = 0; c < bearers; ++c) acc[s][c] += busy * share(t.uplink, s, c) * users;
  }
}

void Trl_Imt2000Generator::totals(const double acc[services][bearers], double count[bearers]) {
  for (int c = 0; c < bearers; ++c) {
    count[c] = 0;
    for (int s = 0; s < services; ++s)
      if (acc[s][c] > 0) count[c] += poisson(acc[s][c], source);
  }
}

// Each try lands once; one that misses the polygon or the class of place is lost.
int Trl_Imt2000Generator::place(const box& b, int c, bool indoor, double tries, Trl_Imt2000Snapshot& result) {
  const T& t = traffic;
  const tk::polygon& area = t.current_polygon;
  int placed = 0;
  for (double k = 0; k < tries; ++k) {
    double u, v;
    source >> u;
    source >> v;
    const tk::point p(b.xmin + (b.xmax - b.xmin) * u, b.ymin + (b.ymax - b.ymin) * v);
    if (is_indoor(p) != indoor || area.orientation() != 1 || area.side_of(p) < 0) continue;
    // High downlink bearers ride a bearer-4 uplink.
    const int up = !t.uplink && c > 4 ? 4 : c;
    result.positions.push_back(p.xcoord());
    result.positions.push_back(p.ycoord());
    result.bearers.push_back(up);
    result.bearers.push_back(c);
    result.ebno.push_back(indoor ? t.Eb_NoUP_In[up] : t.Eb_NoUP_Out[up]);
    result.ebno.push_back(indoor ? t.Eb_NoDL_In[c] : t.Eb_NoDL_Out[c]);
    result.n += 2;
    ++placed;
  }
  return placed;
}

// Indoors means off the streets of the terrain; without one, 30 percent of places.
bool Trl_Imt2000Generator::is_indoor(const tk::point& p) {
  if (terrain) return !terrain->is_open(p);
  double r;
  Trl_RandomRegion::application_source() >> r;
  return r > 0.7;
}
