#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

#include "support/Png.h"
#include "support/ScriptedWindows.h"
#include "toolkit/menu.h"
#include "toolkit/panel.h"
#include "toolkit/script/plan_script.h"
#include "toolkit/window.h"

namespace {

std::string parse_error(const std::string& text) { return tk::plan_script(text).error_text(); }

TEST(ScriptParser, FaultyLinesAreNamedByTheirNumber) {
  EXPECT_EQ(parse_error("bogus\n"), "line 1: unknown step 'bogus'");
  EXPECT_EQ(parse_error("# a comment\n\nmenu File/Exit\n  fly away\n"), "line 4: unknown step 'fly'");
  EXPECT_EQ(parse_error("menu\n"), "line 1: 'menu' needs an argument");
  EXPECT_EQ(parse_error("press\n"), "line 1: 'press' needs an argument");
  EXPECT_EQ(parse_error("set Population size: 50\n"), "line 1: 'set' is written 'set LABEL = VALUE'");
  EXPECT_EQ(parse_error("set = 50\n"), "line 1: 'set' is written 'set LABEL = VALUE'");
  EXPECT_EQ(parse_error("set \"Name: = x\n"), "line 1: a quote is not closed");
  EXPECT_EQ(parse_error("set \"Name: \" 5\n"), "line 1: 'set' is written 'set LABEL = VALUE'");
  EXPECT_EQ(parse_error("set Name = \"a\" b\n"), "line 1: a quoted value stands alone");
  EXPECT_EQ(parse_error("yes please\n"), "line 1: 'yes' takes no argument");
  EXPECT_EQ(parse_error("ok 1\n"), "line 1: 'ok' takes no argument");
  EXPECT_EQ(parse_error("click 10\n"), "line 1: 'click' is written 'click X Y [left|middle|right]'");
  EXPECT_EQ(parse_error("click 10 ten\n"), "line 1: 'click' is written 'click X Y [left|middle|right]'");
  EXPECT_EQ(parse_error("click 10 20 top\n"), "line 1: unknown mouse button 'top'");
  EXPECT_EQ(parse_error("click 10 20 left twice\n"), "line 1: 'click' is written 'click X Y [left|middle|right]'");
  EXPECT_EQ(parse_error("stop after 0\n"), "line 1: 'stop' is written 'stop after N' with N at least 1");
  EXPECT_EQ(parse_error("stop 5\n"), "line 1: 'stop' is written 'stop after N' with N at least 1");
  EXPECT_EQ(parse_error("snapshot\n"), "line 1: 'snapshot' needs a file name");
  EXPECT_EQ(parse_error("close\n"), "line 1: 'close' needs the title of a window");
  EXPECT_EQ(parse_error("resize 0 10\n"), "line 1: 'resize' is written 'resize WIDTH HEIGHT [TITLE]' in pixels");
  EXPECT_EQ(parse_error("point 1\n"), "line 1: 'point' is written 'point X Y [TITLE]'");
  EXPECT_EQ(parse_error("menu File/Exit\r\nyes\r\n"), "");  // line ends of another system
}

TEST(ScriptParser, StepsKeepTheirArgumentsAndQuotedTextStandsAsWritten) {
  tk::plan_script script(
      "menu Set/Search parameters   # the dialog\n"
      "set Population size: = 50\n"
      "set \"File name: \" = \"  two blanks\"\n"
      "file data/plan#2.dtx\n"
      "click 12.5 -3 right\n"
      "stop after 200\n"
      "snapshot out.png Celvane  -  Terrain\n"
      "resize 320 200 \"Celvane  -  Clutter\"\n"
      "set Comment = # not a value\n");
  ASSERT_TRUE(script.ok()) << script.error_text();
  const std::vector<tk::script_step>& s = script.steps();
  ASSERT_EQ(s.size(), 9u);
  EXPECT_EQ(s[0].verb, "menu");
  EXPECT_EQ(s[0].argument, "Set/Search parameters");
  EXPECT_EQ(s[1].argument, "Population size:");
  EXPECT_FALSE(s[1].exact);
  EXPECT_EQ(s[1].value, "50");
  EXPECT_EQ(s[2].argument, "File name: ");
  EXPECT_TRUE(s[2].exact);
  EXPECT_EQ(s[2].value, "  two blanks");
  EXPECT_EQ(s[3].argument, "data/plan#2.dtx");  // a "#" inside a word is no comment
  EXPECT_EQ(s[4].x, 12.5);
  EXPECT_EQ(s[4].y, -3);
  EXPECT_EQ(s[4].button, 3);
  EXPECT_EQ(s[4].text, "12.5 -3 right");
  EXPECT_EQ(s[4].line, 5);
  EXPECT_EQ(s[5].count, 200);
  EXPECT_EQ(s[6].argument, "out.png");
  EXPECT_EQ(s[6].title, "Celvane  -  Terrain");
  EXPECT_EQ(s[7].x, 320);
  EXPECT_EQ(s[7].title, "Celvane  -  Clutter");
  EXPECT_EQ(s[8].value, "");  // the comment starts after a blank
}

TEST(ScriptBackend, ABadScriptIsReportedBeforeAnythingRuns) {
  std::ostringstream out;
  tk::script_backend backend("menu File/Exit\nsnapshot\n", out);
  EXPECT_FALSE(backend.ok());
  EXPECT_EQ(backend.error_text(), "line 2: 'snapshot' needs a file name");
}

// The program's menu bar, as a test builds it.
int loads = 0, exits = 0;
void load_terrain() { ++loads; }
void leave() { ++exits; }

struct MenuBar {
  MenuBar() : w(600, 600, "Celvane") {
    remove_menu.button("Terrain", leave);
    file_menu.button("Load terrain", load_terrain);
    file_menu.button("Remove", remove_menu);
    w.button("File", file_menu);
    w.button("Exit", leave);
    w.make_menu_bar();
    w.display();
    w.init(0, 100, 0);
  }
  tk::menu remove_menu, file_menu;
  tk::window w;
};

TEST(ScriptBackend, MenuStepsRunTheirCommandsInsideReadEvent) {
  ScriptedWindows scripted("menu File/Load terrain\nstop after 3\nmenu File/Remove/Terrain\nmenu Exit\n");
  MenuBar bar;
  loads = exits = 0;
  tk::window* w = nullptr;
  int value;
  double x, y;
  EXPECT_NE(tk::read_event(w, value, x, y), tk::no_event);
  EXPECT_EQ(w, &bar.w);
  EXPECT_EQ(loads, 1);
  tk::read_event(w, value, x, y);
  EXPECT_EQ(exits, 1);
  tk::read_event(w, value, x, y);
  EXPECT_EQ(exits, 2);
  EXPECT_EQ(scripted.transcript(), "menu: File/Load terrain\nmenu: File/Remove/Terrain\nmenu: Exit\n");
  // The stop request of line 2 counts the polls that follow.
  tk::point p;
  EXPECT_EQ(bar.w.get_mouse(p), 0);
  EXPECT_EQ(bar.w.get_mouse(p), 0);
  EXPECT_EQ(bar.w.get_mouse(p), 1);
  EXPECT_EQ(bar.w.get_mouse(p), 0);
}

TEST(ScriptBackend, AReadEventOfOneWindowFindsNoEventAndTakesNoStep) {
  ScriptedWindows scripted("menu Exit\n");
  MenuBar bar;
  exits = 0;
  int value = -1;
  double x, y;
  EXPECT_EQ(bar.w.read_event(value, x, y), tk::no_event);
  next_event();
  EXPECT_EQ(exits, 1);
}

TEST(ScriptBackendDeathTest, MenuFaultsEndTheRunWithStatusTwo) {
  auto play = [](const char* script, bool disabled) {
    ScriptedWindows scripted(script);
    MenuBar bar;
    if (disabled) bar.w.disable_panel();
    next_event();
    std::exit(0);
  };
  EXPECT_EXIT(play("menu File/Fly away\n", false), testing::ExitedWithCode(2), "line 1: no menu entry \"File/Fly away\"");
  EXPECT_EXIT(play("menu File\n", false), testing::ExitedWithCode(2), "line 1: \"File\" is not a command");
  EXPECT_EXIT(play("menu Exit/Now\n", false), testing::ExitedWithCode(2), "line 1: \"Exit\" has no sub-menu");
  EXPECT_EXIT(play("menu Exit\n", true), testing::ExitedWithCode(2), "line 1: the menu bar is disabled");
  EXPECT_EXIT(play("yes\n", false), testing::ExitedWithCode(2), "line 1: 'yes' came while the program waits for a command");
  EXPECT_EXIT(play("", false), testing::ExitedWithCode(3), "the script ended while the program waits for a command");
}

TEST(ScriptBackendDeathTest, AnUnansweredPanelEndsTheRunNamingItsItems) {
  EXPECT_EXIT(
      {
        ScriptedWindows scripted("");
        tk::panel p("Heights");
        double h = 0;
        p.double_item("Tx height over ground [m]: ", h);
        p.double_item("Rx height [m]: ", h);
        p.button("Ok");
        p.button("Cancel");
        p.open();
      },
      testing::ExitedWithCode(2),
      "the script ended while panel \"Heights\" with items \"Tx height over ground \\[m\\]: \", \"Rx height \\[m\\]: \" "
      "and buttons \"Ok\" \"Cancel\" waits for an answer");
  EXPECT_EXIT(
      {
        ScriptedWindows scripted("menu Exit\n");
        tk::window w(10, 10, "plan");
        w.confirm("Do you want to stop the search?");
      },
      testing::ExitedWithCode(2), "the question \"Do you want to stop the search\\?\" needs 'yes' or 'no' at line 1");
  EXPECT_EXIT(
      {
        ScriptedWindows scripted("press Ok\n");
        tk::window w(10, 10, "plan");
        tk::point p;
        w.read_mouse(p);
      },
      testing::ExitedWithCode(2), "the program waits for a mouse click in \"plan\", but line 1 is 'press'");
}

TEST(ScriptBackendDeathTest, AnswersThatDoNotFitThePanelEndTheRun) {
  auto play = [](const char* script) {
    ScriptedWindows scripted(script);
    tk::panel p("Search parameters");
    int n = 0, algorithm = 0;
    bool flag = false;
    p.int_item("Population size: ", n);
    p.choice_item("Algorithm: ", algorithm, "HBB", "GA");
    p.bool_item("Validate downlink: ", flag);
    p.button("Ok");
    p.open();
    std::exit(0);
  };
  EXPECT_EXIT(play("set Population size: = many\n"), testing::ExitedWithCode(2),
              "line 1: 'many' does not fit item \"Population size: \"");
  EXPECT_EXIT(play("set Population size: = 5.5\n"), testing::ExitedWithCode(2), "'5.5' does not fit");
  EXPECT_EXIT(play("set Algorithm = SA\n"), testing::ExitedWithCode(2), "'SA' does not fit item \"Algorithm: \"");
  EXPECT_EXIT(play("set Algorithm = 2\n"), testing::ExitedWithCode(2), "'2' does not fit");
  EXPECT_EXIT(play("set Validate downlink = maybe\n"), testing::ExitedWithCode(2), "'maybe' does not fit");
  EXPECT_EXIT(play("set Size = 5\n"), testing::ExitedWithCode(2), "line 1: no item \"Size\" in panel");
  // A quoted label is matched exactly: without its blank it names no item.
  EXPECT_EXIT(play("set \"Population size:\" = 5\n"), testing::ExitedWithCode(2),
              "no item \"Population size:\" in panel");
  EXPECT_EXIT(play("set \"Population size: \" = 5\npress Ok\n"), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(play("press Cancel\n"), testing::ExitedWithCode(2), "line 1: no button \"Cancel\" in panel");
  EXPECT_EXIT(play("file a.dtx\n"), testing::ExitedWithCode(2),
              "line 1: 'file' answers a file dialog, but panel \"Search parameters\"");
}

// A file dialog as the program makes it.
int answer_dialog(const char* script, tk::string& drive, tk::string& directory, tk::string& file,
                  std::string& transcript) {
  ScriptedWindows scripted(script);
  tk::panel p("Load Terrain");
  tk::list<tk::string> none;
  p.text_item("Load Terrain ... \n");
  p.string_item("Drive: ", drive, none, 5);
  p.string_item("Directory: ", directory, none, 10);
  p.string_item("File name: ", file, none, 10);
  p.button("Up", 0);
  p.fbutton("Load", 1);
  p.button("Cancel", 2);
  int pressed = p.open();
  transcript = scripted.transcript();
  return pressed;
}

TEST(ScriptBackend, FileAnswersTheFileDialogWithThePathInDriveForm) {
  tk::string drive = "C:", directory = "\\home\\ana\\", file = "terrain.map";
  std::string t;
  EXPECT_EQ(answer_dialog("file /data/city/terrain.map\n", drive, directory, file, t), 1);
  EXPECT_EQ(file, tk::string("C:\\data\\city\\terrain.map"));
  EXPECT_EQ(directory, tk::string("\\home\\ana\\"));
  EXPECT_EQ(t,
            "panel: Load Terrain\n  | Load Terrain ... \\n\n  Drive: [C:]\n  Directory: [\\home\\ana\\]\n"
            "  File name: [terrain.map]\n  buttons: Up | Load | Cancel\n  file: /data/city/terrain.map\n"
            "  press: Load\n");
  EXPECT_EQ(answer_dialog("file maps/small.map\n", drive, directory, file, t), 1);
  EXPECT_EQ(file, tk::string("maps\\small.map"));
  // Item by item, as the planner fills it.
  EXPECT_EQ(answer_dialog("set Directory = \\data\\\nset File name = x.map\npress Load\n", drive, directory, file, t), 1);
  EXPECT_EQ(directory, tk::string("\\data\\"));
  EXPECT_EQ(file, tk::string("x.map"));
  EXPECT_EQ(answer_dialog("press Cancel\n", drive, directory, file, t), 2);
}

TEST(ScriptBackend, MessagesNeedNoAnswerButMayHaveOne) {
  ScriptedWindows scripted("ok\nyes\npress NO\nno\n");
  tk::window w(100, 100, "plan");
  w.acknowledge("\\bf Loaded.");
  w.acknowledge("No terrain?");  // no "ok" left for this one: it passes all the same
  EXPECT_TRUE(w.confirm("Stop?"));
  EXPECT_FALSE(w.confirm("Really?"));
  EXPECT_FALSE(w.confirm("Again?"));
  EXPECT_EQ(scripted.transcript(), "message: \\bf Loaded.\nmessage: No terrain?\nconfirm: Stop? -> yes\n"
                                   "confirm: Really? -> NO\nconfirm: Again? -> no\n");
}

TEST(ScriptBackend, StatusTextsAreWrittenAsSet) {
  ScriptedWindows scripted("");
  tk::window w(100, 100, "plan");
  w.set_status_string(" not open");  // no status window: nothing to show
  w.open_status_window(16, 17);
  EXPECT_TRUE(w.status_open());
  w.set_status_string(" Reading base station file C:/data/bs.dtx");
  w.close_status_window();
  EXPECT_FALSE(w.status_open());
  EXPECT_EQ(scripted.transcript(), "status:  Reading base station file C:/data/bs.dtx\n");
}

TEST(ScriptBackend, ClicksArriveInUserCoordinates) {
  ScriptedWindows scripted("click 25 10 right\nclick 0 0\n");
  tk::window w(200, 200, "plan");
  w.display();
  w.init(0, 100, 0);
  tk::point p;
  EXPECT_EQ(w.read_mouse(p), 3);
  EXPECT_NEAR(p.xcoord(), 25, 0.5);
  EXPECT_NEAR(p.ycoord(), 10, 0.5);
  EXPECT_EQ(w.read_mouse(p), 1);
  EXPECT_NEAR(p.xcoord(), 0, 0.5);
  EXPECT_EQ(w.get_mouse(p), 0);
  EXPECT_EQ(scripted.transcript(), "click: 25 10 right\nclick: 0 0\n");
}

tk::window* deleted = nullptr;
void on_delete(tk::window* w) {
  deleted = w;
  w->close();
}
int redraws = 0;
void on_redraw(tk::window*) { ++redraws; }
// A pointer handler that writes the position into its window, as the raster displays do.
void on_pointer(tk::window* w, double x, double y) { w->draw_text(0, 0, tk::string("  at %g,%g  ", x, y)); }

TEST(ScriptBackend, WindowEventsReachTheirHandlers) {
  ScriptedWindows scripted(
      "point 25 50\npoint 10 20 Celvane  -  Terrain\nredraw Celvane  -  Terrain\nresize 400 200 Celvane  -  Terrain\n"
      "close Celvane  -  Terrain\n");
  MenuBar bar;
  bar.w.set_coordinate_handler(tk::show_mouse_position);
  tk::window raster(300, 300, "Celvane  -  Terrain");
  raster.set_redraw(on_redraw);
  raster.set_window_delete_handler(on_delete);
  raster.set_coordinate_handler(on_pointer);
  raster.display();
  raster.init(0, 300, 0);
  redraws = 0;
  deleted = nullptr;
  tk::window* w = nullptr;
  int value;
  double x, y;
  tk::read_event(w, value, x, y);
  EXPECT_EQ(w, &bar.w);
  EXPECT_NEAR(x, 25, 0.1);
  EXPECT_NEAR(y, 50, 0.1);
  tk::read_event(w, value, x, y);
  EXPECT_EQ(w, &raster);
  tk::read_event(w, value, x, y);
  EXPECT_EQ(w, &raster);
  EXPECT_EQ(redraws, 1);
  tk::read_event(w, value, x, y);
  EXPECT_EQ(raster.width(), 400);
  EXPECT_EQ(raster.height(), 200);
  EXPECT_EQ(redraws, 2);
  tk::read_event(w, value, x, y);
  EXPECT_EQ(deleted, &raster);
  EXPECT_EQ(w, nullptr);  // the handler may have deleted it
  EXPECT_EQ(scripted.transcript(),
            "point: 25 50\n  coordinates:    25.00    50.00\n"
            "point: 10 20 Celvane  -  Terrain\n  text: \"  at 10,20  \"\nredraw: Celvane  -  Terrain\n"
            "resize: 400 200 Celvane  -  Terrain\nclose: Celvane  -  Terrain\n");
}

TEST(ScriptBackendDeathTest, ClosingTheMainWindowEndsTheProgram) {
  EXPECT_EXIT(
      {
        ScriptedWindows scripted("close Celvane\n");
        MenuBar bar;
        next_event();
        std::exit(5);
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        ScriptedWindows scripted("redraw Nowhere\n");
        MenuBar bar;
        next_event();
      },
      testing::ExitedWithCode(2), "line 1: no window \"Nowhere\" is open");
}

TEST(ScriptBackend, StandardOutputLinesTakeTheirPlaceInTheTranscript) {
  ScriptedWindows scripted("");
  tk::window w(100, 100, "plan");
  scripted.scripted().capture_stdout();
  w.open_status_window();
  std::cout << "Unix format\n";
  w.set_status_string(" Reading");
  std::cout << "r " << 255 << " g 0" << std::endl << "unfinished";
  scripted.scripted().release_stdout();
  std::cout.flush();
  EXPECT_EQ(scripted.transcript(), "stdout: Unix format\nstatus:  Reading\nstdout: r 255 g 0\nstdout: unfinished\n");
}

TEST(ScriptBackend, StandardOutputCanBeTheTranscriptItself) {
  std::ostringstream captured;
  std::streambuf* former = std::cout.rdbuf(captured.rdbuf());
  {
    ErrorGuard guard;
    tk::script_backend backend("", std::cout);
    tk::set_backend(&backend);
    backend.capture_stdout();
    std::cout << "d_samples 3\n";
    backend.write_line("status:  done");
    backend.release_stdout();
    tk::set_backend(nullptr);
  }
  std::cout.rdbuf(former);
  EXPECT_EQ(captured.str(), "stdout: d_samples 3\nstatus:  done\n");
}

TEST(Snapshot, PaintsTheRecordedDrawingIntoAPicture) {
  std::string file = testing::TempDir() + "celvane_snapshot_test.png";
  ScriptedWindows scripted("snapshot " + file + "\nmenu Exit\n");
  MenuBar bar;  // 600 by 600, x 0 to 100: 6 pixels per unit
  bar.w.draw_filled_rectangle(10, 10, 40, 40, tk::red);
  bar.w.draw_segment(50, 0, 50, 100, tk::blue);
  const char* xpm[] = {"2 2 2 1", "a c #00ff00", "b c #ffff00", "ab", "ba"};
  bar.w.draw_pixmap(bar.w.pixel_to_x(590), bar.w.pixel_to_y(0), xpm);
  next_event();
  EXPECT_EQ(scripted.transcript(), "snapshot: " + file + "\nmenu: Exit\n");
  int r, g, b;
  tk::color(tk::red).get_rgb(r, g, b);
  unsigned red = static_cast<unsigned>(r << 16 | g << 8 | b);
  tk::color(tk::blue).get_rgb(r, g, b);
  unsigned blue = static_cast<unsigned>(r << 16 | g << 8 | b);
  const Picture picture = read_png(file);
  ASSERT_EQ(picture.width, 600);
  EXPECT_EQ(picture.at(150, 599 - 150), red);  // (25, 25) lies inside the rectangle
  EXPECT_EQ(picture.at(5, 5), 0xffffffu);       // the cleared background
  EXPECT_EQ(picture.at(300, 300), blue);        // the line at x = 50
  EXPECT_EQ(picture.at(590, 0), 0x00ff00u);     // the pixmap's top left corner
  EXPECT_EQ(picture.at(591, 0), 0xffff00u);
  EXPECT_EQ(picture.at(591, 1), 0x00ff00u);
}

TEST(ScriptBackendDeathTest, ASnapshotNeedsAWindowAndAPlaceToWrite) {
  EXPECT_EXIT(
      {
        ScriptedWindows scripted("snapshot /no/such/folder/x.png\n");
        MenuBar bar;
        next_event();
      },
      testing::ExitedWithCode(2), "line 1: cannot write /no/such/folder/x.png");
}

}  // namespace
