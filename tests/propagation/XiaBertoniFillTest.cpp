// The table of path gains filled by the solver with the Xia-Bertoni model: with a terrain
// the users are taken in angular order round each base station, and the table must equal,
// bit for bit, the one a plain double loop over the same model gives, each gain in the
// column of the user's number.
#include <gtest/gtest.h>
#include "support/TestFolder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "network/Trl_TxBitvector.h"
#include "propagation/Trl_XiaBertoni.h"
#include "raster/RasterFiles.h"
#include "raster/Trl_Terrain.h"
#include "search/Trl_Assigner.h"
#include "toolkit/directory.h"
#include "toolkit/list.h"

namespace fs = std::filesystem;

namespace {

const int columns = 48, rows = 40;
const double cell = 5;  // m

bool block(int c, int r) { return c % 8 >= 2 && c % 8 <= 5 && r % 8 >= 3 && r % 8 <= 6; }
short height(int c, int r) { return static_cast<short>((c + r) / 10 + (block(c, r) ? 8 + (c * 7 + r * 3) % 15 : 0)); }

class AngularFill : public testing::Test {
 protected:
  // The building raster over the first `width` columns: each row as runs of equal bits,
  // starting with the value of column 0.
  void write_clutter(int width) const {
    std::ostringstream urb;
    urb << "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 5\n" << rows << " " << width << "\n";
    for (int r = 0; r < rows; ++r) {
      urb << (block(0, r) ? 1 : 0);
      int run = 1;
      for (int c = 1; c <= width; ++c) {
        if (c < width && block(c, r) == block(c - 1, r)) {
          ++run;
          continue;
        }
        urb << " " << run;
        run = 1;
      }
      urb << "\n";
    }
    raster_files::write_text((dir / "city.urb").string(), urb.str());
  }

  // The city's rasters as they stand in the folder, as a new terrain.
  Trl_Terrain* load_city() const {
    Trl_Terrain* t = new Trl_Terrain;
    testing::internal::CaptureStdout();
    t->load(tk::to_drive_path((dir / "city.map").string()), [](const tk::string& s) { ADD_FAILURE() << s.str(); });
    testing::internal::GetCapturedStdout();
    return t;
  }

  void SetUp() override {
    dir = test_folder("celvane_xb_fill");
    fs::remove_all(dir);
    fs::create_directories(dir);
    raster_files::write_map((dir / "city.map").string(), rows, columns,
                            [](unsigned c, unsigned r) { return height(static_cast<int>(c), static_cast<int>(r)); },
                            "xlc 0 ylc 0 gridsize 5 minimum 0 maximum 100");
    write_clutter(columns);
    terrain = load_city();
    ASSERT_TRUE(terrain->loaded());

    // Base stations in streets, on roofs, on the border and one off the terrain; their
    // cells are left at 0, 0 for the fill to set.
    const double spots[][3] = {{52, 101, 30}, {20, 25, 25}, {0, 2, 35}, {235, 190, 20}, {-30, 90, 30}, {118, 62, 6}};
    for (const auto& s : spots) {
      Trl_Tx tx;
      tx.position = tk::d3_point(s[0], s[1], s[2]);
      tx.number = static_cast<int>(stations.size());
      stations.append(tx);
    }
    // Users on cells all over the terrain, the border included, one in the cell of the first
    // base station (a line of one cell), numbered in a shuffled order.
    std::mt19937 draw(7);
    std::vector<int> numbers(400);
    for (int k = 0; k < 400; ++k) numbers[k] = k;
    std::shuffle(numbers.begin(), numbers.end(), draw);
    for (int k = 0; k < 400; ++k) {
      Trl_Rx rx;
      const double x = k < 8 ? (k % 2) * (columns - 1) * cell : std::uniform_real_distribution<double>(0, 235)(draw);
      const double y = k < 8 ? (k / 2 % 4) * (rows - 1) * cell / 3 : std::uniform_real_distribution<double>(0, 195)(draw);
      rx.position = k == 8 ? tk::d3_point(51, 100, 1.5) : tk::d3_point(x, y, k % 5 == 0 ? 4.5 : 1.5);
      rx.number = numbers[k];
      rx.set_cell(terrain->height_grid());
      users.append(rx);
    }
  }
  void TearDown() override {
    terrain->release();
    fs::remove_all(dir);
  }

