#include <gtest/gtest.h>
#include "support/TestFolder.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <vector>

#include "app/Trl_Planner.h"
#include "network/Trl_RxGridDistribution.h"
#include "raster/RasterFiles.h"
#include "raster/Trl_Terrain.h"
#include "search/Trl_Assignment.h"
#include "support/ScenarioCity.h"
#include "support/ScriptedWindows.h"
#include "toolkit/color.h"
#include "toolkit/directory.h"
#include "toolkit/window.h"

namespace fs = std::filesystem;

namespace {

// A planner with a main window of 600 by 600 over the scripted backend.
struct PlanWindow {
  ScriptedWindows scripted{""};
  Trl_Planner planner;
  PlanWindow() {
    planner.create_window();
    planner.window->display();
  }
  ~PlanWindow() {
    delete planner.window;
    planner.window = nullptr;
  }
  void box(double& xmin, double& xmax, double& ymin) {
    planner.fit_view();
    xmin = planner.window->xmin();
    xmax = planner.window->xmax();
    ymin = planner.window->ymin();
  }
};

Trl_Tx station(double x, double y) { return Trl_Tx(tk::d3_point(x, y, 30), "", 0, 20, 2, 1, 7.94, 3.16, 0.4, 0); }
Trl_Rx user(double x, double y, int number) {
  return Trl_Rx(tk::d3_point(x, y, 1.5), number, 10, 3.55, 7.94, 0.125, 1e-8, 0.5, 0.66, 12.2, 12.2, 0);
}

// A line drawn from the user's pixel to its server's pixel.
void expect_line(const tk::drawing_op& op, const tk::window& w, const Trl_Rx& rx, const Trl_Tx& tx) {
  EXPECT_EQ(op.xy, (std::vector<int>{w.x_to_pixel(rx.position.xcoord()), w.y_to_pixel(rx.position.ycoord()),
                                     w.x_to_pixel(tx.position.xcoord()), w.y_to_pixel(tx.position.ycoord())}))
      << "user " << rx.number;
}

TEST(PlanView, FitsTheBoxOfEachKindOfData) {
  PlanWindow w;
  double xmin, xmax, ymin;
  w.box(xmin, xmax, ymin);
  EXPECT_EQ(xmin, 0.0);
  EXPECT_EQ(xmax, 100.0);
  EXPECT_EQ(ymin, 0.0);

  // Users only: their box with 10 % of its width on each side, also below.
  w.planner.rx_list.append(user(100, 50, 0));
  w.planner.rx_box_min = tk::point(100, 50);
  w.planner.rx_box_max = tk::point(300, 400);
  w.box(xmin, xmax, ymin);
  EXPECT_DOUBLE_EQ(xmin, 80.0);
  EXPECT_DOUBLE_EQ(xmax, 320.0);
  EXPECT_DOUBLE_EQ(ymin, 30.0);

  // Base stations widen it.
  w.planner.tx_list.append(station(0, 0));
  w.planner.tx_box_min = tk::point(0, -100);
  w.planner.tx_box_max = tk::point(200, 200);
  w.box(xmin, xmax, ymin);
  EXPECT_DOUBLE_EQ(xmin, -30.0);
  EXPECT_DOUBLE_EQ(xmax, 330.0);
  EXPECT_DOUBLE_EQ(ymin, -130.0);

  // A distribution of 2 by 2 cells of 100 m from (1000, 0): its cells reach 50 m beyond.
  std::istringstream in("ncols 2 nrows 2 xllcorner 1000 yllcorner 0 cellsize 100 NODATA_value 0 1 1 1 1");
  w.planner.distribution = new Trl_RxGridDistribution(in);
  w.box(xmin, xmax, ymin);
  EXPECT_DOUBLE_EQ(xmin, 0 - 0.1 * 1150);
  EXPECT_DOUBLE_EQ(xmax, 1150 + 0.1 * 1150);
  EXPECT_DOUBLE_EQ(ymin, -100 - 0.1 * 1150);
  w.planner.remove_distribution();
}

TEST(PlanView, ATerrainOfHalfCellsBeyondItsNodes) {
  fs::path dir = test_folder("celvane_fit");
  fs::remove_all(dir);
  fs::create_directories(dir);
  raster_files::write_map((dir / "t.map").string(), 101, 101, [](unsigned, unsigned) { return short(10); },
                          "xlc 0 ylc 0 gridsize 10 minimum 10 maximum 10");
  std::ostringstream urb;
  urb << "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 10\n101 101\n0 101\n";
  for (int r = 1; r < 101; ++r) urb << "2\n";
  raster_files::write_text((dir / "t.urb").string(), urb.str());
  PlanWindow w;
  w.planner.terrain = new Trl_Terrain;
  testing::internal::CaptureStdout();
  w.planner.terrain->load(tk::to_drive_path((dir / "t.map").string()), [](const tk::string&) {});
  testing::internal::GetCapturedStdout();
  ASSERT_TRUE(w.planner.terrain->loaded());
  double xmin, xmax, ymin;
  w.box(xmin, xmax, ymin);
  EXPECT_DOUBLE_EQ(xmin, -106.0);
  EXPECT_DOUBLE_EQ(xmax, 1106.0);
  EXPECT_DOUBLE_EQ(ymin, -106.0);
  w.planner.remove_terrain();
  fs::remove_all(dir);
}

TEST(PlanView, EveryUserHasOneLineToItsServerAndStationsShowTheirStatus) {
  PlanWindow w;
  Trl_Planner& p = w.planner;
  p.propagation_model = 0;
  tk::point corners[3] = {tk::point(0, 0), tk::point(400, 0), tk::point(200, 300)};
  int n = 0;
  for (const tk::point& c : corners) {
    Trl_Tx tx = station(c.xcoord(), c.ycoord());
    tx.number = n++;
    p.tx_list.append(tx);
  }
  p.tx_list[p.tx_list.last()].status = Trl_Tx::fixed;
  for (int k = 0; k < 9; ++k) p.rx_list.append(user(20 + 40 * k, 10 + 30 * (k % 3), k));
  p.tx_box_min = tk::point(0, 0);
  p.tx_box_max = tk::point(400, 300);
  p.rx_box_min = tk::point(20, 10);
  p.rx_box_max = tk::point(340, 70);
  tk::list<Trl_Tx> working;
  int fixed = 0;
  ASSERT_TRUE(p.compute_all(working, fixed, nullptr));
  p.fit_view();
  p.redraw();
  const tk::script_painter* drawing = w.scripted.scripted().drawing_of(*p.window);
  ASSERT_NE(drawing, nullptr);
  int lines = 0, nodes = 0;
  for (const tk::drawing_op& op : drawing->operations()) {
    if (op.kind == tk::drawing_op::line && op.colour == tk::pink) {
      // From the user's pixel to its server's pixel, as the assignment has it.
      int k = lines++;
      const Trl_Rx& rx = p.rx_list[p.rx_list.get_item(k)];
      int server = p.assignment->rows[p.assignment->serving[k]];
      EXPECT_EQ(rx.index, server);
      expect_line(op, *p.window, rx, p.tx_list[p.tx_list.get_item(server)]);
    }
    if (op.kind == tk::drawing_op::disc) {
      int expected = nodes == 2 ? tk::red : tk::green;  // the fixed one is red, usable ones green
      EXPECT_EQ(op.colour, expected);
      EXPECT_EQ(op.xy[2], 2);  // node width 4
      ++nodes;
    }
  }
  EXPECT_EQ(lines, 9);
  EXPECT_EQ(nodes, 3);
}

// The plan as it stands after "Simple search algorithm" on the scenario city: one pink line
// from each user to the station that serves it in the best set, stations in use black and
// the others violet, and the users drawn after their lines.
TEST(PlanView, AfterTheSearchUsersPointToTheirServersAndStationsShowTheirMarks) {
  PlanWindow w;
  Trl_Planner& p = w.planner;
  load_scenario_city(p);
  p.fit_view();
  testing::internal::CaptureStdout();
  p.simple_search_command();
  testing::internal::GetCapturedStdout();
  ASSERT_NE(p.assignment, nullptr);
  const Trl_Assignment& best = *p.assignment;
  ASSERT_LT(best.used, 6);
  std::vector<int> in_use;
  for (int c = 0; c < best.used; ++c) in_use.push_back(best.rows[c]);

  const tk::script_painter* drawing = w.scripted.scripted().drawing_of(*p.window);
  ASSERT_NE(drawing, nullptr);
  // The last repaint begins with the white rectangle over the whole view.
  const std::vector<tk::drawing_op>& ops = drawing->operations();
  size_t start = ops.size();
  while (start > 0 && !(ops[start - 1].kind == tk::drawing_op::filled_rectangle && ops[start - 1].colour == tk::white))
    --start;
  ASSERT_GT(start, 0u);
  std::vector<int> lines_of_user(p.rx_list.size(), 0);
  int nodes = 0, users_drawn = 0, k = 0;
  for (size_t i = start; i < ops.size(); ++i) {
    const tk::drawing_op& op = ops[i];
    if (op.kind == tk::drawing_op::line && op.colour == tk::pink) {
      ASSERT_LT(k, p.rx_list.size());
      EXPECT_EQ(users_drawn, 0) << "a line after the users";
      const Trl_Rx& rx = p.rx_list[p.rx_list.get_item(k)];
      const int server = best.rows[best.serving[rx.number]];
      const Trl_Tx& tx = p.tx_list[p.tx_list.get_item(server)];
      EXPECT_EQ(tx.number, server);
      expect_line(op, *p.window, rx, tx);
      ++lines_of_user[k++];
    }
    if (op.kind == tk::drawing_op::pixel) ++users_drawn;
    if (op.kind == tk::drawing_op::disc) {
      ASSERT_LT(nodes, p.tx_list.size());
      const bool used = std::find(in_use.begin(), in_use.end(), nodes) != in_use.end();
      EXPECT_EQ(op.colour, used ? tk::black : tk::violet) << "station " << nodes;
      ++nodes;
    }
  }
  EXPECT_EQ(lines_of_user, std::vector<int>(p.rx_list.size(), 1));
  EXPECT_EQ(users_drawn, p.rx_list.size());
  EXPECT_EQ(nodes, 6);
}

}  // namespace
