#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/Trl_Main.h"
#include "app/Trl_MenuTree.h"
#include "app/Trl_Planner.h"
#include "support/ScriptedWindows.h"
#include "toolkit/menu.h"
#include "toolkit/window.h"

namespace {

// The entries of a menu as the planner reads them, "----" for a separator and "NAME >"
// for an entry that opens a sub-menu.
std::vector<std::string> entries(const tk::window& m) {
  std::vector<std::string> result;
  for (const tk::panel_button& b : m.buttons()) {
    if (b.separator)
      result.push_back("----");
    else
      result.push_back(b.submenu ? b.label + " >" : b.label);
  }
  return result;
}

const tk::menu* submenu(const tk::window& m, const std::string& label) {
  for (const tk::panel_button& b : m.buttons())
    if (b.label == label) return b.submenu;
  return nullptr;
}

// Puts the global planner back as the program starts: no window, exit flag down.
void forget_main_window() {
  delete planner.window;
  planner.window = nullptr;
  planner.status_shown = false;
  exit_flag = false;
}

using Entries = std::vector<std::string>;

TEST(MenuTree, HoldsEveryEntryInItsPlace) {
  ScriptedWindows scripted("menu File/Exit\n");
  EXPECT_EQ(run_planner_main(), 0);
  const tk::window& bar = *planner.window;
  EXPECT_EQ(bar.title(), "Celvane");
  EXPECT_EQ(bar.width(), 600);
  EXPECT_TRUE(bar.has_menu_bar());
  EXPECT_EQ(entries(bar), (Entries{"About", "File >", "Set >", "Run >", "Exit", "Help"}));

  const tk::menu* file = submenu(bar, "File");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(entries(*file),
            (Entries{"About", "----", "Load terrain", "Load base stations", "Load mobile users",
                     "Load distribution parameters >", "Remove >", "----", "Store assignment", "----",
                     "Random base stations", "Mobile user distributions >", "----", "Exit"}));
  EXPECT_EQ(entries(*submenu(*file, "Load distribution parameters")),
            (Entries{"Grid distribution", "Polygon distribution"}));
  EXPECT_EQ(entries(*submenu(*file, "Remove")), (Entries{"Distribution parameters", "Terrain"}));
  EXPECT_EQ(entries(*submenu(*file, "Mobile user distributions")),
            (Entries{"Uniform mobile users", "Distributed mobile users", "IMT2000 mobile users"}));

  const tk::menu* set = submenu(bar, "Set");
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(entries(*set), (Entries{"Heights", "UMTS parameters", "Propagation parameters >", "Search parameters",
                                    "Best-set search parameters", "----", "Base station"}));
  EXPECT_EQ(entries(*submenu(*set, "Propagation parameters")),
            (Entries{"Set model", "----", "Xia-Bertoni parameters", "Simple parameters"}));

  const tk::menu* run = submenu(bar, "Run");
  ASSERT_NE(run, nullptr);
  EXPECT_EQ(entries(*run), (Entries{"Compute Assignment", "----", "Simple search algorithm",
                                    "Best-set search algorithm", "----", "Draw pathloss coverage",
                                    "Draw distribution parameters", "Draw terrain", "Draw building clutter"}));

  // "About" and "Exit" stand on the bar and in the File menu with one callback each.
  EXPECT_EQ(bar.buttons()[0].action, file->buttons()[0].action);
  EXPECT_EQ(bar.buttons()[4].action, file->buttons().back().action);
  // The plan starts 100 units wide from the origin.
  EXPECT_EQ(bar.xmin(), 0.0);
  EXPECT_EQ(bar.xmax(), 100.0);
  EXPECT_EQ(bar.ymin(), 0.0);
  forget_main_window();
}

TEST(MenuTree, WrappersRepaintOnlyAfterCommandsThatChangeThePlan) {
  ScriptedWindows scripted(
      "menu File/Load terrain\npress Cancel\n"
      "menu File/Store assignment\n"
      "menu Help\n"
      "menu Exit\n");
  tk::window* w = planner.create_window();
  build_menu(*w);
  auto drawn = [&]() -> size_t {
    const tk::script_painter* painter = scripted.scripted().drawing_of(*w);
    return painter ? painter->operations().size() : 0;
  };
  size_t before = drawn();
  next_event();  // a cancelled load still fits and repaints
  EXPECT_GT(drawn(), before);
  EXPECT_TRUE(w->panel_enabled());

  before = drawn();
  next_event();  // plain: the test for an assignment, no repaint
  EXPECT_EQ(drawn(), before);
  next_event();  // message shape
  EXPECT_EQ(drawn(), before);
  EXPECT_TRUE(w->panel_enabled());
  EXPECT_FALSE(exit_flag);
  next_event();
  EXPECT_TRUE(exit_flag);  // "Exit" only raises the flag

  EXPECT_EQ(scripted.transcript().substr(scripted.transcript().find("  press: Cancel\n")),
            "  press: Cancel\n"
            "menu: File/Store assignment\n"
            "message: No assignment available.\n"
            "menu: Help\n"
            "message: See the accompanying documentation which you can easily browse with your favorite "
            "web-Browser.\n"
            "menu: Exit\n");
  forget_main_window();
}

}  // namespace
