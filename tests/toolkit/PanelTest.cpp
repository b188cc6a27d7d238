#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "support/ScriptedWindows.h"
#include "toolkit/menu.h"
#include "toolkit/panel.h"
#include "toolkit/window.h"

namespace {

TEST(Panel, ButtonsTakeTheNextFreeValueOrTheirOwn) {
  ScriptedWindows scripted("press c\npress b\npress d\n");
  tk::panel p("numbers");
  EXPECT_EQ(p.button("a"), 0);
  EXPECT_EQ(p.button("b", 5), 5);
  EXPECT_EQ(p.button("c"), 1);
  p.separator();  // a separator takes no value
  EXPECT_EQ(p.fbutton("d"), 2);
  EXPECT_EQ(p.button("e", 3), 3);
  EXPECT_EQ(p.button("f"), 4);
  EXPECT_EQ(p.button("g"), 6);  // 5 is taken by "b"
  EXPECT_EQ(p.open(), 1);
  EXPECT_EQ(p.open(), 5);
  EXPECT_EQ(p.open(), 2);
}

TEST(Panel, APanelWithoutButtonsGetsContinueAndQuit) {
  ScriptedWindows scripted("press continue\npress continue\n");
  tk::panel p("plain");
  p.text_item("nothing to choose");
  EXPECT_EQ(p.open(), 0);
  EXPECT_EQ(p.open(), 0);  // the two are added once
  std::string t = scripted.transcript();
  EXPECT_NE(t.find("  buttons: continue | quit\n"), std::string::npos) << t;
  EXPECT_EQ(t.find("continue | quit | continue"), std::string::npos) << t;
}

TEST(PanelDeathTest, QuitEndsTheProcess) {
  // Also at a later opening of the same panel.
  for (const char* script : {"press quit\n", "press continue\npress quit\n"})
    EXPECT_EXIT(
        {
          ScriptedWindows scripted(script);
          tk::panel p("plain");
          for (int i = 0; i < 2; ++i) p.open();
          std::exit(5);
        },
        testing::ExitedWithCode(0), "");
}

TEST(PanelDeathTest, AQuitButtonOfTheProgramsOwnIsAnOrdinaryButton) {
  EXPECT_EXIT(
      {
        ScriptedWindows scripted("press quit\n");
        tk::panel p("own");
        p.button("quit", 4);
        std::exit(p.open());
      },
      testing::ExitedWithCode(4), "");
}

TEST(Panel, ItemsAreReadAtTheOpeningAndWrittenBackAtAButton) {
  ScriptedWindows scripted(
      "set Name: = plan two\nset Count: = 12\nset Factor [dB]: = 2.5\nset Algorithm = GA\nset Flag: = yes\n"
      "set Model = 2\npress Ok\n"
      "set Count: = 99\npress Cancel\n");
  tk::panel p("Settings");
  tk::string name = "plan";
  int count = 3, algorithm = 0, model = 0;
  double factor = 1;
  bool flag = false;
  p.string_item("Name: ", name);
  p.int_item("Count: ", count);
  p.double_item("Factor [dB]: ", factor);
  p.choice_item("Algorithm: ", algorithm, "HBB", "GA");
  p.bool_item("Flag: ", flag);
  p.choice_item("Model: ", model, "Simple", "Xia-Bertoni", "Wang");
  p.button("Ok", 0);
  p.button("Cancel", 1);
  EXPECT_EQ(p.open(), 0);
  EXPECT_EQ(name, tk::string("plan two"));
  EXPECT_EQ(count, 12);
  EXPECT_EQ(factor, 2.5);
  EXPECT_EQ(algorithm, 1);
  EXPECT_TRUE(flag);
  EXPECT_EQ(model, 2);
  EXPECT_EQ(p.open(), 1);
  EXPECT_EQ(count, 99);  // any button writes the items back; the caller decides what to keep
  EXPECT_NE(scripted.transcript().find("panel: Settings\n  Name: [plan]\n  Count: [3]\n  Factor [dB]: [1]\n"
                                       "  Algorithm: [HBB]\n  Flag: [0]\n  Model: [Simple]\n  buttons: Ok | Cancel\n"),
            std::string::npos)
      << scripted.transcript();
  // The second opening shows the values written back by the first.
  EXPECT_NE(scripted.transcript().find("  Name: [plan two]\n  Count: [12]\n  Factor [dB]: [2.5]\n  Algorithm: [GA]\n"
                                       "  Flag: [1]\n  Model: [Wang]\n"),
            std::string::npos)
      << scripted.transcript();
}

TEST(Panel, AnUntouchedRealNumberKeepsEveryDigit) {
  ScriptedWindows scripted("press Ok\nset Eb/N0 up [dB]: = 3.5\npress Ok\n");
  tk::panel p("UMTS");
  double ebno = std::pow(10.0, 0.1 * 5.5);
  const double exact = ebno;
  p.double_item("Eb/N0 up [dB]: ", ebno);
  p.button("Ok");
  p.open();
  EXPECT_EQ(ebno, exact);  // shown with fewer digits, but not rounded to them
  p.open();
  EXPECT_EQ(ebno, 3.5);
}

int handler_calls = 0;
int seen_count = 0;
int* watched = nullptr;
void on_press() {
  ++handler_calls;
  seen_count = *watched;
}

TEST(Panel, AButtonHandlerRunsAfterTheItemsAreWrittenBack) {
  ScriptedWindows scripted("set Count = 7\npress Apply\n");
  tk::panel p("handlers");
  int count = 1;
  watched = &count;
  handler_calls = 0;
  p.int_item("Count: ", count);
  p.button("Close");
  int value = p.button("Apply", on_press);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(p.open(), 1);
  EXPECT_EQ(handler_calls, 1);
  EXPECT_EQ(seen_count, 7);
}

// Counts the refreshes of an open panel's items.
class RefreshCounter : public tk::script_backend {
 public:
  RefreshCounter(const std::string& script, std::ostream& out) : tk::script_backend(script, out) {}
  void refresh_item(tk::panel&, int item) override { refreshed.push_back(item); }
  std::vector<int> refreshed;
};

tk::panel* changing = nullptr;
int files_item = -1;
void directory_changed(char* text) {
  tk::list<tk::string> files;
  files.append(tk::string(text) + "a.dtx");
  changing->set_menu(files_item, files);
}

TEST(Panel, NewChoicesOfAnOpenPanelAreShownAtOnce) {
  std::ostringstream out;
  ErrorGuard guard;
  RefreshCounter backend("set Directory: = C:\\plan\\\npress Load\n", out);
  tk::set_backend(&backend);
  {
    tk::panel p("Load");
    changing = &p;
    tk::string directory = "C:\\", file = "bs.dtx";
    tk::list<tk::string> none;
    p.string_item("Directory: ", directory, none, 10, "", directory_changed);
    files_item = p.string_item("File name: ", file, none, 10);
    p.set_menu(files_item, none);  // not open: nothing to refresh
    p.button("Load");
    p.open();
    EXPECT_EQ(backend.refreshed, (std::vector<int>{files_item}));
    ASSERT_EQ(p.items()[files_item].choices.size(), 1u);
    EXPECT_EQ(p.items()[files_item].choices[0], "C:\\plan\\a.dtx");
    EXPECT_EQ(directory, tk::string("C:\\plan\\"));
  }
  tk::set_backend(nullptr);
}

// Keeps the last box the backend was asked to run.
class BoxRecorder : public tk::script_backend {
 public:
  explicit BoxRecorder(std::ostream& out) : tk::script_backend("", out) {}
  int run_panel(tk::panel& p, int x, int y, tk::window*) override {
    texts.clear();
    for (const tk::panel_item& item : p.items()) texts.push_back(item.value);
    buttons.clear();
    for (const tk::panel_button& b : p.buttons()) buttons.push_back(b.label + "=" + std::to_string(b.value));
    at_x = x;
    at_y = y;
    return 0;
  }
  std::vector<std::string> texts, buttons;
  int at_x = 0, at_y = 0;
};

TEST(Panel, MessageBoxesHaveAnEmptyFirstLineAndBoldBlueText) {
  std::ostringstream out;
  ErrorGuard guard;
  BoxRecorder backend(out);
  tk::set_backend(&backend);
  {
    tk::window w(100, 100, "plan");
    w.acknowledge("No terrain?");
    EXPECT_EQ(backend.texts, (std::vector<std::string>{"", "\\bf\\blue No terrain?"}));
    EXPECT_EQ(backend.buttons, (std::vector<std::string>{"OK=0"}));
    EXPECT_EQ(backend.at_x, tk::window::center);
    EXPECT_EQ(backend.at_y, tk::window::center);
    EXPECT_TRUE(w.confirm("Do you want to stop the search?"));  // the recorder presses the first, "YES"
    EXPECT_EQ(backend.texts, (std::vector<std::string>{"", "\\bf\\blue Do you want to stop the search?"}));
    EXPECT_EQ(backend.buttons, (std::vector<std::string>{"YES=1", "NO=0"}));
  }
  tk::set_backend(nullptr);
}

void quit_program() {}

TEST(Menu, AMenuBarIsBuiltFromButtonsAndMenus) {
  ScriptedWindows scripted("");
  tk::menu file_menu;
  file_menu.button("Load terrain", quit_program);
  file_menu.separator();
  file_menu.button("Exit", quit_program);
  tk::window w(600, 600, "Celvane");
  w.button("File", file_menu);
  w.button("Exit", quit_program);
  EXPECT_FALSE(w.has_menu_bar());
  w.make_menu_bar();
  EXPECT_TRUE(w.has_menu_bar());
  ASSERT_EQ(w.buttons().size(), 2u);
  EXPECT_EQ(w.buttons()[0].submenu, &file_menu);
  EXPECT_EQ(w.buttons()[1].action, &quit_program);
  ASSERT_EQ(file_menu.buttons().size(), 3u);
  EXPECT_TRUE(file_menu.buttons()[1].separator);
  EXPECT_EQ(file_menu.buttons()[2].value, 1);
}

}  // namespace