  Trl_XiaBertoni model(Trl_Terrain* t, double radius = 1500) const {
    return Trl_XiaBertoni(t, 2, radius, 0.95, true, 5.5225, 1.8, 32.2, 35.1, 15.8493192);
  }

  // The plain double loop: each base station with its cell on the height grid, each user in
  // list order.
  std::vector<std::vector<double>> plain_table(Trl_Terrain* t, double radius = 1500) const {
    Trl_XiaBertoni m = model(t, radius);
    std::vector<std::vector<double>> table;
    for (Trl_Tx tx : stations) {
      if (t) tx.set_cell(t->height_grid());
      std::vector<double> row(users.size());
      for (const Trl_Rx& rx : users) row[rx.number] = m.gain(tx, rx);
      table.push_back(row);
    }
    return table;
  }

  void expect_same_bits(const Trl_Assigner& a, const std::vector<std::vector<double>>& expected) const {
    ASSERT_EQ(a.path_gain.rows(), static_cast<int>(expected.size()));
    ASSERT_EQ(a.path_gain.columns(), static_cast<int>(users.size()));
    int differ = 0, not_finite = 0;
    for (int t = 0; t < a.path_gain.rows(); ++t)
      for (int r = 0; r < a.path_gain.columns(); ++r) {
        const double got = a.path_gain(t, r);
        differ += std::memcmp(&got, &expected[t][r], sizeof got) != 0;
        not_finite += !std::isfinite(got) || !(got > 0);
      }
    EXPECT_EQ(differ, 0);
    EXPECT_EQ(not_finite, 0);
  }

