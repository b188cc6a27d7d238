#include <gtest/gtest.h>
#include "support/TestFolder.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "network/Trl_TxBitvector.h"
#include "raster/RasterFiles.h"
#include "raster/Trl_Clutter.h"
#include "raster/Trl_Heightfield.h"
#include "raster/Trl_MappedMatrixT.h"
#include "raster/Trl_Terrain.h"
#include "support/ErrorGuard.h"
#include "toolkit/directory.h"

namespace fs = std::filesystem;
using raster_files::write_map;
using raster_files::write_text;

namespace {

class RasterFolder : public testing::Test {
 protected:
  void SetUp() override {
    dir = test_folder("celvane_raster");
    fs::remove_all(dir);
    fs::create_directories(dir);
  }
  void TearDown() override { fs::remove_all(dir); }
  std::string path(const char* name) const { return (dir / name).string(); }
  tk::string drive_path(const char* name) const { return tk::to_drive_path(path(name)); }
  fs::path dir;
};

short pattern(unsigned c, unsigned r) { return static_cast<short>(r * 100 + c); }

const char* tail = "xlc 1000 ylc 2000.0 gridsize 5e0 minimum 0 maximum 300";

TEST_F(RasterFolder, MappedMatrixReadsAcrossTileEdges) {
  write_map(path("a.map"), 33, 65, pattern, tail);
  testing::internal::CaptureStdout();
  Trl_MappedMatrixT<short, double> m(path("a.map"), 0, 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unix format\n");
  ASSERT_TRUE(m.valid);
  EXPECT_EQ(m.file_size, 20480u);
  EXPECT_EQ(m.tiles_across, 2u);
  EXPECT_EQ(m.tiles_down, 2u);
  EXPECT_EQ(m.entry(64, 32), 3u * 2048);
  for (unsigned r : {0u, 31u, 32u})
    for (unsigned c : {0u, 63u, 64u}) EXPECT_EQ(m.get(c, r), pattern(c, r)) << c << "," << r;
  EXPECT_EQ(m.get(32 * 65 + 64), pattern(64, 32));
  EXPECT_EQ(m.tail(), tail);
  EXPECT_EQ(m.header_length, 159);
}

TEST_F(RasterFolder, MappedMatrixWritesThroughAndCreates) {
  {
    testing::internal::CaptureStdout();
    Trl_MappedMatrixT<short, double> created(path("new.map"), 1, 1);
    testing::internal::GetCapturedStdout();
    ASSERT_TRUE(created.valid);
    EXPECT_EQ(created.file_size, 8192u);
    created.ref(0, 0) = -17;
  }
  EXPECT_EQ(fs::file_size(path("new.map")), 8192u);
  testing::internal::CaptureStdout();
  Trl_MappedMatrixT<short, double> again(path("new.map"), 0, 0);
  testing::internal::GetCapturedStdout();
  ASSERT_TRUE(again.valid);
  EXPECT_EQ(again.get(0, 0), -17);
  EXPECT_EQ(again.rows, 1u);
}

TEST_F(RasterFolder, MappedMatrixRefusesBadFilesWithoutReadingPastThem) {
  write_map(path("ok.map"), 2, 2, pattern, tail);
  auto valid = [&](const std::string& p, unsigned rows = 0, unsigned columns = 0) {
    testing::internal::CaptureStdout();
    Trl_MappedMatrixT<short, double> m(p, rows, columns);
    std::string said = testing::internal::GetCapturedStdout();
    return m.valid;
  };
  EXPECT_TRUE(valid(path("ok.map")));
  EXPECT_FALSE(valid(path("missing.map")));
  EXPECT_FALSE(valid(path("ok.map"), 3, 2));  // not the wanted shape
  // Shorter than one page.
  write_text(path("short.map"), "# memory mapped matrix, (C) 2001, Tarnwick Radio Labs\n");
  EXPECT_FALSE(valid(path("short.map")));
  // A header whose size lies.
  write_map(path("lie.map"), 2, 2, pattern, tail, 9999);
  EXPECT_FALSE(valid(path("lie.map")));
  // A size of 0 is accepted, but the file must hold the computed size to be mapped.
  write_map(path("zero.map"), 2, 2, pattern, tail, 0);
  EXPECT_TRUE(valid(path("zero.map")));
  fs::resize_file(path("zero.map"), 6000);
  testing::internal::CaptureStdout();
  Trl_MappedMatrixT<short, double> truncated(path("zero.map"), 0, 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unix format\ncannot map file ...\n");
  EXPECT_FALSE(truncated.valid);
  // A wrong magic.
  write_map(path("magic.map"), 2, 2, pattern, tail);
  {
    std::fstream f(path("magic.map"), std::ios::in | std::ios::out | std::ios::binary);
    f.seekp(2);
    f.put('M');
  }
  EXPECT_FALSE(valid(path("magic.map")));
}

TEST_F(RasterFolder, MappedMatrixRefusesShapesBeyondThirtyTwoBits) {
  // Each header is followed by one page of tiles; none of these shapes may be mapped.
  const struct {
    const char* rows;
    const char* columns;
  } shapes[] = {
      {"32768", "65536"},       // 2^20 tiles: the file size wraps to one page in 32 bits
      {"100000", "100000"},     // 20 GB of tiles
      {"4294967298", "2"},      // 2 in its low 32 bits
  };
  for (const auto& s : shapes) {
    std::string bytes = std::string(Trl_MappedMatrixT<short, double>::magic) + "\nfilesize           0\npagesize        4096" +
                        "\nentrysize          2\nrows      " + s.rows + "\ncolumns   " + s.columns + "\n" + tail;
    bytes.resize(8192, '\0');
    write_text(path("big.map"), bytes);
    testing::internal::CaptureStdout();
    Trl_MappedMatrixT<short, double> m(path("big.map"), 0, 0);
    testing::internal::GetCapturedStdout();
    EXPECT_FALSE(m.valid) << s.rows << " by " << s.columns;
  }
  // Nor is such a file made.
  Trl_MappedMatrixT<short, double> made(path("new.map"), 32768, 65536);
  EXPECT_FALSE(made.valid);
  EXPECT_FALSE(fs::exists(path("new.map")));
}

TEST_F(RasterFolder, WindowsLineEndsAreDetectedOneByteLate) {
  // The reader looks at offsets 54 and 55; a file with "\r\n" behind the magic has them at 53
  // and 54, so it is taken as Unix format, as the format has always been read.
  write_map(path("crlf.map"), 2, 2, pattern, "", -1, "\r\n");
  testing::internal::CaptureStdout();
  Trl_MappedMatrixT<short, double> m(path("crlf.map"), 0, 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unix format\n");
  EXPECT_TRUE(m.valid);
}

TEST_F(RasterFolder, HeightfieldReadsItsPlacingFromTheTail) {
  write_map(path("h.map"), 40, 70, pattern, tail);
  testing::internal::CaptureStdout();
  Trl_Heightfield* h = new Trl_Heightfield(path("h.map"));
  testing::internal::GetCapturedStdout();
  ASSERT_TRUE(h->valid);
  EXPECT_EQ(h->grid.x0, 1000.0);
  EXPECT_EQ(h->grid.y0, 2000.0);
  EXPECT_EQ(h->grid.dx, 5.0);
  EXPECT_EQ(h->grid.nx, 70u);
  EXPECT_EQ(h->grid.ny, 40u);
  EXPECT_EQ(h->height(65, 33), pattern(65, 33));
  EXPECT_EQ(h->view_x1, 69);
  EXPECT_EQ(h->view_y1, 39);
  EXPECT_EQ(h->legend.lowest, 0.0);
  h->set_view(-10, 0, 20, 10);
  EXPECT_EQ(h->view_x0, 0);
  EXPECT_EQ(h->view_x1, 30);
  h->set_view(60, 0, 90, 10);
  EXPECT_EQ(h->view_x0, 39);
  EXPECT_EQ(h->view_x1, 69);
  h->set_view(-5, 0, 100, 10);  // wider than the raster: the whole raster on that axis
  EXPECT_EQ(h->view_x0, 0);
  EXPECT_EQ(h->view_x1, 69);
  EXPECT_TK_ERROR(h->set_view(5, 0, 5, 10), 999, "Assertion failed in file Trl_Heightfield at line 294: x1>x0");
  h->add_reference();
  h->release();
  h->release();  // the last holder deletes it
}

TEST_F(RasterFolder, HeightfieldRefusesABadTail) {
  auto loads = [&](const char* name, unsigned rows, unsigned columns, const std::string& t) {
    write_map(path(name), rows, columns, pattern, t);
    testing::internal::CaptureStdout();
    Trl_Heightfield h(path(name));
    testing::internal::GetCapturedStdout();
    return h.valid;
  };
  EXPECT_TRUE(loads("a.map", 2, 2, tail));
  EXPECT_FALSE(loads("b.map", 2, 2, "ylc 2000 xlc 1000 gridsize 5 minimum 0 maximum 300"));
  EXPECT_FALSE(loads("c.map", 2, 2, "xlc 1000 ylc 2000 gridsize 5 minimum -1 maximum 300"));
  EXPECT_FALSE(loads("d.map", 2, 2, "xlc 1000 ylc 2000 gridsize 5 minimum 10 maximum 3"));
  EXPECT_FALSE(loads("e.map", 1, 5, tail));  // a single row is no height field
  EXPECT_TRUE(loads("f.map", 2, 2, "xlc 1e3 ylc 2000 gridsize 5 minimum 7 maximum 7"));
  EXPECT_FALSE(loads("g.map", 2, 2, "xlc 1000 ylc 2000 gridsize 5 minimum 0"));
}

TEST(Clutter, ReadsRunsSharesRowsAndAnswersCells) {
  std::istringstream in(
      "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n"
      "100 200 5\n4 6\n"
      "1 2 3 1\n"  // row 0: set set clear clear clear set
      "2\n"        // row 1: as row 0
      "0 6\n"      // row 2: all clear
      "3 6\n");    // row 3: code 3 counts as 1: all set
  Trl_Clutter c(in);
  ASSERT_TRUE(c.valid);
  EXPECT_EQ(c.grid.x0, 100.0);
  EXPECT_EQ(c.grid.nx, 6u);
  EXPECT_EQ(c.grid.ny, 4u);
  bool row0[6] = {true, true, false, false, false, true};
  for (int x = 0; x < 6; ++x) {
    EXPECT_EQ(c.built(x, 0), row0[x]) << x;
    EXPECT_EQ(c.built(x, 1), row0[x]) << x;
    EXPECT_FALSE(c.built(x, 2));
    EXPECT_TRUE(c.built(x, 3));
  }
  EXPECT_EQ(c.matrix->row_array[1].ends, c.matrix->row_array[0].ends);  // shared
  EXPECT_FALSE(c.matrix->row_array[1].owns);
}

TEST(Clutter, TheBackwardFinishOfLongRowsKeepsItsQuirks) {
  // 8 runs of 2 cells over 16 columns, first run set: run k covers 2k and 2k+1.
  std::istringstream long_row(
      "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 1\n1 16\n1 2 2 2 2 2 2 2 2\n");
  Trl_Clutter c(long_row);
  ASSERT_TRUE(c.valid);
  // Worked by hand: ends 2 4 .. 16, last 7. The binary step goes to p = 4 (end 10).
  EXPECT_TRUE(c.built(8, 0));   // ends[3] = 8 <= 8: run 4, exact
  EXPECT_FALSE(c.built(7, 0));  // backward from p 4 to 2 (6 < 7), then p 3: run 3, exact
  // Column 6 is the first of run 3 (clear): the backward finish stops at p 1 (4 < 6) and
  // steps to p 2, the run before it, which is set.
  EXPECT_TRUE(c.built(6, 0));
  // Columns 2 and 3 (run 1, clear): the walk runs down to p 0 and answers run 0, set.
  EXPECT_TRUE(c.built(3, 0));
  EXPECT_TRUE(c.built(2, 0));
  // A row of 7 runs is scanned forward and always exact.
  std::istringstream seven(
      "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 1\n1 14\n1 2 2 2 2 2 2 2\n");
  Trl_Clutter s(seven);
  ASSERT_TRUE(s.valid);
  for (int x = 0; x < 14; ++x) EXPECT_EQ(s.built(x, 0), (x / 2) % 2 == 0) << x;
}

TEST(Clutter, TheBinaryStepsOfAVeryLongRowStayOnItsRuns) {
  // 514 runs of one cell, the first set: the halving steps would reach run -1 for column 0
  // and run 515 for column 513; they stop at the first and the last run.
  std::string row = "1";
  for (int k = 0; k < 514; ++k) row += " 1";
  std::istringstream in("# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 1\n1 514\n" + row + "\n");
  Trl_Clutter c(in);
  ASSERT_TRUE(c.valid);
  EXPECT_TRUE(c.built(0, 0));
  EXPECT_FALSE(c.built(513, 0));
  // The file the fuzzer found: every cell answers without a read outside its row (the
  // sanitizer build checks that).
  std::ifstream found(std::string(CELVANE_SOURCE_DIR) + "/tests/raster/regressions/long_row_walk.urb");
  Trl_Clutter f(found);
  ASSERT_TRUE(f.valid);
  int built = 0;
  for (std::uint32_t r = 0; r < f.rows; ++r)
    for (std::uint32_t x = 0; x < f.columns; ++x) built += f.built(static_cast<int>(x), static_cast<int>(r));
  EXPECT_GT(built, 0);
}

TEST(Clutter, ARunLengthBeyondSixteenBitsIsNotTakenModulo65536) {
  // 65537 would be a run of 1; it fails the read instead, and the row ends in its first value.
  std::istringstream in("# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 5\n1 6\n1 65537 5\n");
  Trl_Clutter c(in);
  ASSERT_TRUE(c.valid);
  for (int x = 0; x < 6; ++x) EXPECT_TRUE(c.built(x, 0)) << x;
}

TEST(Clutter, BadFirstLineIsNotAClutter) {
  std::istringstream in("# something else\n0 0 1\n1 1\n0 1\n");
  Trl_Clutter c(in);
  EXPECT_FALSE(c.valid);
  std::istringstream cut("# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0");
  Trl_Clutter d(cut);
  EXPECT_FALSE(d.valid);
}

class TerrainFolder : public RasterFolder {
 protected:
  std::vector<std::string> said;
  Trl_Terrain::message_function say() {
    return [this](const tk::string& s) { said.push_back(s.str()); };
  }
  void write_urb(const char* name, double x0, double y0, double spacing, int rows, int columns) {
    std::ostringstream text;
    text << "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n"
         << x0 << " " << y0 << " " << spacing << "\n"
         << rows << " " << columns << "\n";
    // Column 3 is a building in every row, the rest open.
    text << "0 3 1 " << columns - 4 << "\n";
    for (int r = 1; r < rows; ++r) text << "2\n";
    write_text(path(name), text.str());
  }
};

TEST_F(TerrainFolder, JoinsTheRastersWithTheirCellShift) {
  write_map(path("city.map"), 10, 10, pattern, "xlc 0 ylc 0 gridsize 5 minimum 0 maximum 999");
  write_urb("city.urb", -10, 5, 5, 12, 12);  // clutter column 2 is height column 0
  Trl_Terrain t;
  testing::internal::CaptureStdout();
  t.load(drive_path("city.map"), say());
  testing::internal::GetCapturedStdout();
  ASSERT_TRUE(t.loaded());
  EXPECT_TRUE(said.empty());
  EXPECT_EQ(t.offset_i, 2);
  EXPECT_EQ(t.offset_j, -1);
  // Common part: x from 0 to 45, y from 5 to 45.
  EXPECT_EQ(t.grid.x0, 0.0);
  EXPECT_EQ(t.grid.y0, 5.0);
  EXPECT_EQ(t.grid.nx, 10u);
  EXPECT_EQ(t.grid.ny, 9u);
  EXPECT_TRUE(t.contains(tk::point(-2.5, 2.5)));   // exactly half a cell beyond the edge
  EXPECT_FALSE(t.contains(tk::point(-2.6, 10)));
  EXPECT_FALSE(t.is_open(1, 3));  // height column 1 is clutter column 3: the building
  EXPECT_TRUE(t.is_open(2, 3));
  EXPECT_TRUE(t.in_clutter(0, 1));
  EXPECT_FALSE(t.in_clutter(0, 0));  // clutter row -1
  EXPECT_FALSE(t.is_open(tk::point(5, 20)));  // x 5 is clutter column 3

  double heights[16];
  int columns[16], rows[16], count = 0;
  t.height_profile(0, 0, 4, 2, 0.0, count, heights, columns, rows);
  ASSERT_EQ(count, 5);
  int expected_rows[5] = {0, 1, 1, 2, 2};  // the line walk's cells: half steps go up
  for (int k = 0; k < 5; ++k) {
    EXPECT_EQ(columns[k], k);
    EXPECT_EQ(rows[k], expected_rows[k]);
    EXPECT_EQ(heights[k], pattern(k, expected_rows[k]));
  }
  Trl_TxBitvector bits(16, true);
  t.clutter_profile(0, 1, 4, 1, count, bits);
  ASSERT_EQ(count, 5);
  for (int k = 0; k < 5; ++k) EXPECT_EQ(bits.test(k), k == 1) << k;
}

TEST_F(TerrainFolder, MissingOrMisfitClutterLeavesNoTerrain) {
  // Heights at 5 m from (0, 0) against each clutter file; rasters too far apart for a shift
  // in int cells, and rasters of spacing 0, share no cell.
  struct Case {
    const char* stem;
    const char* map_spacing;
    double urb_x0, urb_spacing;
    bool with_urb;
    std::vector<std::string> said;
  };
  const std::string apart = "Terrain and clutter do not overlap.";
  const Case cases[] = {
      {"alone", "5", 0, 5, false, {apart}},
      {"other", "5", 0, 4, true, {"Terrain and clutter differ in grid spacing.", apart}},
      {"far", "5", 1000, 5, true, {apart}},
      {"huge", "5", 1e300, 5, true, {apart}},
      {"tiny", "5", -1e300, 5, true, {apart}},
      {"flat", "0", 0, 0, true, {apart}},
  };
  Trl_Terrain t;
  testing::internal::CaptureStdout();
  for (const Case& c : cases) {
    said.clear();
    const std::string stem = c.stem;
    write_map(path((stem + ".map").c_str()), 10, 10, pattern,
              std::string("xlc 0 ylc 0 gridsize ") + c.map_spacing + " minimum 0 maximum 999");
    if (c.with_urb) write_urb((stem + ".urb").c_str(), c.urb_x0, 0, c.urb_spacing, 10, 10);
    t.load(drive_path((stem + ".map").c_str()), say());
    EXPECT_FALSE(t.loaded()) << stem;
    EXPECT_EQ(said, c.said) << stem;
  }
  said.clear();
  t.load(drive_path("nothing.map"), say());  // no height file: nothing is said
  testing::internal::GetCapturedStdout();
  EXPECT_FALSE(t.loaded());
  EXPECT_TRUE(said.empty());
  EXPECT_EQ(t.heightfield, nullptr);
}

}  // namespace
