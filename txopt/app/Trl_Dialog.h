// Trl_Dialog: the one pattern of the planner's parameter dialogs. A dialog is a table of
// items, each bound to a field of the planner through a local copy shown in the item's unit,
// and a table of steps run at "Ok": tests that refuse with a message, rules that change the
// entries, and the point where the entries are written back. The runner shows the status
// text, opens the panel over the main window, refills it at "Reset", and reopens it with the
// planner's entries after a refused "Ok". Nothing reaches the fields before every step passed.
#pragma once

#include <deque>
#include <functional>
#include <vector>

#include "toolkit/string.h"

class Trl_Grid;
class Trl_Planner;
class Trl_RandomRegion;
namespace tk {
class panel;
}

class Trl_Dialog {
 public:
  // Button values: "Ok" is the default, any other way of closing counts as "Cancel".
  enum button { ok = 0, cancel = 1, reset = 2, adjust = 3 };
  // How a real field is shown: as it is, 10·log10 (dB), 10·log10 + 30 (dBmW of a power in W),
  // or times 100 (a fraction in percent).
  enum unit { plain, db, dbm, percent };
  // Whether an item writes its entry back at "Ok" or only starts from the field.
  enum binding { stored, local };

  Trl_Dialog(const char* title, const char* status);

  // Items, in the order they appear; each returns the local copy that the steps look at.
  double& real(const char* label, double& field, unit shown = plain, binding b = stored);
  int& integer(const char* label, int& field, binding b = stored);
  bool& boolean(const char* label, bool& field, binding b = stored);
  int& choice(const char* label, int& field, const char* first, const char* second);
  int& choice(const char* label, bool& field, const char* first, const char* second);
  // A field carried through the dialog unseen: read at the start, written back at "Ok".
  void carry(int& field);

  // Steps at "Ok", in the order added. A test passes or shows its message and reopens.
  void test(std::function<bool()> passes, const char* message);
  // A rule changes the entries silently; the panel shows them if it opens again.
  void rule(std::function<void()> change);
  // The entries are written to their fields here; without this step, after the last one.
  void store();
  // A fourth button "Adjust" that changes the entries and reopens the panel.
  void adjust_with(std::function<void()> change);

  // The local copies of a region's rectangle (m) and count.
  struct region_entries {
    double& xmin;
    double& xmax;
    double& ymin;
    double& ymax;
    int& count;
  };
  // The five items of a region: its corners and its count under count_label. With a grid,
  // "Adjust" sets the corners to the grid's first and last nodes.
  region_entries region(Trl_RandomRegion& r, const char* count_label, const Trl_Grid* grid);
  // The region rules as a step: a minimum above its maximum is swapped with it, and equal
  // ones are widened by 100 m.
  void region_rules(region_entries e);

  // Runs the dialog; true when "Ok" passed every step and the fields hold the entries.
  bool run(Trl_Planner& planner);

  // The shown value of a field in a unit, and the field of a shown value.
  static double shown(double field, unit u);
  static double field_of(double entry, unit u);

 private:
  struct step {
    std::function<bool()> passes;  // a test; empty for a rule or the store
    std::function<void()> change;  // a rule; empty for a test or the store
    const char* message = nullptr;
  };

  void load_all();
  void write_all();
  const char* run_steps();

  const char* title;
  const char* status;
  std::vector<std::function<void(tk::panel&)>> builders;  // add each item to the panel
  std::vector<std::function<void()>> loads;
  std::vector<std::function<void()>> writes;
  std::vector<step> steps;
  bool has_store_step = false;
  std::function<void()> adjust_change;
  // Stable homes of the local copies.
  std::deque<double> reals;
  std::deque<int> integers;
  std::deque<bool> booleans;
};
