#include "app/Trl_Dialog.h"

#include <cmath>

#include <utility>

#include "app/Trl_Planner.h"
#include "network/Trl_RandomRegion.h"
#include "raster/Trl_Grid.h"
#include "toolkit/panel.h"

Trl_Dialog::Trl_Dialog(const char* title, const char* status) : title(title), status(status) {}

double Trl_Dialog::shown(double field, unit u) {
  switch (u) {
    case db: return 10 * std::log10(field);
    case dbm: return 10 * std::log10(field) + 30;
    case percent: return field * 100;
    case plain: break;
  }
  return field;
}

double Trl_Dialog::field_of(double entry, unit u) {
  switch (u) {
    case db: return std::pow(10.0, 0.1 * entry);
    case dbm: return std::pow(10.0, 0.1 * (entry - 30));
    case percent: return entry * 0.01;
    case plain: break;
  }
  return entry;
}

double& Trl_Dialog::real(const char* label, double& field, unit u, binding b) {
  double& local = reals.emplace_back(0.0);
  builders.push_back([label, &local](tk::panel& p) { p.double_item(label, local); });
  loads.push_back([&local, &field, u] { local = shown(field, u); });
  if (b == stored) writes.push_back([&local, &field, u] { field = field_of(local, u); });
  return local;
}

int& Trl_Dialog::integer(const char* label, int& field, binding b) {
  int& local = integers.emplace_back(0);
  builders.push_back([label, &local](tk::panel& p) { p.int_item(label, local); });
  loads.push_back([&local, &field] { local = field; });
  if (b == stored) writes.push_back([&local, &field] { field = local; });
  return local;
}

bool& Trl_Dialog::boolean(const char* label, bool& field, binding b) {
  bool& local = booleans.emplace_back(false);
  builders.push_back([label, &local](tk::panel& p) { p.bool_item(label, local); });
  loads.push_back([&local, &field] { local = field; });
  if (b == stored) writes.push_back([&local, &field] { field = local; });
  return local;
}

int& Trl_Dialog::choice(const char* label, int& field, const char* first, const char* second) {
  int& local = integers.emplace_back(0);
  builders.push_back([=, &local](tk::panel& p) { p.choice_item(label, local, first, second); });
  loads.push_back([&local, &field] { local = field; });
  writes.push_back([&local, &field] { field = local; });
  return local;
}

int& Trl_Dialog::choice(const char* label, bool& field, const char* first, const char* second) {
  int& local = integers.emplace_back(0);
  builders.push_back([=, &local](tk::panel& p) { p.choice_item(label, local, first, second); });
  loads.push_back([&local, &field] { local = field ? 1 : 0; });
  writes.push_back([&local, &field] { field = local != 0; });
  return local;
}

void Trl_Dialog::carry(int& field) {
  int& local = integers.emplace_back(0);
  loads.push_back([&local, &field] { local = field; });
  writes.push_back([&local, &field] { field = local; });
}

void Trl_Dialog::test(std::function<bool()> passes, const char* message) {
  steps.push_back(step{std::move(passes), nullptr, message});
}

void Trl_Dialog::rule(std::function<void()> change) { steps.push_back(step{nullptr, std::move(change), nullptr}); }

void Trl_Dialog::store() {
  has_store_step = true;
  steps.push_back(step{nullptr, [this] { write_all(); }, nullptr});
}

void Trl_Dialog::adjust_with(std::function<void()> change) { adjust_change = std::move(change); }

void Trl_Dialog::load_all() {
  for (auto& load : loads) load();
}

void Trl_Dialog::write_all() {
  for (auto& write : writes) write();
}

// The message of the first step that refuses, or null when all passed.
const char* Trl_Dialog::run_steps() {
  for (const step& s : steps) {
    if (s.change) s.change();
    if (s.passes && !s.passes()) return s.message;
  }
  if (!has_store_step) write_all();
  return nullptr;
}

bool Trl_Dialog::run(Trl_Planner& planner) {
  if (!planner.window) return false;
  planner.show_status(status);
  tk::panel dialog(title);
  for (auto& build : builders) build(dialog);
  dialog.fbutton("Ok", ok);
  dialog.button("Cancel", cancel);
  dialog.button("Reset", reset);
  if (adjust_change) dialog.button("Adjust", adjust);
  load_all();
  for (;;) {
    const int answer = dialog.open(*planner.window);
    if (answer == reset) {
      load_all();
    } else if (answer == adjust && adjust_change) {
      adjust_change();
    } else if (answer != ok) {
      return false;
    } else if (const char* failure = run_steps()) {
      planner.message(failure);
    } else {
      return true;
    }
  }
}

Trl_Dialog::region_entries Trl_Dialog::region(Trl_RandomRegion& r, const char* count_label, const Trl_Grid* grid) {
  region_entries e{real("Min. X-coordinate [m]: ", r.xmin), real("Max. X-coordinate [m]: ", r.xmax),
                   real("Min. Y-coordinate [m]: ", r.ymin), real("Max. Y-coordinate [m]: ", r.ymax),
                   integer(count_label, r.count)};
  if (grid)
    adjust_with([e, grid] {
      e.xmin = grid->x0;
      e.xmax = grid->x1;
      e.ymin = grid->y0;
      e.ymax = grid->y1;
    });
  return e;
}

void Trl_Dialog::region_rules(region_entries e) {
  rule([e] {
    for (auto [low, high] : {std::pair<double*, double*>{&e.xmin, &e.xmax}, {&e.ymin, &e.ymax}}) {
      if (*low > *high) std::swap(*low, *high);
      if (*low == *high) *high += 100;
    }
  });
}
