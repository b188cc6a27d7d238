// Trl_Planner: the application object. One instance, `planner`, holds the whole plan:
// every parameter with its default, the base stations and mobile users, the terrain, the
// user distribution, the current assignment, the remembered file names and the main window.
// Every menu command is a member working on it. Radio quantities are linear inside (W,
// ratios), heights in m, rates in kbit/s; dialogs show dB and dBm.
#pragma once

#include <functional>

#include "app/Trl_Filename.h"
#include "network/Trl_RandomRegion.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "search/Trl_Assigner.h"
#include "toolkit/list.h"
#include "toolkit/point.h"
#include "toolkit/string.h"

namespace tk {
class window;
}
class Trl_Assignment;
class Trl_CoverageRaster;
class Trl_Imt2000Snapshot;
class Trl_PathLoss;
class Trl_RunningStats;
class Trl_Terrain;
class Trl_RxDistribution;

class Trl_Planner {
 public:
  // ---- parameters, in their order, with the defaults set by the constructor
  double pathloss_constant;       // dB
  double pathloss_factor;         // dB per decade of m
  double ebno_up;                 // linear
  double ebno_down;               // linear
  double tx_max_power;            // W
  double tx_pilot_power;          // W
  double tx_max_channel_power;    // W
  double tx_height_ground;        // m
  double tx_height_building;      // m
  double tx_gain;                 // linear
  double tx_noise_factor;         // linear
  double rx_noise_factor;         // linear
  double rx_max_power;            // W
  double rx_min_power;            // W
  double rx_gain;                 // linear
  double rx_activity;             // fraction
  double orthogonality;           // fraction
  double rx_height;               // m
  double rate_down;               // kbit/s
  double rate_up;                 // kbit/s
  double frequency;               // GHz
  double bandwidth;               // MHz
  double temperature;             // degrees Celsius
  double tolerance;               // linear
  double validation_requirement;  // fraction
  int max_iterations;
  int max_stagnation;
  tk::point tx_box_min, tx_box_max;  // m
  tk::point rx_box_min, rx_box_max;  // m
  int visualization_radius;          // cells
  Trl_RandomRegion rx_region;
  Trl_RandomRegion tx_region;
  int search_tries;
  int validation_tries;
  double activation;  // fraction
  tk::list<Trl_Rx> rx_list;
  tk::list<Trl_Tx> tx_list;
  Trl_Terrain* terrain;                // reference counted
  Trl_RxDistribution* distribution;   // reference counted
  Trl_Filename start_dir;
  Trl_Filename rx_file;
  Trl_Filename distribution_file;
  Trl_Filename tx_file;
  Trl_Filename ter_file;
  Trl_Filename terrain_file;
  Trl_Filename assignment_file;
  Trl_Assignment* assignment;  // owned
  tk::window* window;
  int spare_count;
  int algorithm;          // 0 "HBB", 1 "GA"
  int propagation_model;  // 0 simple, 1 Xia-Bertoni, 2 Wang
  int spare_flag;
  int rx_objective;       // 0 "PS", 1 "MP"
  int solver_strategy;
  bool validate_downlink;
  bool only_in_street;
  bool only_on_building;
  bool status_shown;
  double far_pathloss_constant;  // dB
  double far_pathloss_factor;    // dB per decade of m
  double lmsd_linear;
  double lmsd_exponent;
  double indoor_attenuation;  // linear
  double height_tolerance;    // 0 to 1
  double max_cell_radius;     // m
  bool geometric_average;
  double wang_a;
  double wang_b;  // linear
  double wang_c;  // linear

  // The single solver and the current propagation model (owned).
  Trl_Assigner assigner;
  Trl_PathLoss* model;

  Trl_Planner();
  ~Trl_Planner();
  Trl_Planner(const Trl_Planner&) = delete;
  Trl_Planner& operator=(const Trl_Planner&) = delete;

  // ---- the spine
  tk::window* create_window();
  void begin_command();
  void end_command();
  void idle();
  void show_status(const tk::string& text);
  void message(const tk::string& text);
  bool confirm(const tk::string& text);
  bool pick_point(const tk::string& text, tk::point& p);

  // ---- the plan view
  void redraw();
  void fit_view();
  void mark_served();
  void draw_terrain();
  void draw_clutter();
  void draw_distribution();
  void draw_raster(bool heights);
  const Trl_Tx* pick_station_on_terrain();

  // ---- loading and storing
  void load_terrain();
  void load_tx();
  void load_rx();
  void load_distribution(int kind);
  void remove_distribution();
  void remove_terrain();
  void store_assignment();
  // The records a loader or generator copies: the current Tx and Rx values and heights.
  Trl_Tx tx_template() const;
  Trl_Rx rx_template() const;

  // ---- parameter dialogs
  void set_heights();
  void set_umts_parameters();
  void set_model();
  void set_xia_bertoni();
  void set_simple_model();
  void set_search_parameters();
  void set_best_set_parameters();

  // ---- generators and pickers
  void generate_tx();
  void generate_uniform_rx();
  void generate_distributed_rx();
  void generate_imt2000_rx();
  // Replaces the mobile users by a generated snapshot, unless it holds none; returns the
  // number of mobile users.
  int install_rx(const Trl_Imt2000Snapshot& users);
  void edit_tx();
  void draw_coverage();
  // The path loss map round a base station on the terrain, with the Xia-Bertoni model of the
  // planner's parameters over the square of visualization_radius; the caller holds the one
  // reference. progress is told the share of the square's border done.
  Trl_CoverageRaster* coverage_of(const Trl_Tx& station, bool in_buildings,
                                  const std::function<void(double)>& progress);
  // Deletes the current assignment, if any.
  void drop_assignment();
  // True without a terrain, or when its height grid overlaps or touches the rectangle (m).
  bool overlaps_terrain(double xmin, double ymin, double xmax, double ymax) const;
  // Fills rx_list from the distribution with `activation` and `only_in_street`, and sets the
  // users' box to the distribution's.
  void sample_distribution();
  // Fills rx_list uniformly from rx_region, in streets only when asked; the box is the region.
  void draw_uniform_users(bool streets_only);
  // A fresh sample of users for the best-set search: from the distribution when one is
  // loaded, else uniform in rx_region; the assignment goes. Returns the number of users.
  int generate_users();

  // ---- runs: working order, solver steps, the three Run commands
  int working_list(tk::list<Trl_Tx>& list);
  void mark_used();
  void mark_set(const tk::list<int>& set);
  // Makes `model` anew from the "Set model" choice and the current parameters.
  void choose_model();
  void prepare_assignment(tk::list<Trl_Tx>& list);
  bool solve_current(Trl_RunningStats* stats);
  bool compute_all(tk::list<Trl_Tx>& list, int& fixed_count, Trl_RunningStats* stats);
  void compute_assignment_command();
  void simple_search_command();
  void best_set_search_command();

  // The shown form of a path: every backslash turned into a forward slash.
  static tk::string shown_path(const tk::string& path);
};

// The one planner of the program and the flag that ends its event loop.
extern Trl_Planner planner;
extern bool exit_flag;

// True when the planner asked, by a click in the main window, to stop the running search.
bool stop_requested();
