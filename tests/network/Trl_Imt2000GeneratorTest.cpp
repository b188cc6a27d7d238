// The IMT-2000 snapshot: counts against means worked out here from the traffic formula,
// placement, the two legs, the users handed to the planner and the "test.out" lines.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>
#include <string>

#include "app/Trl_Planner.h"
#include "network/Trl_Imt2000Generator.h"
#include "network/Trl_Imt2000Traffic.h"
#include "raster/RasterFiles.h"
#include "raster/Trl_Terrain.h"
#include "support/ErrorGuard.h"
#include "support/TestFolder.h"
#include "toolkit/directory.h"
#include "toolkit/random_source.h"

namespace fs = std::filesystem;

namespace {

// The one polygon of the record becomes the given one, with its selectors and density.
void one_polygon(Trl_Imt2000Traffic& t, std::initializer_list<tk::point> corners, std::initializer_list<int> quien,
                 double densidad) {
  t.points.clear();
  for (const tk::point& p : corners) t.points.append(p);
  t.vertices[0] = static_cast<int>(corners.size());
  int k = 0;
  for (int q : quien) t.quien(0, k++) = q;
  t.densidad[0] = densidad;
}

// Active users of one environment per bearer in `area` m2, uplink, by the traffic formula:
// a call of service s holds its bearer Lambda * Occupancy * duration / 3600 of the time
// (services 3 to 5), or Lambda * bearer rate / 3600 (0 to 2, whose call lasts its data
// volume over the rate).
void uplink_means(const Trl_Imt2000Traffic& t, int e, double density, double area, double mean[7]) {
  const int bearer_of[6][2] = {{4, 4}, {4, 4}, {4, 4}, {2, 3}, {1, 1}, {0, 0}};  // half each
  for (int s = 0; s < 6; ++s) {
    const int b = bearer_of[s][0];
    const double busy = s >= 3 ? t.Lambda[e][s] * t.Occupancy[s] * t.Average_Call_Dur[s] / 3600
                               : t.Lambda[e][s] * t.Rp[b] * t.Ep[b] / 3600;
    const double users = density * 1e-6 * area * t.Penetration_Rate[e][s];
    mean[bearer_of[s][0]] += 0.5 * busy * users;
    mean[bearer_of[s][1]] += 0.5 * busy * users;
  }
}

TEST(Imt2000Generator, CountsPerBearerIndoorsAndOutdoorsMatchTheTrafficMeans) {
  tk::random_source::fix_seed(7);
  Trl_Imt2000Traffic t;
  // Half the 1 km2 bounding box; all four urban environments at their reference densities.
  one_polygon(t, {tk::point(0, 0), tk::point(1000, 0), tk::point(0, 1000)}, {1, 1, 1, 1, 1}, 291160);
  double outdoor[7] = {0}, indoor[7] = {0};
  uplink_means(t, Trl_Imt2000Traffic::pedestrian, 108000, 1e6, outdoor);
  uplink_means(t, Trl_Imt2000Traffic::vehiculos, 2780, 1e6, outdoor);
  uplink_means(t, Trl_Imt2000Traffic::negocios, 380, 1e6, indoor);
  uplink_means(t, Trl_Imt2000Traffic::domestico, 180000, 1e6, indoor);
  const int runs = 300;
  double seen_out[7] = {0}, seen_in[7] = {0};
  std::ostringstream log;
  for (int run = 0; run < runs; ++run) {
    const Trl_Imt2000Snapshot s = Trl_Imt2000Generator(t, nullptr, log).run();
    ASSERT_EQ(s.longit, 5);
    for (int k = 0; k < s.users(); ++k) {
      ASSERT_TRUE(s.x(k) >= 0 && s.y(k) >= 0 && s.x(k) + s.y(k) <= 1000) << s.x(k) << " " << s.y(k);
      const int c = s.bearers[2 * k];
      ASSERT_EQ(s.bearers[2 * k + 1], c);
      const bool in = s.ebno[2 * k] == t.Eb_NoUP_In[c];
      EXPECT_EQ(s.ebno[2 * k + 1], in ? t.Eb_NoDL_In[c] : t.Eb_NoDL_Out[c]);
      (in ? seen_in : seen_out)[c] += 1;
    }
  }
  // Tries land in the triangle half the time, outdoors 70 and indoors 30 percent of it.
  for (int c = 0; c < 7; ++c) {
    const double want_out = 0.5 * 0.7 * outdoor[c], want_in = 0.5 * 0.3 * indoor[c];
    EXPECT_NEAR(seen_out[c] / runs, want_out, 4 * std::sqrt(want_out / runs) + 1e-9) << "outdoor bearer " << c;
    EXPECT_NEAR(seen_in[c] / runs, want_in, 4 * std::sqrt(want_in / runs) + 1e-9) << "indoor bearer " << c;
  }
  EXPECT_GT(seen_out[0] / runs, 200);  // the means are not trivially zero
}

TEST(Imt2000Generator, PoissonMeansSmallAndLarge) {
  tk::random_source source(11);
  for (double mean : {0.0004, 0.3, 1.0, 7.5, 60.0}) {
    const int draws = mean < 0.01 ? 200000 : 5000;  // a rare mean needs many draws
    double sum = 0;
    for (int k = 0; k < draws; ++k) {
      const double x = Trl_Imt2000Generator::poisson(mean, source);
      ASSERT_EQ(x, std::floor(x));
      sum += x;
    }
    EXPECT_NEAR(sum / draws, mean, 4 * std::sqrt(mean / draws)) << mean;
  }
}

// In downlink mode bearers 5 and 6 ride a bearer-4 uplink with the bearer-4 uplink Eb/N0.
TEST(Imt2000Generator, HighDownlinkBearersFallBackToBearerFourUp) {
  tk::random_source::fix_seed(3);
  Trl_Imt2000Traffic t;
  t.uplink = false;
  one_polygon(t, {tk::point(0, 0), tk::point(500, 0), tk::point(500, 500), tk::point(0, 500)}, {3, 0, 0, 0, 0},
              5e6);
  std::ostringstream log;
  const Trl_Imt2000Snapshot s = Trl_Imt2000Generator(t, nullptr, log).run();
  int high = 0;
  for (int k = 0; k < s.users(); ++k) {
    const int down = s.bearers[2 * k + 1];
    EXPECT_EQ(s.bearers[2 * k], down > 4 ? 4 : down);
    if (down <= 4) continue;
    ++high;
    const bool in = s.ebno[2 * k + 1] == t.Eb_NoDL_In[down];
    EXPECT_EQ(s.ebno[2 * k], in ? t.Eb_NoUP_In[4] : t.Eb_NoUP_Out[4]);
  }
  EXPECT_GT(high, 0);
  EXPECT_EQ(t.density[Trl_Imt2000Traffic::rural], 5e6);
  EXPECT_EQ(s.longit, 7);
  EXPECT_NE(log.str().find("n=" + std::to_string(s.n) + "\nlongit=7\n"), std::string::npos) << log.str();
}

TEST(Imt2000Generator, ACrossingPolygonIsFatal) {
  Trl_Imt2000Traffic t;
  one_polygon(t, {tk::point(0, 0), tk::point(100, 100), tk::point(100, 0), tk::point(0, 100)}, {1, 1, 1, 1, 1}, 1);
  std::ostringstream log;
  EXPECT_TK_ERROR(Trl_Imt2000Generator(t, nullptr, log).run(), 1, "POLYGON: POLYGON is not weakly simple");
}

// On a terrain a user is indoors exactly on a built cell.
TEST(Imt2000Generator, OnATerrainTheClassIsTheClutter) {
  const fs::path dir = test_folder("imt2000_terrain");
  fs::create_directories(dir);
  raster_files::write_map((dir / "t.map").string(), 10, 10, [](unsigned, unsigned) { return short(20); },
                          "xlc 0 ylc 0 gridsize 10 minimum 0 maximum 999");
  std::string urb = "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 10\n10 10\n0 3 4 3\n";
  for (int r = 1; r < 10; ++r) urb += "2\n";
  raster_files::write_text((dir / "t.urb").string(), urb);
  Trl_Terrain terrain;
  testing::internal::CaptureStdout();
  terrain.load(tk::to_drive_path((dir / "t.map").string()), [](const tk::string&) {});
  testing::internal::GetCapturedStdout();
  ASSERT_TRUE(terrain.loaded());
  tk::random_source::fix_seed(5);
  Trl_Imt2000Traffic t;
  one_polygon(t, {tk::point(0, 0), tk::point(90, 0), tk::point(90, 90), tk::point(0, 90)}, {2, 0, 0, 0, 0}, 4e6);
  std::ostringstream log;
  const Trl_Imt2000Snapshot s = Trl_Imt2000Generator(t, &terrain, log).run();
  ASSERT_GT(s.users(), 20);
  for (int k = 0; k < s.users(); ++k) {
    const int c = s.bearers[2 * k + 1];
    const bool in = s.ebno[2 * k + 1] == t.Eb_NoDL_In[c];
    EXPECT_EQ(in, !terrain.is_open(tk::point(s.x(k), s.y(k)))) << s.x(k) << " " << s.y(k);
  }
  fs::remove_all(dir);
}

TEST(Imt2000Snapshot, TestOutLines) {
  Trl_Imt2000Snapshot s;
  s.positions = {12.5, 3, 100, 200.25};
  s.bearers = {4, 6, 0, 0};
  s.ebno = {1.5, 0.25, 3.01995, 6};
  s.n = 4;
  std::ostringstream out;
  s.write(out);
  EXPECT_EQ(out.str(),
            "(x,y)=(12.5,3), (i,j)=(4,6), (u,d)=(1.5,0.25)\n"
            "(x,y)=(100,200.25), (i,j)=(0,0), (u,d)=(3.01995,6)\n");
}

TEST(Imt2000Install, UsersTakeTheirLegsAndAnEmptySnapshotChangesNothing) {
  Trl_Planner& p = planner;
  p.rx_list.clear();
  Trl_Imt2000Snapshot s;
  s.rates[4] = 27.36;
  s.rates[6] = 218.88;
  EXPECT_EQ(p.install_rx(s), 0);
  s.positions = {10, 20, 30, 5};
  s.bearers = {4, 6, 4, 4};
  s.ebno = {2, 3, 4, 5};
  s.n = 4;
  ASSERT_EQ(p.install_rx(s), 2);
  const Trl_Rx& rx = p.rx_list.head();
  EXPECT_EQ(rx.number, 0);
  EXPECT_EQ(rx.ebno_up, 2);
  EXPECT_EQ(rx.ebno_down, 3);
  EXPECT_EQ(rx.rate_up, 27.36);
  EXPECT_EQ(rx.rate_down, 218.88);
  EXPECT_EQ(rx.bearer, 4);
  EXPECT_EQ(rx.activity, 1.0);
  EXPECT_EQ(rx.position.zcoord(), p.rx_height);
  EXPECT_EQ(p.rx_box_min, tk::point(10, 5));
  EXPECT_EQ(p.rx_box_max, tk::point(30, 20));
  EXPECT_EQ(p.install_rx(Trl_Imt2000Snapshot()), 2);
  p.rx_list.clear();
}

}  // namespace
