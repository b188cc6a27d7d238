// Trl_Imt2000Generator: one snapshot of active IMT-2000 users from the traffic record. Per
// polygon it turns call rates, penetration and density into the mean number of active users
// per bearer outdoors (street environments) and indoors (building environments), draws each
// count from a Poisson law, and places that many tries uniformly in the polygon's bounding
// box; a try counts only inside the polygon and on the right class of place, so the box
// area in the means makes up for the tries lost outside the polygon.
#pragma once

#include <iostream>

#include "network/Trl_Imt2000Snapshot.h"
#include "toolkit/point.h"
#include "toolkit/random_source.h"

class Trl_Imt2000Traffic;
class Trl_Terrain;

class Trl_Imt2000Generator {
 public:
  static const int services = 6;
  static const int bearers = 7;
  // Means above this many users are drawn as this many, so that absurd densities in a file
  // cannot stall the program.
  static constexpr double largest_mean = 1e6;

  // Draws come from the traffic source, the class of a place without terrain from the
  // application source (both long-lived, see Trl_RandomRegion). Diagnostic lines go to log.
  Trl_Imt2000Generator(Trl_Imt2000Traffic& traffic, const Trl_Terrain* terrain, std::ostream& log = std::cout);

  // All polygons in file order. Updates the record's `current_polygon`, `scale` and `density`.
  Trl_Imt2000Snapshot run();

  // Share of service s carried on bearer c in the link direction.
  static double share(bool uplink, int s, int c);
  // Poisson draw by unit-rate arrivals; a mean below 1 is drawn at a thousand times its size
  // and scaled back, rounding up with the chance of the remainder.
  static double poisson(double mean, tk::random_source& source);

 private:
  struct box {
    double xmin, xmax, ymin, ymax;
  };
  void polygon_step(int p, Trl_Imt2000Snapshot& result);
  void set_densities(int p);
  void counts(int p, double area, double outdoor[bearers], double indoor[bearers]);
  void add_environment(int e, double area, double acc[services][bearers]) const;
  void totals(const double acc[services][bearers], double count[bearers]);
  int place(const box& b, int c, bool indoor, double tries, Trl_Imt2000Snapshot& result);
  bool is_indoor(const tk::point& p);

  Trl_Imt2000Traffic& traffic;
  const Trl_Terrain* terrain;
  std::ostream& log;
  tk::random_source& source;
};
