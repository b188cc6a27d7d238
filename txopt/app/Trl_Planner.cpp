#include "app/Trl_Planner.h"

#include "app/Trl_Dialog.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <fstream>
#include <optional>

#include "app/Trl_Imt2000Command.h"
#include "network/Trl_Imt2000Snapshot.h"
#include "propagation/Trl_Motorola.h"
#include "network/Trl_RxGridDistribution.h"
#include "network/Trl_RxPolyDistribution.h"
#include "raster/Trl_CoverageRaster.h"
#include "raster/Trl_RasterDisplay.h"
#include "raster/Trl_Terrain.h"
#include "propagation/Trl_CoverageMap.h"
#include "propagation/Trl_PathLoss.h"
#include "propagation/Trl_Wang.h"
#include "propagation/Trl_XiaBertoni.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_BestSetSearch.h"
#include "search/Trl_GaSearch.h"
#include "search/Trl_SimpleSearch.h"
#include "toolkit/array.h"
#include "toolkit/directory.h"
#include "toolkit/window.h"

Trl_Planner planner;
bool exit_flag = false;

namespace {

double from_db(double db) { return std::pow(10.0, 0.1 * db); }
double from_dbm(double dbm) { return std::pow(10.0, 0.1 * (dbm - 30)); }

// A remembered file name in the starting directory.
Trl_Filename in_start_dir(const Trl_Filename& start, const char* stem, const char* extension) {
  return Trl_Filename(start.drive, start.directory, stem, extension);
}

void redraw_main_window(tk::window*) { planner.redraw(); }

}  // namespace

// ======================================================================== the spine

Trl_Planner::Trl_Planner()
    : pathloss_constant(32.2),
      pathloss_factor(35.1),
      ebno_up(from_db(5.5)),
      ebno_down(from_db(10)),
      tx_max_power(20),
      tx_pilot_power(2),
      tx_max_channel_power(1),
      tx_height_ground(35),
      tx_height_building(5),
      tx_gain(from_db(9)),
      tx_noise_factor(from_db(5)),
      rx_noise_factor(from_db(9)),
      rx_max_power(from_dbm(21)),
      rx_min_power(from_dbm(-50)),
      rx_gain(from_db(-3)),
      rx_activity(0.66),
      orthogonality(0.4),
      rx_height(1.5),
      rate_down(12.2),
      rate_up(12.2),
      frequency(2),
      bandwidth(5),
      temperature(17),
      tolerance(from_db(0.03)),
      validation_requirement(0.9),
      max_iterations(100),
      max_stagnation(7),
      visualization_radius(150),
      rx_region(0, 1000, 0, 1000, 400),
      tx_region(20, 980, 20, 980, 40),
      search_tries(10),
      validation_tries(10),
      activation(0.001),
      terrain(nullptr),
      distribution(nullptr),
      start_dir("./", "", true),
      rx_file(in_start_dir(start_dir, "mu", ".drx")),
      distribution_file(in_start_dir(start_dir, "mu_dis", ".drd")),
      tx_file(in_start_dir(start_dir, "bs", ".dtx")),
      ter_file(in_start_dir(start_dir, "tarn200", ".ter")),
      terrain_file(in_start_dir(start_dir, "terrain", ".map")),
      assignment_file(in_start_dir(start_dir, "as", ".dat")),
      assignment(nullptr),
      window(nullptr),
      spare_count(5),
      algorithm(0),
      propagation_model(1),
      spare_flag(0),
      rx_objective(1),
      solver_strategy(0),
      validate_downlink(true),
      only_in_street(false),
      only_on_building(true),
      status_shown(false),
      far_pathloss_constant(32.2),
      far_pathloss_factor(35.1),
      lmsd_linear(5.5225),
      lmsd_exponent(1.8),
      indoor_attenuation(15.8493192),
      height_tolerance(0.95),
      max_cell_radius(1500),
      geometric_average(true),
      wang_a(4),
      wang_b(from_db(0)),
      wang_c(from_db(8)),
      model(nullptr) {}

Trl_Planner::~Trl_Planner() {
  delete assignment;
  assignment = nullptr;
  delete model;
  model = nullptr;
  if (terrain) terrain->release();
  terrain = nullptr;
  if (distribution) distribution->unref();
  distribution = nullptr;
}

tk::window* Trl_Planner::create_window() {
  window = new tk::window(600, 600, "Celvane");
  window->set_redraw(redraw_main_window);
  window->set_fg_color(tk::black);
  window->set_bg_color(tk::white);
  window->set_coordinate_handler(tk::show_mouse_position);
  return window;
}

void Trl_Planner::begin_command() {
  if (window) window->disable_panel();
}

void Trl_Planner::end_command() {
  if (window) window->enable_panel();
}

void Trl_Planner::idle() {
  if (window && status_shown) window->close_status_window();
  status_shown = false;
}