  fs::path dir;
  Trl_Terrain* terrain = nullptr;
  tk::list<Trl_Tx> stations;
  tk::list<Trl_Rx> users;
};

TEST_F(AngularFill, EqualsThePlainLoopBitForBitWithProgress) {
  const std::vector<std::vector<double>> expected = plain_table(terrain);
  // The lines differ: the table is not one value repeated.
  EXPECT_NE(expected[0][0], expected[1][0]);

  Trl_XiaBertoni m = model(terrain);
  Trl_Assigner a;
  std::vector<std::string> said;
  a.prepare(stations, users, Trl_Assigner::parameters(), m, terrain,
            [&](const tk::string& s) { said.push_back(s.str()); });
  expect_same_bits(a, expected);
  ASSERT_EQ(said.size(), 6u);
  for (int k = 0; k < 6; ++k) EXPECT_EQ(said[k], " Computing pathloss: " + std::to_string(k + 1) + " of 6 done.");
  // The class-wide reference of the angular order ends on the last base station's cell:
  // (118, 62) is nearest to column 24, row 12.
  EXPECT_EQ(Trl_Rx::reference_i, 24);
  EXPECT_EQ(Trl_Rx::reference_j, 12);
  // The caller's list keeps its cells.
  EXPECT_EQ(stations.head().cell_i, 0);
  EXPECT_EQ(stations.tail().cell_j, 0);

  EXPECT_EQ(terrain->refCount, 2);  // the test's and the model's

  // With a short radius most pairs take the far law, which the fill computes on the distance
  // it sorted by.
  const std::vector<std::vector<double>> far = plain_table(terrain, 60);
  Trl_XiaBertoni short_range = model(terrain, 60);
  Trl_Assigner b;
  b.prepare(stations, users, Trl_Assigner::parameters(), short_range, terrain);
  expect_same_bits(b, far);
}

// The pool gives the table of one thread to the bit for 2 and 7 threads: with every user
// near, with most beyond a short radius (no raster read), with a single base station (one
// row for seven threads), and with fewer users than threads. The status line counts 1 to N in
// turn, and the class-wide reference ends where one thread leaves it.
TEST_F(AngularFill, ThreadPoolGivesTheSameTable) {
  struct Case {
    double radius;
    int stations, users;
  };
  const Case cases[] = {{1500, 6, 400}, {60, 6, 400}, {1500, 1, 400}, {1500, 6, 3}};
  for (const Case& c : cases) {
    tk::list<Trl_Tx> tx;
    tk::list<Trl_Rx> rx;
    for (const Trl_Tx& t : stations)
      if (tx.size() < c.stations) tx.append(t);
    for (const Trl_Rx& r : users)
      if (r.number < c.users) rx.append(r);
    Trl_XiaBertoni m(terrain, 2, c.radius, 0.95, true, 5.5225, 1.8, 32.2, 35.1, 15.8493192);
    Trl_Assigner one;
    one.prepare(tx, rx, Trl_Assigner::parameters(), m, terrain);
    const int i = Trl_Rx::reference_i, j = Trl_Rx::reference_j;
    for (int threads : {2, 7}) {
      SCOPED_TRACE("radius " + std::to_string(c.radius) + ", " + std::to_string(c.stations) + " stations, " +
                   std::to_string(c.users) + " users, " + std::to_string(threads) + " threads");
      Trl_Assigner::terrain_fill_threads = threads;
      Trl_Assigner pooled;
      std::vector<std::string> said;
      Trl_Rx::reference_i = Trl_Rx::reference_j = -1;
      pooled.prepare(tx, rx, Trl_Assigner::parameters(), m, terrain,
                     [&](const tk::string& s) { said.push_back(s.str()); });
      Trl_Assigner::terrain_fill_threads = 1;
      ASSERT_EQ(pooled.path_gain.columns(), c.users);
      for (int t = 0; t < c.stations; ++t)
        EXPECT_EQ(std::memcmp(pooled.path_gain.row(t), one.path_gain.row(t), sizeof(double) * c.users), 0);
      ASSERT_EQ(said.size(), static_cast<size_t>(c.stations));
      for (int k = 0; k < c.stations; ++k)
        EXPECT_EQ(said[k], " Computing pathloss: " + std::to_string(k + 1) + " of " + std::to_string(c.stations) +
                               " done.");
      EXPECT_EQ(Trl_Rx::reference_i, i);
      EXPECT_EQ(Trl_Rx::reference_j, j);
    }
  }
  EXPECT_EQ(terrain->refCount, 1);  // the helpers' models are gone
}

TEST_F(AngularFill, AngularOrderIsTheOrderOfTheUserComparison) {
  // The fill sorts by each user's angle once; sorting the list by the three-way comparison
  // round the same cell must give the same sequence.
  Trl_Tx tx = stations.head();
  tx.set_cell(terrain->height_grid());
  Trl_Rx::set_reference(tx);
  tk::list<Trl_Rx> sorted(users);
  sorted.sort(compare_rx_angle);
  std::vector<int> by_list;
  for (const Trl_Rx& rx : sorted) by_list.push_back(rx.number);
  std::vector<std::pair<double, int>> keyed;
  for (const Trl_Rx& rx : users)
    keyed.emplace_back(std::atan2(rx.cell_j - tx.cell_j, rx.cell_i - tx.cell_i), rx.number);
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const std::pair<double, int>& a, const std::pair<double, int>& b) { return a.first < b.first; });
  std::vector<int> by_key;
  for (const auto& k : keyed) by_key.push_back(k.second);
  EXPECT_EQ(by_list, by_key);
}

