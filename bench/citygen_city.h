// Cities made by celvane-citygen for the large-city and scaling benchmarks: each made once
// into a folder of the benchmarks' own under the temporary directory, then read with the
// stations 30 m over the ground and the users at 1.5 m with slow data (1.2 kbit/s up), each
// placed on the height grid. Also the two measures the benchmarks report beside the clock:
// the process's peak resident memory and the CPU time of the calling thread.
#pragma once

#include <sys/resource.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_XiaBertoni.h"
#include "raster/Trl_Grid.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/directory.h"

// The folder of a grid-layout city of cells by cells of `cell` m, made when its users' file
// is missing.
inline std::string citygen_folder(const std::string& name, int cells, double cell, int stations, int users) {
  const std::string dir = (std::filesystem::temp_directory_path() / name).string();
  if (!std::filesystem::exists(dir + "/mu.drx")) {
    std::filesystem::create_directories(dir);
    char size[32];
    std::snprintf(size, sizeof size, "%g", cell);
    const std::string command = std::string(CELVANE_BINARY_DIR) + "/apps/celvane-citygen --out " + dir +
                                " --cells " + std::to_string(cells) + " --cell " + size +
                                " --layout grid --stations " + std::to_string(stations) + " --users " +
                                std::to_string(users);
    if (std::system(command.c_str()) != 0) std::fprintf(stderr, "cannot make the city %s\n", name.c_str());
  }
  return dir;
}

// The terrain, base stations and users of a city folder, read from the ".dtx" and ".drx"
// records (number, x, y).
struct CitygenCity {
  Trl_Terrain* terrain = new Trl_Terrain;
  tk::list<Trl_Tx> tx;
  tk::list<Trl_Rx> rx;
  explicit CitygenCity(const std::string& dir) {
    terrain->load(tk::to_drive_path(dir + "/terrain.map"), [](const tk::string&) {});
    const Trl_Grid* grid = terrain->loaded() ? &terrain->height_grid() : nullptr;
    std::ifstream bs(dir + "/bs.dtx"), mu(dir + "/mu.drx");
    int n;
    double x, y;
    while (bs >> n >> x >> y) {
      Trl_Tx s(tk::d3_point(x, y, 30), tk::string("BS%04d", n), n, 20, 2, 1, std::pow(10.0, 0.9),
               std::pow(10.0, 0.5), 0.4, 0);
      if (grid) s.set_cell(*grid);
      tx.append(s);
    }
    while (mu >> n >> x >> y) {
      Trl_Rx u(tk::d3_point(x, y, 1.5), n, 10, std::pow(10.0, 0.55), std::pow(10.0, 0.9), std::pow(10.0, -0.9),
               1e-8, std::pow(10.0, -0.3), 0.66, 12.2, 1.2, 0);
      if (grid) u.set_cell(grid->column_of(tk::point(x, y)), grid->row_of(tk::point(x, y)));
      rx.append(u);
    }
  }
  ~CitygenCity() { terrain->release(); }
  CitygenCity(const CitygenCity&) = delete;
  CitygenCity& operator=(const CitygenCity&) = delete;

  Trl_XiaBertoni urban() const {
    return Trl_XiaBertoni(terrain, 2, 1500, 0.95, true, 5.5225, 1.8, 32.2, 35.1, 15.8493192);
  }
  double pairs() const { return static_cast<double>(tx.size()) * rx.size(); }
};

inline double peak_megabytes() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024.0;
}

// CPU seconds of the calling thread: what a one-thread stage costs, whatever else runs.
inline double thread_seconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return t.tv_sec + t.tv_nsec * 1e-9;
}