void Trl_Planner::show_status(const tk::string& text) {
  if (!window) return;
  if (!status_shown) window->open_status_window(16, 17);
  window->set_status_string(text);
  status_shown = true;
}

void Trl_Planner::message(const tk::string& text) {
  if (window) window->acknowledge(text);
}

bool Trl_Planner::confirm(const tk::string& text) { return window ? window->confirm(text) : false; }

bool Trl_Planner::pick_point(const tk::string& text, tk::point& p) {
  if (!window) return false;
  show_status(text);
  int button = window->read_mouse(p);
  idle();
  return button == 1;
}

tk::string Trl_Planner::shown_path(const tk::string& path) { return path.replace_all("\\", "/"); }

bool stop_requested() {
  if (!planner.window) return false;
  tk::point p;
  if (planner.window->get_mouse(p) == 0) return false;
  return planner.confirm("Do you want to stop the search?");
}

// ======================================================================== the plan view

void Trl_Planner::mark_served() {
  if (!assignment) return;
  int i = 0;
  for (Trl_Rx& rx : rx_list) rx.index = assignment->rows[assignment->serving[i++]];
}

void Trl_Planner::redraw() {
  if (!window) return;
  window->start_buffering();
  window->draw_filled_rectangle(window->xmin(), window->ymin(), window->xmax(), window->ymax(), tk::white);
  if (terrain) terrain->draw(*window);
  if (distribution) distribution->draw_outline(*window, tk::yellow);
  if (assignment) {
    mark_served();
    tk::array<tk::point> positions(tx_list.size());
    int k = 0;
    for (const Trl_Tx& tx : tx_list) positions[k++] = tx.position.to_point();
    for (const Trl_Rx& rx : rx_list) window->draw_segment(rx.position.to_point(), positions[rx.index], tk::pink);
  }
  for (const Trl_Rx& rx : rx_list) window->draw_pixel(rx.position.to_point(), rx.bearer);
  if (!tx_list.empty()) {
    static const int status_colour[] = {tk::green, tk::black, tk::violet, tk::red, tk::orange};
    window->set_node_width(4);
    for (const Trl_Tx& tx : tx_list)
      if (tx.status >= 0 && tx.status <= 4) window->draw_filled_node(tx.position.to_point(), status_colour[tx.status]);
  }
  window->flush_buffer();
  window->stop_buffering();
}

void Trl_Planner::fit_view() {
  if (!window) return;
  double xmin = 0, xmax = 100, ymin = 0;
  bool any = !rx_list.empty() || !tx_list.empty() || terrain || distribution;
  if (any) {
    xmin = ymin = DBL_MAX;
    xmax = -DBL_MAX;
    auto take_in = [&](const tk::point& low, const tk::point& high) {
      xmin = std::min(xmin, low.xcoord());
      xmax = std::max(xmax, high.xcoord());
      ymin = std::min(ymin, low.ycoord());
    };
    if (!rx_list.empty()) take_in(rx_box_min, rx_box_max);
    if (!tx_list.empty()) take_in(tx_box_min, tx_box_max);
    if (terrain && terrain->loaded()) {
      // Each raster's lattice widened by half a cell on every side.
      for (const Trl_Grid* g : {&terrain->height_grid(), &terrain->clutter_grid()})
        take_in(tk::point(g->x0 - 0.5 * g->dx, g->y0 - 0.5 * g->dy), tk::point(g->x1 + 0.5 * g->dx, g->y1 + 0.5 * g->dy));
    }
    if (distribution) take_in(distribution->min_corner(), distribution->max_corner());
    double w = xmax - xmin;
    xmin -= 0.1 * w;
    xmax += 0.1 * w;
    ymin -= 0.1 * w;
  }
  window->init(xmin, xmax, ymin);
}

// The raster excerpt of 2 r cells around the base station nearest to a pick, in a window
// of its own: heights for "Draw terrain", buildings for "Draw building clutter".
void Trl_Planner::draw_raster(bool heights) {
  const Trl_Tx* tx = pick_station_on_terrain();
  if (!tx) return;
  tk::point at = tx->position.to_point();
  int r = visualization_radius;
  if (heights) {
    const Trl_Grid& g = terrain->height_grid();
    int i = g.column_of(at), j = g.row_of(at);
    terrain->heightfield->set_view(i - r, j - r, i + r - 1, j + r - 1);
    terrain->show_heights(*window);
  } else {
    const Trl_Grid& g = terrain->clutter_grid();
    int i = g.column_of(at), j = g.row_of(at);
    terrain->clutter->set_view(i - r, j - r, i + r - 1, j + r - 1);
    terrain->show_clutter(*window);
  }
}

// The base station nearest to a pick, for the commands that look at the terrain round one;
// null when there is nothing to pick on or the planner breaks off.
const Trl_Tx* Trl_Planner::pick_station_on_terrain() {
  if (tx_list.empty()) {
    message("No base stations?");
    return nullptr;
  }
  if (!terrain) {
    message("No terrain?");
    return nullptr;
  }
  tk::point p;
  if (!pick_point(" Select base station! (Right button to BREAK)", p)) return nullptr;
  return &tx_list[Trl_Tx::nearest(tx_list, p)];
}