TEST_F(AngularFill, ProfilesAreTheTerrainsOwn) {
  // The model walks both rasters at once; its profile must be the terrain's height and
  // clutter profiles cell for cell (rows here have up to 13 runs, so the clutter's own run
  // search with its quirks is in play), and its gain that of the terrain's profile. So too
  // when it keeps the cells a line shares with the one before, also when that is switched
  // on and off between lines (a line read whole leaves the kept cells stale), with the walk
  // that finds eight places at a time switched off, and when each gain starts the profile
  // of the user that follows, or of one that does not.
  Trl_XiaBertoni check = model(terrain);
  std::vector<double> heights(columns);
  Trl_TxBitvector bits(columns, true);
  std::vector<const Trl_Rx*> in_list;
  for (const Trl_Rx& rx : users) in_list.push_back(&rx);
  const int n_users = static_cast<int>(in_list.size());
  int mismatches = 0, lines = 0;
  // Counts the cells and the gain where model m, which gave g, differs from the terrain.
  auto compare = [&](const Trl_XiaBertoni& m, const Trl_Tx& tx, const Trl_Rx& rx, double g) {
    int count = 0, bit_count = 0;
    terrain->height_profile(tx.cell_i, tx.cell_j, rx.cell_i, rx.cell_j, 0.0, count, heights.data());
    terrain->clutter_profile(tx.cell_i, tx.cell_j, rx.cell_i, rx.cell_j, bit_count, bits);
    mismatches += count != bit_count;
    for (int k = 0; k < count; ++k) mismatches += m.heights[k] != heights[k] || m.bits.test(k) != bits.test(k);
    const double h = check.gain_on_profile(tx, rx, heights.data(), bits, count);
    mismatches += std::memcmp(&g, &h, sizeof g) != 0;
    ++lines;
  };
  for (int reuse : {0, 1, 2, 3, 4, 5}) {
    Trl_XiaBertoni::wide_walk = reuse != 3;
    Trl_XiaBertoni m = model(terrain);
    if (reuse != 3) m.decode_clutter_rows(0, 1);  // the wide walk takes decoded rows
    for (Trl_Tx tx : stations) {
      tx.set_cell(terrain->height_grid());
      for (int r = 0; r < n_users; ++r) {
        const Trl_Rx& rx = *in_list[r];
        m.reuse_profile_cells = reuse != 0 && (reuse != 2 || lines % 3 != 0);
        compare(m, tx, rx, reuse < 4 ? m.gain(tx, rx) : m.gain_then_prepare(tx, rx, in_list[(r + reuse - 3) % n_users]));
      }
    }
  }
  Trl_XiaBertoni::wide_walk = true;

  // A line of one cell (the ninth user stands in the first base station's cell) as the
  // first line of a model that keeps cells: its one place is read.
  Trl_XiaBertoni first = model(terrain);
  first.reuse_profile_cells = true;
  first.decode_clutter_rows(0, 1);
  Trl_Tx tx = stations.head();
  tx.set_cell(terrain->height_grid());
  const Trl_Rx& in_cell = *in_list[8];
  ASSERT_EQ(in_cell.cell_i, tx.cell_i);
  ASSERT_EQ(in_cell.cell_j, tx.cell_j);
  compare(first, tx, in_cell, first.gain(tx, in_cell));
  EXPECT_EQ(lines, 6 * 2400 + 1);
  EXPECT_EQ(mismatches, 0);
}

// A building raster over the first 30 columns only: the cells beyond it are open ground in
// the angular fill as in the plain loop.
TEST_F(AngularFill, CellsBeyondANarrowBuildingRasterAreOpen) {
  write_clutter(30);
  Trl_Terrain* narrow = load_city();
  ASSERT_TRUE(narrow->loaded());
  const std::vector<std::vector<double>> expected = plain_table(narrow);
  Trl_XiaBertoni m = model(narrow);
  Trl_Assigner a;
  a.prepare(stations, users, Trl_Assigner::parameters(), m, narrow);
  expect_same_bits(a, expected);
  narrow->release();
}

TEST_F(AngularFill, WithoutTerrainThePlainLoopAndNoProgress) {
  const std::vector<std::vector<double>> expected = plain_table(nullptr);
  Trl_XiaBertoni bare = model(nullptr);
  Trl_Assigner a;
  int said = 0;
  a.prepare(stations, users, Trl_Assigner::parameters(), bare, nullptr, [&](const tk::string&) { ++said; });
  expect_same_bits(a, expected);
  EXPECT_EQ(said, 0);
}

}  // namespace
