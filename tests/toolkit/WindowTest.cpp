#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "support/ScriptedWindows.h"
#include "toolkit/formatted_text.h"
#include "toolkit/window.h"

namespace {

// Counts what reaches the backend, to see what the fronts let through.
class CountingBackend : public tk::script_backend {
 public:
  explicit CountingBackend(std::ostream& out) : tk::script_backend("", out) {}
  void flush(tk::window&, int x0, int y0, int x1, int y1) override {
    ++flushes;
    last_flush = {x0, y0, x1, y1};
  }
  void start_buffering(tk::window&) override { ++starts; }
  void stop_buffering(tk::window&) override { ++stops; }
  void set_items_enabled(tk::window&, bool on) override { enabled_calls.push_back(on); }
  int flushes = 0, starts = 0, stops = 0;
  std::vector<int> last_flush;
  std::vector<bool> enabled_calls;
};

// Installs a CountingBackend for the life of a test.
struct Counting {
  Counting() : backend(out) { tk::set_backend(&backend); }
  ~Counting() { tk::set_backend(nullptr); }
  ErrorGuard guard;
  std::ostringstream out;
  CountingBackend backend;
};

TEST(Window, UserCoordinatesKeepOneScaleAndPutY0AtTheBottom) {
  ScriptedWindows scripted("");
  tk::window w(600, 400, "plan");
  w.init(0, 100, 0);
  EXPECT_EQ(w.x_to_pixel(0), 0);
  EXPECT_EQ(w.x_to_pixel(50), 300);
  EXPECT_EQ(w.y_to_pixel(0), 399);
  EXPECT_EQ(w.y_to_pixel(10), 339);  // 6 pixels per unit in both directions
  EXPECT_DOUBLE_EQ(w.xmax(), 100.0);
  EXPECT_NEAR(w.ymax(), 400.0 / 6.0, 1e-12);
  EXPECT_NEAR(w.pixel_to_x(w.x_to_pixel(37.5)), 37.5, 1e-12);
  EXPECT_NEAR(w.pixel_to_y(w.y_to_pixel(12.5)), 12.5, 1e-12);
  // A plan around its data: 1212 units over 600 pixels, y from -106 upwards.
  w.init(-106, 1106, -106);
  EXPECT_EQ(w.x_to_pixel(-106), 0);
  EXPECT_EQ(w.x_to_pixel(1106), 600);
  EXPECT_EQ(w.y_to_pixel(-106), 399);
  EXPECT_EQ(w.y_to_pixel(-106 + 101), 399 - 50);  // 101 units are 50 pixels
  EXPECT_NEAR(w.pixel_to_x(300), 500, 1e-9);
}

TEST(Window, InitClearsTheWindow) {
  ScriptedWindows scripted("");
  tk::window w(50, 50, "plan");
  w.init(0, 50, 0);
  w.draw_segment(0, 0, 10, 10, tk::red);
  w.init(0, 100, 0);
  const tk::script_painter* drawing = scripted.scripted().drawing_of(w);
  ASSERT_NE(drawing, nullptr);
  ASSERT_EQ(drawing->operations().size(), 1u);
  EXPECT_EQ(drawing->operations()[0].kind, tk::drawing_op::clear);
  EXPECT_EQ(drawing->operations()[0].colour, tk::white);
}

TEST(WindowDeathTest, InitRefusesAnEmptyRange) {
  const auto init = [](double x0, double x1) {
    ScriptedWindows scripted("");
    tk::window w(600, 600, "plan");
    w.init(x0, x1, 0);
  };
  EXPECT_DEATH(init(5, 5), "illegal arguments in W.init: x0 \\(5.000000\\) >= x1 \\(5.000000\\)");
  EXPECT_DEATH(init(7.5, -1), "x0 \\(7.500000\\) >= x1 \\(-1.000000\\)");
}

TEST(Window, DrawingReachesTheBackendInPixels) {
  ScriptedWindows scripted("");
  tk::window w(200, 100, "plan");
  w.init(0, 100, 0);  // 2 pixels per unit, y 0 at pixel row 99
  w.draw_segment(tk::point(10, 5), tk::point(20, 40), tk::blue);
  w.set_node_width(6);
  w.draw_node(tk::point(50, 25), tk::green);
  w.draw_rectangle(tk::point(0, 0), tk::point(10, 10), tk::black);
  w.draw_text(30, 45, "x", tk::violet);
  const std::vector<tk::drawing_op>& ops = scripted.scripted().drawing_of(w)->operations();
  ASSERT_EQ(ops.size(), 5u);
  EXPECT_EQ(ops[1].xy, (std::vector<int>{20, 89, 40, 19}));
  EXPECT_EQ(ops[1].colour, tk::blue);
  EXPECT_EQ(ops[2].kind, tk::drawing_op::disc);
  EXPECT_EQ(ops[2].xy, (std::vector<int>{100, 49, 3}));  // a disc of 6 pixels across
  EXPECT_EQ(ops[3].xy, (std::vector<int>{0, 99, 20, 79}));
  EXPECT_EQ(ops[4].xy, (std::vector<int>{60, 9}));
  EXPECT_EQ(ops[4].label, "x");
}

TEST(Window, NestedBufferingCopiesOnlyAtTheOutermostLevel) {
  Counting c;
  tk::window w(100, 100, "plan");
  w.init(0, 100, 0);
  w.start_buffering();
  w.start_buffering();
  EXPECT_EQ(c.backend.starts, 1);
  EXPECT_EQ(w.buffering_level(), 2);
  w.flush_buffer();
  w.flush_buffer(0, 0, 10, 10);
  EXPECT_EQ(c.backend.flushes, 0);
  w.stop_buffering();
  EXPECT_EQ(c.backend.stops, 0);
  w.flush_buffer(10, 20, 30, 5);  // a part, given in any corner order
  EXPECT_EQ(c.backend.flushes, 1);
  EXPECT_EQ(c.backend.last_flush, (std::vector<int>{10, 99 - 20, 30, 99 - 5}));
  w.flush_buffer();
  EXPECT_EQ(c.backend.last_flush, (std::vector<int>{0, 0, 99, 99}));
  w.stop_buffering();
  EXPECT_EQ(c.backend.stops, 1);
  w.stop_buffering();  // one too many changes nothing
  EXPECT_EQ(c.backend.stops, 1);
  EXPECT_EQ(w.buffering_level(), 0);
}

TEST(Window, PixelPlottingIsOneBufferedBatchInPixels) {
  Counting c;
  tk::window w(10, 10, "raster");
  w.init(0, 1000, 0);  // user coordinates play no part in plotting
  w.start_pixel_plotting();
  w.plot_pixel(3, 4, tk::cyan);
  w.plot_pixel(9, 9, tk::brown);
  w.stop_pixel_plotting();
  EXPECT_EQ(c.backend.starts, 1);
  EXPECT_EQ(c.backend.flushes, 1);
  EXPECT_EQ(c.backend.stops, 1);
  const std::vector<tk::drawing_op>& ops = c.backend.drawing_of(w)->operations();
  ASSERT_EQ(ops.size(), 3u);
  EXPECT_EQ(ops[1].xy, (std::vector<int>{3, 4}));
  EXPECT_EQ(ops[2].colour, tk::brown);
}

TEST(Window, NodeWidthBelowOneIsOne) {
  ScriptedWindows scripted("");
  tk::window w(100, 100, "plan");
  int old = w.set_node_width(0);
  EXPECT_EQ(w.get_node_width(), 1);
  EXPECT_EQ(w.set_node_width(-3), 1);
  EXPECT_EQ(w.get_node_width(), 1);
  EXPECT_EQ(w.set_node_width(old), 1);
  EXPECT_EQ(w.get_node_width(), old);
}

int whole_redraws = 0, part_redraws = 0;
std::vector<double> last_part;
void whole(tk::window*) { ++whole_redraws; }
void part(tk::window*, double x0, double y0, double x1, double y1) {
  ++part_redraws;
  last_part = {x0, y0, x1, y1};
}

TEST(Window, EitherRedrawFormReplacesTheOther) {
  ScriptedWindows scripted("");
  tk::window w(100, 80, "plan");
  whole_redraws = part_redraws = 0;
  w.set_redraw(whole);
  w.request_redraw();
  w.set_redraw(part);
  w.request_redraw();
  EXPECT_EQ(last_part, (std::vector<double>{0, 0, 99, 79}));  // the whole window, in pixels
  w.request_redraw(1, 2, 5, 6);
  EXPECT_EQ(last_part, (std::vector<double>{1, 2, 5, 6}));
  EXPECT_EQ(whole_redraws, 1);
  EXPECT_EQ(part_redraws, 2);
  w.set_redraw(whole);
  w.request_redraw(0, 0, 5, 5);
  EXPECT_EQ(whole_redraws, 2);
  EXPECT_EQ(part_redraws, 2);
}

TEST(Window, DisablingThePanelIsToldToTheBackend) {
  Counting c;
  tk::window w(100, 100, "plan");
  EXPECT_TRUE(w.panel_enabled());
  w.disable_panel(true);
  EXPECT_FALSE(w.panel_enabled());
  w.enable_panel();
  EXPECT_TRUE(w.panel_enabled());
  EXPECT_EQ(c.backend.enabled_calls, (std::vector<bool>{false, true}));
}

TEST(Window, TextBoxMeasuresWithoutDrawingAndReturnsTheYBelow) {
  ScriptedWindows scripted("");
  tk::window w(100, 100, "plan");
  w.init(0, 100, 0);  // one pixel per unit
  // Words of 3, 4 and 3 characters at 7 pixels each with a blank between do not fit two to
  // a line of 30 pixels: three lines of 14 pixels.
  double below = w.text_box(0, 30, 90, "\\bf abc defg hij", false);
  EXPECT_NEAR(below, 90 - 3 * 14, 1e-9);
  EXPECT_EQ(scripted.scripted().drawing_of(w)->operations().size(), 1u);  // only the clear of init
  below = w.text_box(0, 100, 90, "abc defg\\n hij", true);
  EXPECT_NEAR(below, 90 - 2 * 14, 1e-9);
  EXPECT_EQ(scripted.scripted().drawing_of(w)->operations().size(), 4u);
}

TEST(Window, APixmapIsPlacedByItsTopLeftCorner) {
  ScriptedWindows scripted("");
  tk::window w(40, 20, "raster");
  w.init(0, 40, 0);
  const char* xpm[] = {"2 1 1 1", "a c #ff0000", "aa"};
  w.draw_pixmap(w.pixel_to_x(0), w.pixel_to_y(0), xpm);
  w.draw_pixmap(10, 5, xpm);
  const std::vector<tk::drawing_op>& ops = scripted.scripted().drawing_of(w)->operations();
  ASSERT_EQ(ops.size(), 3u);
  EXPECT_EQ(ops[1].xy, (std::vector<int>{0, 0}));
  EXPECT_EQ(ops[1].xpm.size(), 3u);
  EXPECT_EQ(ops[2].xy, (std::vector<int>{10, 19 - 5}));
}

TEST(Window, TheCoordinateDisplayShowsThePlanPosition) {
  ScriptedWindows scripted("");
  tk::window w(100, 100, "plan");
  w.init(0, 50, 0);
  w.set_coordinate_handler(tk::show_mouse_position);
  w.show_coordinates(20, 99 - 30);
  EXPECT_EQ(w.coordinate_text, "   10.00    15.00");
}

TEST(FormattedText, TagsEndAtABlankAndHoldToTheNextTag) {
  std::vector<tk::text_run> runs = tk::parse_formatted_text("\\bf\\blue Warning\\rm  plain\\n \\tt code");
  ASSERT_EQ(runs.size(), 3u);
  EXPECT_EQ(runs[0].text, "Warning");
  EXPECT_TRUE(runs[0].bold);
  EXPECT_EQ(runs[0].colour, tk::blue);
  EXPECT_EQ(runs[1].text, " plain");
  EXPECT_FALSE(runs[1].bold);
  EXPECT_EQ(runs[1].colour, tk::blue);
  EXPECT_TRUE(runs[2].line_break);
  EXPECT_TRUE(runs[2].fixed);
  EXPECT_EQ(tk::plain_text("\\bf\\red Error"), "Error");
  EXPECT_EQ(tk::plain_text("one\ntwo\\n three"), "one\ntwo\nthree");
  // An unknown tag is text.
  EXPECT_EQ(tk::plain_text("C:\\data\\x"), "C:\\data\\x");
  // Colour changes after a line break stay on that line: the search's result panel.
  EXPECT_EQ(tk::plain_text("Optimum found: \\n\\red 2 \\blue base stations and \\red 4.988681e-02 \\blue [W] "
                           "uplink power sum.\\n For more details"),
            "Optimum found: \n2 base stations and 4.988681e-02 [W] uplink power sum.\nFor more details");
}

TEST(Color, ThePaletteHoldsTheTagColours) {
  int r, g, b;
  tk::color(tk::white).get_rgb(r, g, b);
  EXPECT_EQ(r + g + b, 3 * 255);
  tk::color(tk::black).get_rgb(r, g, b);
  EXPECT_EQ(r + g + b, 0);
  tk::color(tk::red).get_rgb(r, g, b);
  EXPECT_GT(r, 200);
  EXPECT_LT(g + b, 50);
  EXPECT_GT(tk::color::palette_size(), 16);
  // Each of the first 16 entries differs from every other.
  for (int i = 0; i < 17; ++i)
    for (int j = i + 1; j < 17; ++j) {
      int r2, g2, b2;
      tk::color(i).get_rgb(r, g, b);
      tk::color(j).get_rgb(r2, g2, b2);
      EXPECT_FALSE(r == r2 && g == g2 && b == b2) << i << " and " << j;
    }
}

}  // namespace