void Trl_Planner::draw_terrain() { draw_raster(true); }

void Trl_Planner::draw_clutter() { draw_raster(false); }

// The path loss round the picked base station on the square of half width
// visualization_radius, always by the Xia-Bertoni model of the current parameters, shown
// in the coverage display; nothing of it stays in the planner.
void Trl_Planner::draw_coverage() {
  const Trl_Tx* picked = pick_station_on_terrain();
  if (!picked) return;
  show_status(" Computing pathloss coverage map.");
  // The question comes after the set-up, which shows nothing, and before the loop.
  const bool in_buildings = confirm("Compute pathloss in buildings?");
  Trl_CoverageRaster* raster = coverage_of(*picked, in_buildings, [this](double fraction) {
    show_status(tk::string(" Computing pathloss coverage map, %.2f%% done.", fraction * 100));
  });
  Trl_RasterDisplay::of(Trl_RasterDisplay::coverage).show_coverage(*raster, true, 0, 0, 0, 0);
  raster->release();
}

Trl_CoverageRaster* Trl_Planner::coverage_of(const Trl_Tx& station, bool in_buildings,
                                             const std::function<void(double)>& progress) {
  Trl_Tx tx = station;
  const Trl_Grid& g = terrain->height_grid();
  tx.set_cell(g);
  int c0, r0, c1, r1;
  Trl_CoverageMap::square(g, tx.cell_i, tx.cell_j, visualization_radius, c0, r0, c1, r1);
  Trl_XiaBertoni xia_bertoni(terrain, frequency, max_cell_radius, height_tolerance, geometric_average, lmsd_linear,
                             lmsd_exponent, far_pathloss_constant, far_pathloss_factor, indoor_attenuation);
  Trl_CoverageMap map(*terrain, xia_bertoni, tx, rx_template(), in_buildings);
  return map.compute(c0, r0, c1, r1, progress ? progress : [](double) {});
}

void Trl_Planner::draw_distribution() {
  if (!distribution) {
    message("No mobile user distribution?");
    return;
  }
  distribution->draw(true, 0, 0, 0, 0);
}

// ======================================================================== loading and storing

void Trl_Planner::load_terrain() {
  if (!window) return;
  tk::string path;
  if (!terrain_file.dialog("Load", "Terrain", window, path)) return;
  show_status(tk::string(" Reading terrain file ") + shown_path(path));
  // The old terrain goes before the new file is known to be good.
  if (terrain) terrain->release();
  terrain = new Trl_Terrain;
  terrain->load(path, [this](const tk::string& text) { message(text); });
  if (!terrain->loaded()) {
    message(tk::string("Cannot read terrain map file: ") + shown_path(path));
    terrain->release();
    terrain = nullptr;
    return;
  }
  if (!rx_list.empty()) {
    rx_list.clear();
    message("The mobile users have been removed.");
  }
  if (!tx_list.empty()) {
    tx_list.clear();
    message("The base stations have been removed.");
  }
}

Trl_Tx Trl_Planner::tx_template() const {
  return Trl_Tx(tk::d3_point(0, 0, tx_height_ground), tk::string(""), -1, tx_max_power, tx_pilot_power,
                tx_max_channel_power, tx_gain, tx_noise_factor, orthogonality, Trl_Tx::usable);
}

Trl_Rx Trl_Planner::rx_template() const {
  return Trl_Rx(tk::d3_point(0, 0, rx_height), 1, ebno_down, ebno_up, rx_noise_factor, rx_max_power, rx_min_power,
                rx_gain, rx_activity, rate_down, rate_up, 0);
}

void Trl_Planner::load_tx() {
  if (!window) return;
  tk::string path;
  if (!tx_file.dialog("Load", "Base station", window, path)) return;
  const tk::string shown = shown_path(path);
  show_status(tk::string(" Reading base station file ") + shown);
  std::ifstream in(tk::to_native_path(path));
  if (!in) {
    message(tk::string("Cannot read base station file: ") + shown);
    return;
  }
  tx_list.clear();
  delete assignment;
  assignment = nullptr;
  tk::point low, high;
  if (!Trl_Tx::read_list(in, tx_template(), tx_list, low, high)) {
    message("Error while reading base station file.");
    tx_list.clear();
    return;
  }
  tx_box_min = low;
  tx_box_max = high;
}

