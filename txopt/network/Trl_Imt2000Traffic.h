// Trl_Imt2000Traffic: the IMT-2000 traffic model as read from its two ".ent" files: six
// services (s, 0 to 5) in six environments, seven radio bearers (c, 0 to 6) and the polygons
// of the plan. One record lives for the whole program, so values stay from one run to the
// next; a file read overwrites only what it reaches. Rates in kbit/s, Eb/N0 linear (dB in
// the file), densities in users per km2, coordinates in m.
#pragma once

#include "toolkit/array.h"
#include "toolkit/array2.h"
#include "toolkit/list.h"
#include "toolkit/point.h"
#include "toolkit/polygon.h"
#include "toolkit/string.h"

class Trl_Imt2000Traffic {
 public:
  static const int services = 6;
  static const int bearers = 7;
  static const int environments = 6;
  // Environments in the order of the "Entrada" file.
  enum environment { pedestrian, vehiculos, negocios, domestico, suburban, rural };

  tk::string entrada_file;
  tk::string datos_file;
  tk::string error;  // text of the last failure, for the caller to show
  bool uplink;       // "Enlace=Uplink"
  tk::polygon current_polygon;
  int poligono;                // number of polygons
  tk::array<int> vertices;     // per polygon
  tk::list<tk::point> points;  // the vertices of all polygons, one after the other
  tk::array2<int> quien;       // per polygon 5 selectors: [0] 1 urban, 2 suburban, 3 rural
  tk::array<double> densidad;  // per polygon, users per km2
  double scale;
  double Lambda[environments][services];  // calls per hour
  double Occupancy[services];
  double Average_Call_Dur[services];  // s
  double Rp[bearers];                 // kbit/s
  double Eb_NoUP_In[bearers];         // linear
  double Eb_NoDL_In[bearers];
  double Eb_NoUP_Out[bearers];
  double Eb_NoDL_Out[bearers];
  double Ep[bearers];  // factor on Rp
  double BitRate_DL[services];
  double F_Asym[services];
  double density[environments];  // users per km2
  double Penetration_Rate[environments][services];

  // The built-in defaults: one square polygon of 1 km2 with all four urban environments.
  Trl_Imt2000Traffic();

  // The one record of the program.
  static Trl_Imt2000Traffic& instance();

  // Checks then parses a file: 0 when read, 1 when the check failed (the record is
  // untouched), 2 when the file could not be opened for the parse. `error` says why.
  int read_entrada(const tk::string& path);
  int read_datos(const tk::string& path);

  // The vertices of polygon p, taken from `points` after those of the polygons before it;
  // fewer when `points` runs out.
  tk::list<tk::point> polygon_vertices(int p) const;
};
