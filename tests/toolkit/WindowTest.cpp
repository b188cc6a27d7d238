#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "support/ScriptedWindows.h"
#include "toolkit/formatted_text.h"
#include "toolkit/menu.h"
#include "toolkit/panel.h"
#include "toolkit/window.h"

namespace {

// Counts the copies to the screen, to see what nested buffering lets through.
class CountingBackend : public tk::script_backend {
 public:
  CountingBackend(std::ostream& out) : tk::script_backend("", out) {}
  void flush(tk::window&, int, int, int, int) override { ++flushes; }
  void stop_buffering(tk::window&) override { ++stops; }
  int flushes = 0, stops = 0;
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
  w.init(-106, 1106, -106);
  EXPECT_EQ(w.x_to_pixel(-106), 0);
  EXPECT_EQ(w.x_to_pixel(1106), 600);
}

TEST(WindowDeathTest, InitRefusesAnEmptyRange) {
  EXPECT_DEATH(
      {
        ScriptedWindows scripted("");
        tk::window w(600, 600, "plan");
        w.init(5, 5, 0);
      },
      "illegal arguments in W.init: x0 \\(5.000000\\) >= x1 \\(5.000000\\)");
}

TEST(Window, NestedBufferingCopiesOnlyAtTheOutermostLevel) {
  std::ostringstream out;
  CountingBackend backend(out);
  ErrorGuard guard;
  tk::set_backend(&backend);
  {
    tk::window w(100, 100, "plan");
    w.start_buffering();
    w.start_buffering();
    w.flush_buffer();
    w.flush_buffer(0, 0, 10, 10);
    EXPECT_EQ(backend.flushes, 0);
    w.stop_buffering();
    EXPECT_EQ(backend.stops, 0);
    w.flush_buffer();
    EXPECT_EQ(backend.flushes, 1);
    w.stop_buffering();
    EXPECT_EQ(backend.stops, 1);
    w.stop_buffering();  // one too many changes nothing
    EXPECT_EQ(backend.stops, 1);
  }
  tk::set_backend(nullptr);
}

TEST(Window, NodeWidthBelowOneIsOne) {
  ScriptedWindows scripted("");
  tk::window w(100, 100, "plan");
  int old = w.set_node_width(0);
  EXPECT_EQ(w.set_node_width(-3), 1);
  EXPECT_EQ(w.get_node_width(), 1);
  EXPECT_EQ(w.set_node_width(old), 1);
}

int whole_redraws = 0, part_redraws = 0;
void whole(tk::window*) { ++whole_redraws; }
void part(tk::window*, double, double, double, double) { ++part_redraws; }

TEST(Window, EitherRedrawFormReplacesTheOther) {
  ScriptedWindows scripted("");
  tk::window w(100, 100, "plan");
  whole_redraws = part_redraws = 0;
  w.set_redraw(whole);
  w.request_redraw();
  w.set_redraw(part);
  w.request_redraw();
  w.request_redraw(0, 0, 5, 5);
  EXPECT_EQ(whole_redraws, 1);
  EXPECT_EQ(part_redraws, 2);
  w.set_redraw(whole);
  w.request_redraw(0, 0, 5, 5);
  EXPECT_EQ(whole_redraws, 2);
  EXPECT_EQ(part_redraws, 2);
}

TEST(Panel, ButtonsTakeTheNextFreeValueOrTheirOwn) {
  ScriptedWindows scripted("press c\npress b\n");
  tk::panel p("numbers");
  EXPECT_EQ(p.button("a"), 0);
  EXPECT_EQ(p.button("b", 5), 5);
  EXPECT_EQ(p.button("c"), 1);
  EXPECT_EQ(p.fbutton("d"), 2);
  EXPECT_EQ(p.open(), 1);
  EXPECT_EQ(p.open(), 5);
}

TEST(Panel, APanelWithoutButtonsGetsContinueAndQuit) {
  ScriptedWindows scripted("press continue\n");
  tk::panel p("plain");
  p.text_item("nothing to choose");
  EXPECT_EQ(p.open(), 0);
  EXPECT_NE(scripted.transcript().find("  buttons: continue | quit\n"), std::string::npos);
}

TEST(PanelDeathTest, QuitEndsTheProcess) {
  EXPECT_EXIT(
      {
        ScriptedWindows scripted("press quit\n");
        tk::panel p("plain");
        p.open();
      },
      testing::ExitedWithCode(0), "");
}

TEST(Panel, ItemsAreReadAtTheOpeningAndWrittenBackAtAButton) {
  ScriptedWindows scripted(
      "set Name: = plan two\nset Count: = 12\nset Factor [dB]: = 2.5\nset Algorithm = GA\nset Flag: = yes\npress Ok\n"
      "set Count: = 99\npress Cancel\n");
  tk::panel p("Settings");
  tk::string name = "plan";
  int count = 3, algorithm = 0;
  double factor = 1;
  bool flag = false;
  p.string_item("Name: ", name);
  p.int_item("Count: ", count);
  p.double_item("Factor [dB]: ", factor);
  p.choice_item("Algorithm: ", algorithm, "HBB", "GA");
  p.bool_item("Flag: ", flag);
  p.button("Ok", 0);
  p.button("Cancel", 1);
  EXPECT_EQ(p.open(), 0);
  EXPECT_EQ(name, tk::string("plan two"));
  EXPECT_EQ(count, 12);
  EXPECT_EQ(factor, 2.5);
  EXPECT_EQ(algorithm, 1);
  EXPECT_TRUE(flag);
  EXPECT_EQ(p.open(), 1);
  EXPECT_EQ(count, 99);  // any button writes the items back; the caller decides what to keep
  EXPECT_NE(scripted.transcript().find("panel: Settings\n  Name: [plan]\n  Count: [3]\n  Factor [dB]: [1]\n"
                                       "  Algorithm: [HBB]\n  Flag: [0]\n  buttons: Ok | Cancel\n"),
            std::string::npos)
      << scripted.transcript();
}

TEST(PanelDeathTest, AnUnansweredPanelEndsTheRunNamingItsItems) {
  EXPECT_EXIT(
      {
        ScriptedWindows scripted("menu File/Exit\n");
        tk::panel p("Search parameters");
        int n = 0;
        p.int_item("Population size: ", n);
        p.button("Ok");
        p.open();
      },
      testing::ExitedWithCode(2),
      "'menu' came while panel \"Search parameters\" with items \"Population size: \" and buttons \"Ok\" waits");
}

TEST(Messages, AcknowledgeAndConfirmAreReportedAndAnswered) {
  ScriptedWindows scripted("yes\nno\n");
  tk::window w(100, 100, "plan");
  w.acknowledge("Loaded.");
  EXPECT_TRUE(w.confirm("Do you want to stop the search?"));
  EXPECT_FALSE(w.confirm("Again?"));
  EXPECT_EQ(scripted.transcript(),
            "message: Loaded.\nconfirm: Do you want to stop the search? -> yes\nconfirm: Again? -> no\n");
}

TEST(Mouse, ClicksArriveInUserCoordinatesAndStopPollsCountDown) {
  ScriptedWindows scripted("click 25 10 right\n");
  tk::window w(200, 200, "plan");
  w.display();
  w.init(0, 100, 0);
  tk::point p;
  EXPECT_EQ(w.read_mouse(p), 3);
  EXPECT_NEAR(p.xcoord(), 25, 0.5);
  EXPECT_NEAR(p.ycoord(), 10, 0.5);
  EXPECT_EQ(w.get_mouse(p), 0);
}

TEST(Snapshot, PaintsTheRecordedDrawing) {
  std::string file = testing::TempDir() + "celvane_snapshot_test.png";
  ScriptedWindows scripted("");
  tk::window w(50, 50, "plan");
  w.init(0, 50, 0);
  w.draw_filled_rectangle(10, 10, 40, 40, tk::red);
  const tk::script_painter* drawing = scripted.scripted().drawing_of(w);
  ASSERT_NE(drawing, nullptr);
  ASSERT_EQ(drawing->operations().size(), 2u);  // the clear of init, then the rectangle
  EXPECT_EQ(drawing->operations()[1].kind, tk::drawing_op::filled_rectangle);
  EXPECT_EQ(drawing->operations()[1].xy, (std::vector<int>{10, 39, 40, 9}));
  ASSERT_TRUE(drawing->paint_png(file, 50, 50));
  std::ifstream png(file, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(png)), std::istreambuf_iterator<char>());
  EXPECT_EQ(bytes.substr(1, 3), "PNG");
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
}

}  // namespace