void Trl_Planner::load_rx() {
  if (!window) return;
  tk::string path;
  if (!rx_file.dialog("Load", "Mobile user", window, path)) return;
  const tk::string shown = shown_path(path);
  show_status(tk::string(" Reading mobile user file ") + shown);
  std::ifstream in(tk::to_native_path(path));
  if (!in) {
    message(tk::string("Cannot read mobile user file: ") + shown);
    return;
  }
  rx_list.clear();
  delete assignment;
  assignment = nullptr;
  tk::point low, high;
  int ignored = 0;
  if (!Trl_Rx::read_list(in, rx_template(), terrain, rx_list, low, high, ignored)) {
    message("Error while reading mobile user file.");
    rx_list.clear();
    return;
  }
  rx_box_min = low;
  rx_box_max = high;
  if (ignored) message(tk::string("%d", ignored) + " users being not on terrain ignored.");
}

void Trl_Planner::load_distribution(int kind) {
  if (!window) return;
  tk::string path;
  if (!distribution_file.dialog("Load", "Mobile user distribution", window, path)) return;
  // The status line names the last mobile user file while the distribution is read.
  show_status(tk::string(" Reading distribution parameter file ") + shown_path(rx_file.full_path()));
  std::ifstream in(tk::to_native_path(path));
  if (!in.is_open()) {
    message(tk::string("Cannot read mobile user distribution: ") + shown_path(distribution_file.full_path()));
    return;
  }
  if (distribution) distribution->unref();
  distribution = nullptr;
  if (kind == 1) {
    Trl_RxGridDistribution* grid = new Trl_RxGridDistribution(in);
    if (grid->valid)
      distribution = grid;
    else
      grid->unref();
  } else if (kind == 3) {
    Trl_RxPolyDistribution* polygons = new Trl_RxPolyDistribution(in);
    if (polygons->valid)
      distribution = polygons;
    else
      polygons->unref();
  }
  if (!distribution) {
    message("Error while reading mobile user distribution file.");
    rx_list.clear();
  }
}

void Trl_Planner::remove_distribution() {
  if (distribution) distribution->unref();
  distribution = nullptr;
}

void Trl_Planner::remove_terrain() {
  if (terrain) terrain->release();
  terrain = nullptr;
}

void Trl_Planner::store_assignment() {
  if (!window) return;
  if (!assignment) {
    message("No assignment available.");
    return;
  }
  tk::string path;
  if (!assignment_file.dialog("Store", "Assignment", window, path)) return;
  std::ofstream out(tk::to_native_path(path), std::ios::out | std::ios::trunc);
  if (!out) {
    message(tk::string("Cannot write assignment file: ") + shown_path(path));
    return;
  }
  const char* const separator = "# -----------------------------------\n";
  out << "# Celvane: assignment of mobile users to UMTS base stations\n";
  out << "# powers in dBm and W, base stations by their number in the list\n";
  out << separator;
  out << *assignment;
  out << separator;
  out << "# base station number/label table: \n";
  int position = 0;
  for (const Trl_Tx& tx : tx_list) out << position++ << " : " << tx.label << '\n';
  out << separator;
}

// ======================================================================== parameter dialogs

void Trl_Planner::set_heights() {
  Trl_Dialog d("Set heights", " Set heights ...");
  double& rx = d.real("Mobile user height [m]: ", rx_height);
  double& ground = d.real("Base station height over ground [m]: ", tx_height_ground);
  double& building = d.real("Base station height over building [m]: ", tx_height_building);
  int& radius = d.integer("Visualization radius [.]: ", visualization_radius);
  d.test([&] { return ground > 0; }, "Base station height over ground must be greater than 0.");
  d.test([&] { return building > 0; }, "Base station height over building must be greater than 0.");
  d.test([&] { return rx > 0; }, "Mobile user height must be greater than 0.");
  d.test([&] { return radius > 0; }, "Visualization radius must be greater than 0.");
  d.run(*this);
}

