#include "app/Trl_MenuTree.h"

#include "app/Trl_Planner.h"
#include "toolkit/menu.h"
#include "toolkit/window.h"

const char* const about_text =
    "\\bf Celvane\\rm \\n plans UMTS networks: the fewest base stations, at the lowest powers, "
    "that serve every mobile user.";
const char* const help_text =
    "See the accompanying documentation which you can easily browse with your favorite web-Browser.";

tk::menu file_menu, set_menu, run_menu;
tk::menu load_distribution_menu, remove_menu, user_distribution_menu, propagation_menu;

namespace {

Trl_Planner& p() { return planner; }

// The wrapper shapes: plain (B, action, E), refit (B, action, F, R, E), message (B, text, E).
template <void (Trl_Planner::*action)()>
void plain() {
  p().begin_command();
  (p().*action)();
  p().end_command();
}

template <void (Trl_Planner::*action)()>
void refit() {
  p().begin_command();
  (p().*action)();
  p().fit_view();
  p().redraw();
  p().end_command();
}

template <int kind>
void refit_distribution() {
  p().begin_command();
  p().load_distribution(kind);
  p().fit_view();
  p().redraw();
  p().end_command();
}

void about() {
  p().begin_command();
  p().message(about_text);
  p().end_command();
}

void help() {
  p().begin_command();
  p().message(help_text);
  p().end_command();
}

void exit_program() { exit_flag = true; }

void compute_assignment() { p().compute_assignment_command(); }
void simple_search() { p().simple_search_command(); }
void best_set_search() { p().best_set_search_command(); }

bool built = false;

}  // namespace

void build_menu(tk::window& w) {
  if (!built) {
    built = true;
    load_distribution_menu.button("Grid distribution", refit_distribution<1>);
    load_distribution_menu.button("Polygon distribution", refit_distribution<3>);
    remove_menu.button("Distribution parameters", refit<&Trl_Planner::remove_distribution>);
    remove_menu.button("Terrain", refit<&Trl_Planner::remove_terrain>);
    user_distribution_menu.button("Uniform mobile users", refit<&Trl_Planner::generate_uniform_rx>);
    user_distribution_menu.button("Distributed mobile users", refit<&Trl_Planner::generate_distributed_rx>);
    user_distribution_menu.button("IMT2000 mobile users", refit<&Trl_Planner::generate_imt2000_rx>);

    file_menu.button("About", about);
    file_menu.separator();
    file_menu.button("Load terrain", refit<&Trl_Planner::load_terrain>);
    file_menu.button("Load base stations", refit<&Trl_Planner::load_tx>);
    file_menu.button("Load mobile users", refit<&Trl_Planner::load_rx>);
    file_menu.button("Load distribution parameters", load_distribution_menu);
    file_menu.button("Remove", remove_menu);
    file_menu.separator();
    file_menu.button("Store assignment", plain<&Trl_Planner::store_assignment>);
    file_menu.separator();
    file_menu.button("Random base stations", refit<&Trl_Planner::generate_tx>);
    file_menu.button("Mobile user distributions", user_distribution_menu);
    file_menu.separator();
    file_menu.button("Exit", exit_program);

    propagation_menu.button("Set model", plain<&Trl_Planner::set_model>);
    propagation_menu.separator();
    propagation_menu.button("Xia-Bertoni parameters", plain<&Trl_Planner::set_xia_bertoni>);
    propagation_menu.button("Simple parameters", plain<&Trl_Planner::set_simple_model>);
    set_menu.button("Heights", plain<&Trl_Planner::set_heights>);
    set_menu.button("UMTS parameters", plain<&Trl_Planner::set_umts_parameters>);
    set_menu.button("Propagation parameters", propagation_menu);
    set_menu.button("Search parameters", plain<&Trl_Planner::set_search_parameters>);
    set_menu.button("Best-set search parameters", refit<&Trl_Planner::set_best_set_parameters>);
    set_menu.separator();
    set_menu.button("Base station", plain<&Trl_Planner::edit_tx>);

    run_menu.button("Compute Assignment", compute_assignment);
    run_menu.separator();
    run_menu.button("Simple search algorithm", simple_search);
    run_menu.button("Best-set search algorithm", best_set_search);
    run_menu.separator();
    run_menu.button("Draw pathloss coverage", plain<&Trl_Planner::draw_coverage>);
    run_menu.button("Draw distribution parameters", plain<&Trl_Planner::draw_distribution>);
    run_menu.button("Draw terrain", plain<&Trl_Planner::draw_terrain>);
    run_menu.button("Draw building clutter", plain<&Trl_Planner::draw_clutter>);
  }
  w.button("About", about);
  w.button("File", file_menu);
  w.button("Set", set_menu);
  w.button("Run", run_menu);
  w.button("Exit", exit_program);
  w.button("Help", help);
  w.make_menu_bar(2);
  w.display(tk::window::max, tk::window::min);
  w.init(0, 100, 0);
}