void Trl_Planner::set_umts_parameters() {
  using D = Trl_Dialog;
  D d("Set UMTS parameters", " Set UMTS parameters ...");
  d.real("Eb/N0 downlink [dB]: ", ebno_down, D::db);
  d.real("Eb/N0 uplink [dB]: ", ebno_up, D::db);
  double& dl_rate = d.real("Downlink bit rate [Kbit/s]: ", rate_down);
  double& ul_rate = d.real("Uplink bit rate [Kbit/s]: ", rate_up);
  d.real("Tx effective gain [dBi]: ", tx_gain, D::db);
  d.real("Tx noise figure [dB]: ", tx_noise_factor, D::db);
  double& max_power = d.real("Tx max. power [W]: ", tx_max_power);
  double& pilot = d.real("Tx pilot power [W]: ", tx_pilot_power);
  double& channel = d.real("Tx max. channel power [W]: ", tx_max_channel_power);
  double& ortho = d.real("Orthogonality factor [%]: ", orthogonality, D::percent);
  d.real("Rx effective gain [dBi]: ", rx_gain, D::db);
  d.real("Rx noise figure [dB]: ", rx_noise_factor, D::db);
  d.real("Rx max. power [dBmW]: ", rx_max_power, D::dbm);
  d.real("Rx min. power [dBmW]: ", rx_min_power, D::dbm);
  double& activity = d.real("Rx activity factor [%]: ", rx_activity, D::percent);
  double& freq = d.real("Frequency [GHz]: ", frequency);
  double& band = d.real("UMTS bandwidth [MHz]: ", bandwidth);
  double& temp = d.real("Temperature [°C]: ", temperature);
  d.test([&] { return activity > 0 && activity <= 100; }, "Activity factor must be percentage greater than 0.");
  d.test([&] { return freq > 0; }, "Tx frequency must be greater than 0.");
  d.test([&] { return ul_rate > 0; }, "UL bit rate must be greater than 0.");
  d.test([&] { return band > 0; }, "UMTS bandwidth must be greater than 0.");
  d.test([&] { return temp >= -273.18; }, "Temperature must be valid.");
  d.test([&] { return max_power > 0; }, "Tx max. power must be greater than 0.");
  d.test([&] { return pilot >= 0; }, "Tx pilot power must be positive.");
  d.test([&] { return max_power - pilot > 0; }, "Tx max. power minus tx pilot power must be positive.");
  d.test([&] { return channel > 0; }, "Tx max. channel power must be positive.");
  d.test([&] { return ortho > 0 && ortho <= 100; }, "Orthogonality factor must be percentage greater than 0.");
  d.test([&] { return dl_rate > 0; }, "DL bit rate must be positive.");
  d.run(*this);
}

void Trl_Planner::set_model() {
  Trl_Dialog d("Set propagation model", " Set propagation model ...");
  d.choice("Propagation model: ", propagation_model, "Simple", "XiaBertoni");
  d.run(*this);
}

void Trl_Planner::set_simple_model() {
  Trl_Dialog d("Set simple propagation parameters", " Set simple propagation parameters ...");
  d.real("Pathloss constant [dB]: ", pathloss_constant);
  d.real("Pathloss factor [dB/lg(m)]: ", pathloss_factor);
  d.run(*this);
}

void Trl_Planner::set_xia_bertoni() {
  Trl_Dialog d("Set Xia-Bertoni parameters", " Set Xia-Bertoni parameters ...");
  double& linear = d.real("Linear constant Lmsd: ", lmsd_linear);
  d.real("Exponent constant Lmsd: ", lmsd_exponent);
  // A plain fraction from 0 to 1, whatever its label says.
  double& height = d.real("Tolerance for height [%]: ", height_tolerance);
  double& radius = d.real("Maximum cell radius [m]: ", max_cell_radius);
  d.real("Far distance pathloss constant [dB]: ", far_pathloss_constant);
  d.real("Far distance pathloss factor [dB/lg(m)]: ", far_pathloss_factor);
  d.real("Indoor attenuation [dB]: ", indoor_attenuation, Trl_Dialog::db);
  d.choice("Averaging method: ", geometric_average, "avg", "geo");
  d.test([&] { return linear > 0; }, "Linear constant must be greater than 0.");
  d.test([&] { return height >= 0 && height <= 1; }, "Tolerance must be value in [0..1].");
  d.test([&] { return radius > 0; }, "Maximum cell radius must be greater than 0.");
  d.run(*this);
}

void Trl_Planner::set_search_parameters() {
  Trl_Dialog d("Set search parameters", " Set search parameters ...");
  int& iterations = d.integer("Max. iterations: ", max_iterations);
  int& stagnation = d.integer("Max. stagnation: ", max_stagnation);
  d.real("Tolerance [dB]: ", tolerance, Trl_Dialog::db);
  d.boolean("Validate Downlink: ", validate_downlink);
  d.choice("Rx objective: ", rx_objective, "PS", "MP");
  int& generations = d.integer("Number of generations: ", ga_search.generations);
  int& population = d.integer("Population size: ", ga_search.population_size);
  d.choice("Algorithm: ", algorithm, "HBB", "GA");
  d.carry(spare_count);
  d.test([&] { return iterations > 0; }, "Max. iteration number must be greater than 0.");
  // The search keeps its stagnation rounds in the bits of one 32-bit word.
  d.test([&] { return stagnation >= 0 && stagnation < 32; },
         "Max. stagnation number must be positive and less than 32.");
  d.test([&] { return population > 0; }, "Size of population must be greater than cero.");
  d.test([&] { return generations > 0; }, "Number of generations must be greater than cero.");
  d.run(*this);
}

// Two forms, chosen once at the opening: the uniform region without a distribution, the
// activation with one. Either ends by drawing the users the search starts from.
void Trl_Planner::set_best_set_parameters() {
  Trl_Dialog d("Set best-set parameters", " Set best-set parameters ...");
  const bool distributed = distribution != nullptr;
  const Trl_Grid* grid = terrain ? &terrain->height_grid() : nullptr;
  std::optional<Trl_Dialog::region_entries> r;
  double* percentage = nullptr;
  if (distributed) {
    percentage = &d.real("Activation percentage [%]: ", activation, Trl_Dialog::percent);
    if (terrain) d.boolean("Mobile users only in street: ", only_in_street);
  } else {
    r.emplace(d.region(rx_region, "Number of mobile users: ", grid));
  }
  int& searches = d.integer("Number of search tries: ", search_tries);
  int& validations = d.integer("Number of validation tries: ", validation_tries);
  double& requirement = d.real("Validation requirement [%]: ", validation_requirement, Trl_Dialog::percent);
  if (distributed) {
    d.test([=] { return *percentage > 0 && *percentage <= 100; },
           "Activation percentage must be percentage greater than zero");
  } else {
    d.region_rules(*r);
    d.test([&] { return r->count >= 1; }, "Number of mobile users must be greater than 0.");
  }
  d.test([&] { return searches >= 1; }, "Number of search tries must be greater than 0.");
  d.test([&] { return validations >= 1; }, "Number of validation tries must be greater than 0.");
  d.test([&] { return requirement >= 0 && requirement <= 100; }, "Validation requirement must be percentage.");
  if (!distributed)
    d.test([&] { return overlaps_terrain(r->xmin, r->ymin, r->xmax, r->ymax); },
           "Terrain does not overlap selected region.");
  if (!d.run(*this)) return;
  // The users the search starts from, drawn as it draws every further sample.
  generate_users();
}

int Trl_Planner::generate_users() {
  drop_assignment();
  if (distribution)
    sample_distribution();
  else
    draw_uniform_users(only_in_street);
  return rx_list.size();
}

// ======================================================================== generators and pickers

void Trl_Planner::drop_assignment() {
  delete assignment;
  assignment = nullptr;
}

bool Trl_Planner::overlaps_terrain(double xmin, double ymin, double xmax, double ymax) const {
  return !terrain || terrain->height_grid().overlaps(xmin, ymin, xmax, ymax);
}

// The count is tested before the region rules here; what precedes the overlap test (the
// assignment dropped, the region stored) stays done when the overlap test then refuses.
void Trl_Planner::generate_tx() {
  const Trl_Grid* grid = terrain ? &terrain->height_grid() : nullptr;
  Trl_Dialog d("Random base stations", " Set random base station distribution ...");
  Trl_Dialog::region_entries r = d.region(tx_region, "Number of base stations: ", grid);
  bool& on_building = terrain ? d.boolean("Only on building", only_on_building, Trl_Dialog::local) : only_on_building;
  d.test([&] { return r.count >= 2; }, "Number of base stations must be greater than 1.");
  d.region_rules(r);
  d.rule([this] { drop_assignment(); });
  d.store();
  d.rule([&] {
    tx_box_min = tk::point(r.xmin, r.ymin);
    tx_box_max = tk::point(r.xmax, r.ymax);
    show_status(" Computing base station distribution.");
  });
  d.test([&] { return overlaps_terrain(r.xmin, r.ymin, r.xmax, r.ymax); }, "Terrain does not overlap selected region.");
  if (!d.run(*this)) return;
  tx_list.clear();
  if (terrain)
    Trl_Tx::generate(tx_list, tx_template(), tx_region, *terrain, on_building, tx_height_building);
  else
    Trl_Tx::generate(tx_list, tx_template(), tx_region);
}

void Trl_Planner::generate_uniform_rx() {
  const Trl_Grid* grid = terrain ? &terrain->height_grid() : nullptr;
  Trl_Dialog d("Uniform mobile users distribution", " Set uniform mobile user distribution ...");
  Trl_Dialog::region_entries r = d.region(rx_region, "Number of mobile users: ", grid);
  // The street flag starts from the planner's but is not stored back.
  bool street_only = only_in_street;
  bool& streets = terrain ? d.boolean("Mobile users only in street: ", only_in_street, Trl_Dialog::local) : street_only;
  d.region_rules(r);
  d.test([&] { return r.count >= 1; }, "Number of mobile users must be greater than 0.");
  d.test([&] { return overlaps_terrain(r.xmin, r.ymin, r.xmax, r.ymax); }, "Terrain does not overlap selected region.");
  if (!d.run(*this)) return;
  drop_assignment();
  show_status(" Computing mobile user distribution.");
  draw_uniform_users(streets);
}

// rx_list made anew uniformly in rx_region; the users' box is the region, not the users'.
void Trl_Planner::draw_uniform_users(bool streets_only) {
  rx_box_min = tk::point(rx_region.xmin, rx_region.ymin);
  rx_box_max = tk::point(rx_region.xmax, rx_region.ymax);
  rx_list.clear();
  Trl_Rx::generate(rx_list, rx_template(), rx_region, streets_only, terrain);
}

void Trl_Planner::generate_distributed_rx() {
  if (!distribution) {
    message("No receiver distribution file loaded.");
    return;
  }
  Trl_Dialog d("Mobile users distribution", " Set mobile user distribution ...");
  double& percentage = d.real("Activation percentage [%]: ", activation, Trl_Dialog::percent);
  if (terrain) d.boolean("Mobile users only in street: ", only_in_street);
  d.test([&] { return percentage > 0 && percentage <= 100; },
         "Activation percentage must be percentage greater than zero");
  if (!d.run(*this)) return;
  drop_assignment();
  show_status(" Computing mobile user distribution.");
  sample_distribution();
}

void Trl_Planner::sample_distribution() {
  const Trl_RxTemplate values{rx_height, ebno_down,    ebno_up, rx_noise_factor, rx_max_power,
                              rx_min_power, rx_gain, rx_activity, rate_down, rate_up};
  distribution->sample(rx_list, terrain, activation, only_in_street, values);
  rx_box_min = distribution->min_corner();
  rx_box_max = distribution->max_corner();
}

void Trl_Planner::generate_imt2000_rx() { Trl_Imt2000Command::run(*this); }

// The users take the planner's UMTS values but an activity of 1, the Eb/N0 and rates of
// their two legs, and the uplink bearer.
int Trl_Planner::install_rx(const Trl_Imt2000Snapshot& users) {
  if (users.users() == 0) return rx_list.size();
  drop_assignment();
  rx_box_min = tk::point(DBL_MAX, DBL_MAX);
  rx_box_max = tk::point(-DBL_MAX, -DBL_MAX);
  rx_list.clear();
  for (int k = 0; k < users.users(); ++k) {
    const int up = users.bearers[2 * k], down = users.bearers[2 * k + 1];
    Trl_Rx rx(tk::d3_point(users.x(k), users.y(k), rx_height), k, users.ebno[2 * k + 1], users.ebno[2 * k],
              rx_noise_factor, rx_max_power, rx_min_power, rx_gain, 1.0, users.rates[down], users.rates[up], up);
    if (terrain) rx.set_cell(terrain->height_grid());
    rx_list.append(rx);
    rx_box_min = tk::point(std::min(rx_box_min.xcoord(), users.x(k)), std::min(rx_box_min.ycoord(), users.y(k)));
    rx_box_max = tk::point(std::max(rx_box_max.xcoord(), users.x(k)), std::max(rx_box_max.ycoord(), users.y(k)));
  }
  return rx_list.size();
}

// Picks and edits base stations until a pick is broken. A change of status moves an excluded
// station to the end of the list, a formerly excluded one to the front, drops the assignment
// and numbers the list anew; other changes leave the assignment alone.
void Trl_Planner::edit_tx() {
  if (tx_list.empty()) {
    message("No base stations?");
    return;
  }
  tk::point p;
  while (pick_point(" Select base station! (Right button to BREAK)", p)) {
    const tk::list_item it = Trl_Tx::nearest(tx_list, p);
    const int before = tx_list[it].status;
    tx_list[it].edit(*window);
    const int after = tx_list[it].status;
    if (after != before) {
      if (after == Trl_Tx::excluded) tx_list.move_to_back(it);
      if (before == Trl_Tx::excluded) tx_list.move_to_front(it);
      drop_assignment();
      int number = 0;
      for (Trl_Tx& tx : tx_list) tx.number = number++;
    }
    redraw();
  }
}

// ======================================================================== working order and marking

namespace {

// Moves the first `count` entries of `from` to the end of `to`, in order.
void move_front(tk::list<Trl_Tx>& from, int count, tk::list<Trl_Tx>& to) {
  for (int i = 0; i < count; ++i) to.append(from.pop());
}

// One level of the spatial order: short lists stand as they are; longer ones are sorted along
// the axis, halved, and each half ordered along the other axis.
void bisect(tk::list<Trl_Tx>& part, bool along_y, tk::list<Trl_Tx>& result) {
  if (part.size() < 3) {
    result.conc(part);
    return;
  }
  part.sort(along_y ? compare_tx_y : compare_tx_x);
  tk::list<Trl_Tx> first;
  move_front(part, part.size() / 2, first);
  bisect(first, !along_y, result);
  bisect(part, !along_y, result);
}

// The leaf order of a k-d tree, so that neighbours on the plan stand near each other in the
// list: sorted by x, halved, then each half bisected starting along y.
void spatial_order(tk::list<Trl_Tx>& list) {
  list.sort(compare_tx_x);
  tk::list<Trl_Tx> first, second;
  move_front(list, list.size() / 2, first);
  second.conc(list);
  bisect(first, true, list);
  bisect(second, true, list);
}

}  // namespace

// With a terrain: base stations off it are excluded and go to the end, 17 or more on it take
// the spatial order, and all are numbered by position. Then the working list: fixed ones at
// the front (in reverse list order), free ones after them, excluded ones left out.
int Trl_Planner::working_list(tk::list<Trl_Tx>& list) {
  list.clear();
  if (terrain) {
    tk::list<Trl_Tx> on, off;
    for (const Trl_Tx& tx : tx_list) {
      if (terrain->contains(tx.position.to_point())) {
        on.append(tx);
      } else {
        Trl_Tx outside(tx);
        outside.status = Trl_Tx::excluded;
        off.append(outside);
      }
    }
    if (on.size() >= 17) spatial_order(on);
    on.conc(off);
    tx_list.clear();
    tx_list.conc(on);
    int number = 0;
    for (Trl_Tx& tx : tx_list) tx.number = number++;
  }
  int fixed = 0;
  for (Trl_Tx& tx : tx_list) {
    if (tx.status == Trl_Tx::used || tx.status == Trl_Tx::unused) tx.status = Trl_Tx::usable;
    if (tx.status == Trl_Tx::usable) {
      list.append(tx);
    } else if (tx.status == Trl_Tx::fixed) {
      list.push(tx);
      ++fixed;
    }
  }
  return fixed;
}

// Marks on tx_list which base stations the current assignment uses: 0 becomes 2, then each
// selected one becomes 1, except a fixed one, which keeps 3.
void Trl_Planner::mark_used() {
  if (!assignment) return;
  const Trl_Assignment& a = *assignment;
  tk::array<int> flag(a.selected.size());
  for (int k = 0; k < flag.size(); ++k) flag[k] = 0;
  for (int k = a.selected.size() - 1; k >= 0; --k)
    if (a.selected[k] != 0) flag[a.tx_numbers[k]] = 1;
  for (Trl_Tx& tx : tx_list)
    if (tx.status == Trl_Tx::usable) tx.status = Trl_Tx::unused;
  int j = 0;
  for (Trl_Tx& tx : tx_list) {
    if (j >= flag.size()) break;
    if (flag[j++] == 1 && tx.status != Trl_Tx::fixed) tx.status = Trl_Tx::used;
  }
}

// Marks the base stations named in the set after a best-set search; a fixed one named there
// becomes 1 as well.
void Trl_Planner::mark_set(const tk::list<int>& set) {
  for (Trl_Tx& tx : tx_list)
    if (tx.status == Trl_Tx::usable) tx.status = Trl_Tx::unused;
  for (int number : set)
    for (Trl_Tx& tx : tx_list)
      if (tx.number == number) tx.status = Trl_Tx::used;
}

// ======================================================================== solver steps

// The propagation model of the "Set model" choice, made anew from the current parameters:
// 1 the Xia-Bertoni model on the current terrain (or none), 2 the lossless one, any other
// value the simple law.
void Trl_Planner::choose_model() {
  delete model;
  if (propagation_model == 2) {
    model = new Trl_Wang(wang_a, wang_b, wang_c);
    return;
  }
  if (propagation_model == 1) {
    model = new Trl_XiaBertoni(terrain, frequency, max_cell_radius, height_tolerance, geometric_average,
                               lmsd_linear, lmsd_exponent, far_pathloss_constant, far_pathloss_factor,
                               indoor_attenuation);
    return;
  }
  model = new Trl_Motorola(pathloss_constant, pathloss_factor);
}

void Trl_Planner::prepare_assignment(tk::list<Trl_Tx>& list) {
  delete assignment;
  assignment = nullptr;
  choose_model();
  Trl_Assigner::parameters settings;
  settings.tolerance = tolerance;
  settings.max_iterations = max_iterations;
  settings.validate_downlink = validate_downlink;
  settings.strategy = solver_strategy;
  settings.bandwidth = bandwidth;
  settings.temperature = temperature;
  assigner.prepare(list, rx_list, settings, *model, terrain,
                   [this](const tk::string& text) { show_status(text); });
  assignment = new Trl_Assignment(assigner, rx_objective, list);
  assignment->initial_servers();
}

bool Trl_Planner::solve_current(Trl_RunningStats* stats) {
  if (!assignment) return false;
  return assignment->solve(validate_downlink, stats);
}

bool Trl_Planner::compute_all(tk::list<Trl_Tx>& list, int& fixed_count, Trl_RunningStats* stats) {
  list.clear();
  fixed_count = working_list(list);
  prepare_assignment(list);
  assignment->select_all();
  const bool found = solve_current(stats);
  if (found) assignment->accumulate();
  return found;
}

// ======================================================================== the three Run commands

void Trl_Planner::compute_assignment_command() {
  begin_command();
  if (tx_list.empty() || rx_list.empty()) {
    message("No base stations or mobile users. Nothing to do?");
    end_command();
    return;
  }
  tk::list<Trl_Tx> working;
  int fixed_count = 0;
  if (compute_all(working, fixed_count, nullptr))
    show_status(" Assignment with all base stations found.");
  else
    message("No assignment with all base stations possible.");
  redraw();
  end_command();
}

void Trl_Planner::simple_search_command() { Trl_SimpleSearch::run(*this); }

void Trl_Planner::best_set_search_command() { Trl_BestSetSearch::run(*this); }
