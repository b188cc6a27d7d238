#include "search/Trl_Assigner.h"

#include <smmintrin.h>

#include <cmath>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <limits>
#include <memory>
#include <thread>
#include <utility>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "propagation/Trl_PathLoss.h"
#include "propagation/Trl_XiaBertoni.h"
#include "raster/Trl_Terrain.h"
#include "search/Trl_RunningStats.h"
#include "search/Trl_WorkerThread.h"
#include "toolkit/error.h"
#include "toolkit/matrix.h"

namespace {

const double largest = std::numeric_limits<double>::max();

void index_error() { tk::error_handler(2, "array::entry index out of range"); }

// A vector of the solver read by base station number: the number comes from the caller's
// arrays and is checked like any toolkit array index.
double by_number(const std::vector<double>& v, int n) {
  if (n < 0 || n >= static_cast<int>(v.size())) {
    index_error();
    return 0;
  }
  return v[n];
}

}  // namespace

// ---------------------------------------------------------------- table

void Trl_Assigner::table::make(int rows, int columns, bool zero) {
  row_count = rows < 0 ? 0 : rows;
  column_count = columns < 0 ? 0 : columns;
  start.resize(row_count);
  for (int t = 0; t < row_count; ++t) start[t] = static_cast<size_t>(t) * column_count;
  const size_t size = static_cast<size_t>(row_count) * column_count;
  if (zero) values.assign(size, 0.0);
  else values.resize(size);
}

void Trl_Assigner::table::make(int rows, int columns, const std::vector<int>& stored_as) {
  row_count = rows < 0 ? 0 : rows;
  column_count = columns < 0 ? 0 : columns;
  start.resize(row_count);
  size_t size = 0;
  for (int t = 0; t < row_count; ++t) {
    if (stored_as[t] == t) {
      start[t] = size;
      size += column_count;
    } else {
      start[t] = start[stored_as[t]];
    }
  }
  values.resize(size);
}

void Trl_Assigner::table::release() {
  row_count = column_count = 0;
  std::vector<size_t>().swap(start);
  std::vector<double, unset_allocator<double>>().swap(values);
}

double Trl_Assigner::table::operator()(int t, int r) const {
  if (t < 0 || t >= row_count || r < 0 || r >= column_count) {
    index_error();
    return 0;
  }
  return values[start[t] + r];
}

void Trl_Assigner::table::set(int t, int r, double value) {
  if (t < 0 || t >= row_count || r < 0 || r >= column_count) {
    index_error();
    return;
  }
  values[start[t] + r] = value;
}

// ---------------------------------------------------------------- preparation

Trl_Assigner::parameters::parameters()
    : tolerance(std::pow(10.0, 0.003)),
      max_iterations(100),
      validate_downlink(true),
      strategy(0),
      bandwidth(5),
      temperature(17) {}

Trl_Assigner::Trl_Assigner()
    : tolerance(std::pow(10.0, 0.003)),
      tx_count(0),
      rx_count(0),
      validate_downlink(false),
      rx_max_power_sum(0),
      max_iterations(0),
      strategy(0) {}

void Trl_Assigner::release() {
  path_gain.release();
  downlink_share.release();
  for (std::vector<double>* v : {&gamma_up, &tx_noise, &gamma_down, &rx_noise, &rx_max_power,
                                 &rx_activity, &tx_max_power, &tx_pilot_power,
                                 &tx_max_channel_power, &tx_orthogonality})
    std::vector<double>().swap(*v);
  reset();
}

void Trl_Assigner::reset() {
  tx_count = rx_count = 0;
  validate_downlink = false;
  tolerance = std::pow(10.0, 0.003);
  rx_max_power_sum = 0;
  max_iterations = 0;
}

void Trl_Assigner::prepare(const tk::list<Trl_Tx>& tx_list, const tk::list<Trl_Rx>& rx_list,
                           const parameters& settings, Trl_PathLoss& model,
                           const Trl_Terrain* terrain, const status_function& status) {
  Trl_XiaBertoni* urban = dynamic_cast<Trl_XiaBertoni*>(&model);
  Trl_Motorola* simple = dynamic_cast<Trl_Motorola*>(&model);
  bool filled = false;
  if (simple && !(urban && terrain && terrain->loaded())) {
    // Everything in one pass of two threads: the gains, and beside them the lists' values.
    size_tables(tx_list.size(), rx_list.size(), settings, false);
    filled = fill_simple_gains(tx_list, rx_list, *simple, &settings);
  }
  if (!filled) {
    make_tables(tx_list, rx_list, settings);
    if (urban && terrain && terrain->loaded())
      fill_path_gains_in_angular_order(tx_list, rx_list, *urban, *terrain, status);
    else
      fill_path_gains(tx_list, rx_list, model);
    fill_targets_and_noise(tx_list, rx_list, settings);
  }
  gains_normal = Trl_UplinkKernels::available();
  for (int k = 0; k < tx_count && gains_normal; ++k) {
    if (row_normal[k] < 0) row_normal[k] = Trl_UplinkKernels::normal_gains(path_gain.row(k), rx_count);
    gains_normal = row_normal[k] != 0;
  }
}

void Trl_Assigner::size_tables(int stations, int users, const parameters& settings, bool zero_targets) {
  // The old tables are dropped, but their storage is kept for the new ones: fresh pages
  // cost more than the computation of a table.
  reset();
  tx_count = stations;
  rx_count = users;
  // Both tables are written in full by the fill steps; the gains are zeroed first only
  // when a fill other than the row-wise one may leave a column out.
  path_gain.make(tx_count, rx_count, false);
  row_normal.assign(tx_count, -1);
  for (std::vector<double>* v : {&tx_max_power, &tx_pilot_power, &tx_max_channel_power, &tx_orthogonality})
    v->resize(tx_count);
  for (std::vector<double>* v : {&rx_max_power, &rx_activity}) v->resize(rx_count);
  if (zero_targets) {
    tx_noise.assign(tx_count, 0.0);
    for (std::vector<double>* v : {&gamma_up, &gamma_down, &rx_noise}) v->assign(rx_count, 0.0);
  } else {
    tx_noise.resize(tx_count);
    for (std::vector<double>* v : {&gamma_up, &gamma_down, &rx_noise}) v->resize(rx_count);
  }
  validate_downlink = settings.validate_downlink;
  tolerance = settings.tolerance;
  max_iterations = settings.max_iterations;
  strategy = settings.strategy;
}

void Trl_Assigner::take_stations(const tk::list<Trl_Tx>& tx_list, const parameters* settings) {
  const double chip_rate = settings ? settings->bandwidth * 1e6 : 1;  // chips per second
  int t = 0;
  for (const Trl_Tx& tx : tx_list) {
    tx_max_power[t] = tx.max_power;
    tx_pilot_power[t] = tx.pilot_power;
    tx_max_channel_power[t] = tx.max_channel_power;
    tx_orthogonality[t] = tx.orthogonality;
    if (settings) tx_noise[t] = tx.noise(settings->temperature, chip_rate);
    ++t;
  }
}

void Trl_Assigner::take_users(const tk::list<Trl_Rx>& rx_list, const parameters* settings) {
  const double chip_rate = settings ? settings->bandwidth * 1e6 : 1;
  const double per_chip = 1 / chip_rate;
  int r = 0;
  for (const Trl_Rx& rx : rx_list) {
    rx_max_power[r] = rx.max_power;
    rx_max_power_sum += rx.max_power;
    rx_activity[r] = rx.activity;
    if (settings) {
      gamma_up[r] = rx.required_up(per_chip);
      gamma_down[r] = rx.required_down(per_chip);
      rx_noise[r] = rx.noise(settings->temperature, chip_rate);
    }
    ++r;
  }
}

void Trl_Assigner::make_tables(const tk::list<Trl_Tx>& tx_list, const tk::list<Trl_Rx>& rx_list,
                               const parameters& settings) {
  size_tables(tx_list.size(), rx_list.size(), settings, true);
  take_stations(tx_list, nullptr);
  take_users(rx_list, nullptr);
}

void Trl_Assigner::fill_path_gains(const tk::list<Trl_Tx>& tx_list,
                                   const tk::list<Trl_Rx>& rx_list, Trl_PathLoss& model) {
  if (Trl_Motorola* simple = dynamic_cast<Trl_Motorola*>(&model)) {
    if (fill_simple_gains(tx_list, rx_list, *simple, nullptr)) return;
  }
  path_gain.make(tx_count, rx_count, true);
  int t = 0;
  for (const Trl_Tx& tx : tx_list) {
    for (const Trl_Rx& rx : rx_list) path_gain.set(t, rx.number, model.gain(tx, rx));
    ++t;
  }
}

bool Trl_Assigner::parallel_fill = true;
int Trl_Assigner::terrain_fill_threads = 1;

namespace {

// The users in the angular order round the reference cell (ref_i, ref_j): the angle of each
// user is taken once, as the three-way comparison of the users takes it, and a stable sort
// gives the one order that sorting the list by that comparison gives.
void angular_order(int ref_i, int ref_j, const std::vector<const Trl_Rx*>& users,
                   std::vector<std::pair<double, const Trl_Rx*>>& order) {
  order.clear();
  for (const Trl_Rx* rx : users)
    order.emplace_back(std::atan2(rx->cell_j - ref_j, rx->cell_i - ref_i), rx);
  std::stable_sort(order.begin(), order.end(),
                   [](const std::pair<double, const Trl_Rx*>& a,
                      const std::pair<double, const Trl_Rx*>& b) { return a.first < b.first; });
}

// What one thread of the angular fill reuses from row to row.
struct row_scratch {
  std::vector<const Trl_Rx*> near;
  std::vector<std::pair<double, const Trl_Rx*>> order;
};

tk::string pathloss_progress(int done, int total) {
  char text[64];
  std::snprintf(text, sizeof text, "%d of %d done.", done, total);
  return tk::string(" Computing pathloss: ") + tk::string(text);
}

}  // namespace

void Trl_Assigner::fill_path_gains_in_angular_order(const tk::list<Trl_Tx>& tx_list,
                                                    const tk::list<Trl_Rx>& rx_list,
                                                    Trl_XiaBertoni& model,
                                                    const Trl_Terrain& terrain,
                                                    const status_function& status) {
  path_gain.make(tx_count, rx_count, true);
  const Trl_Grid& grid = terrain.height_grid();
  std::vector<Trl_Tx> stations;
  for (const Trl_Tx& tx : tx_list) {
    stations.push_back(tx);
    stations.back().set_cell(grid);
  }
  std::vector<const Trl_Rx*> users;
  bool numbered = true;  // every column in the table; otherwise one thread reports the bad one
  for (const Trl_Rx& rx : rx_list) {
    users.push_back(&rx);
    numbered = numbered && rx.number >= 0 && rx.number < rx_count;
  }

  // One row: the users beyond the model's radius in list order (their gain reads no raster),
  // the others sorted round the base station; each gain goes into the column of the user's
  // number. The gain of a pair does not depend on the pairs before it.
  auto fill_row = [&](int t, Trl_XiaBertoni& m, int ref_i, int ref_j, row_scratch& scratch) {
    const Trl_Tx& tx = stations[t];
    scratch.near.clear();
    for (const Trl_Rx* rx : users) {
      const double dx = tx.position.xcoord() - rx->position.xcoord();
      const double dy = tx.position.ycoord() - rx->position.ycoord();
      const double d = std::sqrt(dx * dx + dy * dy);
      if (d > m.max_radius) path_gain.set(t, rx->number, m.far_gain(tx, *rx, d));
      else scratch.near.push_back(rx);
    }
    angular_order(ref_i, ref_j, scratch.near, scratch.order);
    // Each gain starts the next user's profile, so that its reads overlap this one's work.
    const size_t near = scratch.order.size();
    for (size_t q = 0; q < near; ++q) {
      const Trl_Rx* next = q + 1 < near ? scratch.order[q + 1].second : nullptr;
      path_gain.set(t, scratch.order[q].second->number, m.gain_then_prepare(tx, *scratch.order[q].second, next));
    }
  };
  std::atomic<int> done(0);
  auto report = [&]() {
    const int now = ++done;
    if (status) status(pathloss_progress(now, tx_count));
  };

  const int threads = std::max(1, std::min(terrain_fill_threads, tx_count));
  // Users in angular order: a line mostly repeats the cells of the one before.
  model.reuse_profile_cells = true;
  if (threads == 1 || !numbered) {
    model.decode_clutter_rows(0, 1);
    row_scratch scratch;
    for (int t = 0; t < tx_count; ++t) {
      Trl_Rx::set_reference(stations[t]);
      fill_row(t, model, Trl_Rx::reference_i, Trl_Rx::reference_j, scratch);
      report();
    }
    return;
  }
  // A pool: each thread takes the next row not yet taken, with a model of its own, since a
  // model keeps the scratch of its last call. Only this thread shows progress, every count
  // from 1 to tx_count in turn as one thread would; the class-wide reference is left as one
  // thread leaves it.
  std::atomic<int> next(0);
  int shown = 0;
  auto show_up_to = [&](int count) {
    for (; shown < count; ++shown)
      if (status) status(pathloss_progress(shown + 1, tx_count));
  };
  auto work = [&](Trl_XiaBertoni& m, bool shows) {
    row_scratch scratch;
    for (int t; (t = next++) < tx_count;) {
      fill_row(t, m, stations[t].cell_i, stations[t].cell_j, scratch);
      const int now = ++done;
      if (shows) show_up_to(now);
    }
  };
  // The building bits first, all rows shared out among the threads, so that the models
  // copied from this one do not each decode them again.
  std::vector<std::thread> pool;
  for (int k = 1; k < threads; ++k) pool.emplace_back([&model, k, threads]() { model.decode_clutter_rows(k, threads); });
  model.decode_clutter_rows(0, threads);
  for (std::thread& helper : pool) helper.join();
  pool.clear();
  model.decode_clutter_rows(0, 1);  // only notes that every row is there
  std::vector<std::unique_ptr<Trl_XiaBertoni>> models;
  for (int k = 1; k < threads; ++k) models.emplace_back(new Trl_XiaBertoni(model));
  for (auto& m : models) pool.emplace_back(work, std::ref(*m), false);
  work(model, true);
  for (std::thread& helper : pool) helper.join();
  Trl_Rx::set_reference(stations[tx_count - 1]);
  show_up_to(tx_count);
}

// The simple model row by row on columns of the users' coordinates. Users whose numbers
// are not 0 to rx_count - 1 are left to the plain loop, which reports the bad index.
bool Trl_Assigner::gather_columns(const tk::list<Trl_Rx>& rx_list) {
  const int n = rx_count;
  bool in_order = true;
  int r = 0;
  // Users mostly share one antenna gain: its log is taken again only when the gain changes.
  double last_gain = 0, last_log = std::log(0.0);
  for (const Trl_Rx& rx : rx_list) {
    if (rx.number < 0 || rx.number >= n) return false;
    column_x[r] = rx.position.xcoord();
    column_y[r] = rx.position.ycoord();
    column_z[r] = rx.position.zcoord();
    if (!(rx.gain == last_gain)) {
      last_gain = rx.gain;
      last_log = std::log(rx.gain);
    }
    column_log_gain[r] = last_log;
    column_number[r] = rx.number;
    in_order = in_order && rx.number == r;
    ++r;
  }
  columns_in_order = in_order;
  if (!in_order) path_gain.make(tx_count, rx_count, true);
  return true;
}

// One row of gains, in blocks of users so that each block is checked (see gains_normal)
// while it is still in the first-level cache. Blocks start at multiples of eight, so the
// users fall into the same lanes as in one call for the whole row.
void Trl_Assigner::fill_simple_row(const Trl_Motorola& model, const Trl_Tx& tx, int t, double* scratch) {
  const int n = rx_count, block = 1024;
  const bool check = Trl_UplinkKernels::available();
  double* out = columns_in_order ? path_gain.row(t) : scratch;
  bool normal = true;
  for (int b = 0; b < n; b += block) {
    const int m = std::min(block, n - b);
    model.gain_row(tx, column_x.data() + b, column_y.data() + b, column_z.data() + b,
                   column_log_gain.data() + b, m, out + b);
    if (check && normal) normal = Trl_UplinkKernels::normal_gains(out + b, m);
  }
  if (check) row_normal[t] = normal;
  if (!columns_in_order) {
    double* row = path_gain.row(t);
    for (int k = 0; k < n; ++k) row[column_number[k]] = scratch[k];
  }
}

bool Trl_Assigner::fill_simple_gains(const tk::list<Trl_Tx>& tx_list,
                                     const tk::list<Trl_Rx>& rx_list, const Trl_Motorola& model,
                                     const parameters* settings) {
  // All storage is sized here, so that the threads allocate nothing but their scratch.
  std::vector<const Trl_Tx*> stations;
  stations.reserve(tx_count);
  for (const Trl_Tx& tx : tx_list) stations.push_back(&tx);
  std::vector<int> stored_as;
  if (settings) {
    take_stations(tx_list, settings);
    size_shares(stored_as);
  }
  for (std::vector<double>* v : {&column_x, &column_y, &column_z, &column_log_gain}) v->resize(rx_count);
  column_number.resize(rx_count);
  // The rows are independent and the model keeps no state, so the threads take the next row
  // not yet taken, with the same result as one thread. The second thread first takes the
  // users' values while this one gathers the columns.
  std::atomic<int> next_row(0);
  std::atomic<int> columns(0);  // 0 while being gathered, 1 ready, -1 a number out of range
  auto take_rows = [&]() {
    std::vector<double> scratch(columns_in_order ? 0 : rx_count);
    for (int t; (t = next_row.fetch_add(1, std::memory_order_relaxed)) < tx_count;)
      fill_simple_row(model, *stations[t], t, scratch.data());
  };
  auto second = [&]() {
    if (settings) {
      take_users(rx_list, settings);
      fill_share_rows(stored_as);
    }
    int state;
    while ((state = columns.load(std::memory_order_acquire)) == 0) std::this_thread::yield();
    if (state > 0) take_rows();
  };
  const long long pairs = static_cast<long long>(tx_count) * rx_count;
  const bool parallel = parallel_fill && tx_count >= 2 && pairs >= 20000;
  // The kept worker of the uplink sweeps, which is mostly awake after a sweep or a fill:
  // starting a thread of its own cost 100 - 150 us here, a sixth of the table of 40 x 10,000.
  const bool shared = parallel && Trl_WorkerThread::shared().start(second);
  const bool numbered = gather_columns(rx_list);
  columns.store(numbered ? 1 : -1, std::memory_order_release);
  if (shared) {
    if (numbered) take_rows();
    Trl_WorkerThread::shared().wait();
  } else {
    second();
  }
  return numbered;
}

// Base stations usually share one orthogonality, and then one row of shares: a row equal
// to an earlier one is stored once.
void Trl_Assigner::size_shares(std::vector<int>& stored_as) {
  stored_as.resize(tx_count);
  for (int t = 0; t < tx_count; ++t) {
    int same = 0;
    while (same < t && tx_orthogonality[same] != tx_orthogonality[t]) ++same;
    stored_as[t] = same;
  }
  downlink_share.make(tx_count, rx_count, stored_as);
}

void Trl_Assigner::fill_share_rows(const std::vector<int>& stored_as) {
  for (int t = 0; t < tx_count; ++t) {
    if (stored_as[t] != t) continue;
    double* share = downlink_share.row(t);
    for (int k = 0; k < rx_count; ++k)
      share[k] = gamma_down[k] / (tx_orthogonality[t] * gamma_down[k] + 1);
  }
}

void Trl_Assigner::fill_targets_and_noise(const tk::list<Trl_Tx>& tx_list,
                                          const tk::list<Trl_Rx>& rx_list,
                                          const parameters& settings) {
  // The lists' values again, now with the settings; the sum of the users' limits is taken
  // again from 0, in the same order, so it comes out the same.
  rx_max_power_sum = 0;
  take_stations(tx_list, &settings);
  take_users(rx_list, &settings);
  std::vector<int> stored_as;
  size_shares(stored_as);
  fill_share_rows(stored_as);
}

void Trl_Assigner::strongest_server(tk::array<int>& serving) const {
  for (int r = 0; r < rx_count; ++r) {
    int best = 0;
    for (int t = 1; t < tx_count; ++t)
      if (path_gain.row(t)[r] > path_gain.row(best)[r]) best = t;
    serving[r] = best;
  }
}

// ---------------------------------------------------------------- solve

bool Trl_Assigner::solve(int used, tk::vector& rx_downlink, tk::vector& rx_uplink,
                         tk::vector& tx_downlink, tk::array<int>& serving, tk::array<int>& rows,
                         const tk::array<int>& selected, const tk::array<int>& tx_numbers,
                         bool validate, Trl_RunningStats* stats) {
  if (strategy < 0 || strategy > 3) return false;

  // The selected rows of the tables, walked in position order, once per call. Each sweep
  // then touches only used * rx_count gains, row after row.
  gain_rows.clear();
  share_rows.clear();
  row_noise.clear();
  row_number.clear();
  for (int k = 0; k < tx_count && static_cast<int>(gain_rows.size()) < used; ++k) {
    if (!selected[k]) continue;
    rows[static_cast<int>(gain_rows.size())] = tx_numbers[k];
    row_number.push_back(tx_numbers[k]);
    gain_rows.push_back(path_gain.row(k));
    share_rows.push_back(downlink_share.row(k));
    row_noise.push_back(tx_noise[k]);
  }
  used = static_cast<int>(gain_rows.size());  // fewer switched on than announced: those there are

  power.resize(rx_count);
  previous.resize(rx_count);
  running.resize(rx_count);
  interference.resize(used);
  server.resize(rx_count);
  for (int r = 0; r < rx_count; ++r) server[r] = serving[r];
  if ((strategy == 2 || strategy == 3) && Trl_UplinkKernels::available()) wide.bind(selected_rows(used));

  if (!iterate(used, stats)) return false;

  for (int r = 0; r < rx_count; ++r) {
    rx_uplink[r] = power[r];
    serving[r] = static_cast<int>(server[r]);
  }
  if (!validate || !validate_downlink) return true;
  return solve_downlink(used, rx_downlink, tx_downlink);
}

// Runs sweeps until the powers settle. The sweep counter is tested before each sweep, so
// max_iterations sweeps run at most.
bool Trl_Assigner::iterate(int used, Trl_RunningStats* stats) {
  const bool from_above = strategy == 1 || strategy == 3;
  const bool in_sequence = strategy == 2 || strategy == 3;
  wide.forget_checks();
  if (from_above) start_from_above();
  else start_from_below(used);
  for (int sweeps = 0;;) {
    if (sweeps >= max_iterations) return false;
    ++sweeps;
    if (in_sequence) sweep_in_sequence(used);
    else sweep_simultaneous(used, sweeps > 1 || !from_above);
    // From below the powers only rise, so a user over its limit stays there; from above
    // they only fall, so the iteration goes on.
    if (over_limit()) {
      if (!from_above) return false;
      continue;
    }
    if (worst_change() < tolerance) {
      if (stats) stats->add(sweeps);
      return true;
    }
  }
}

Trl_UplinkKernels::rows Trl_Assigner::selected_rows(int used) const {
  return Trl_UplinkKernels::rows{gain_rows.data(), row_noise.data(), used, rx_count, gains_normal};
}

Trl_UplinkKernels::users Trl_Assigner::user_columns() {
  return Trl_UplinkKernels::users{gamma_up.data(), rx_activity.data(), server.data(), rx_max_power.data()};
}

// Each user starts at the power it would need alone at its best row.
void Trl_Assigner::start_from_below(int used) {
  if (Trl_UplinkKernels::available()) {
    wide.least_alone(selected_rows(used), gamma_up.data(), power.data());
    return;
  }
  for (int r = 0; r < rx_count; ++r) {
    double least = largest;
    for (int c = 0; c < used; ++c) {
      const double need = gamma_up[r] / gain_rows[c][r] * row_noise[c];
      if (need < least) least = need;
    }
    power[r] = least;
  }
}

void Trl_Assigner::start_from_above() {
  std::copy(rx_max_power.begin(), rx_max_power.end(), power.begin());
}

namespace {

// Sum of p[j] * g[j] in four interleaved partial sums, which the compiler keeps in vector
// registers; the grouping does not depend on the values, so equal rows give equal sums.
double weighted_sum(const double* p, const double* g, int n) {
  double s0 = 0, s1 = 0, s2 = 0, s3 = 0;
  int j = 0;
  for (; j + 4 <= n; j += 4) {
    s0 += p[j] * g[j];
    s1 += p[j + 1] * g[j + 1];
    s2 += p[j + 2] * g[j + 2];
    s3 += p[j + 3] * g[j + 3];
  }
  for (; j < n; ++j) s0 += p[j] * g[j];
  return (s0 + s1) + (s2 + s3);
}

// One row of the simultaneous sweep, two users at a time: the need
// q = ((I - old p * g) * activity + N) * gamma / g, in this order of operations, and the
// strict minimum with the row noted as a double.
void improve_by_row(int n, double total, double noise, double row, const double* g,
                    const double* old, const double* activity, const double* target, double* p,
                    double* best) {
  const __m128d I = _mm_set1_pd(total), N = _mm_set1_pd(noise), C = _mm_set1_pd(row);
  int r = 0;
  for (; r + 2 <= n; r += 2) {
    const __m128d gr = _mm_loadu_pd(g + r);
    const __m128d others = _mm_sub_pd(I, _mm_mul_pd(_mm_loadu_pd(old + r), gr));
    const __m128d need = _mm_div_pd(
        _mm_mul_pd(_mm_add_pd(_mm_mul_pd(others, _mm_loadu_pd(activity + r)), N),
                   _mm_loadu_pd(target + r)),
        gr);
    const __m128d current = _mm_loadu_pd(p + r);
    const __m128d better = _mm_cmplt_pd(need, current);
    _mm_storeu_pd(p + r, _mm_blendv_pd(current, need, better));
    _mm_storeu_pd(best + r, _mm_blendv_pd(_mm_loadu_pd(best + r), C, better));
  }
  for (; r < n; ++r) {
    const double q = ((total - old[r] * g[r]) * activity[r] + noise) * target[r] / g[r];
    if (q < p[r]) {
      p[r] = q;
      best[r] = row;
    }
  }
}

}  // namespace

// Every user takes the row that needs the least power, given the powers before the sweep.
// Rows run from the last to the first and replace only on a strict improvement, so among
// equal rows the higher one keeps the user. Users are independent within a row.
// `continuing`: the powers are those the last sweep or the start from below left.
void Trl_Assigner::sweep_simultaneous(int used, bool continuing) {
  const int n = rx_count;
  if (Trl_UplinkKernels::available()) {
    // The wide loops write every power, so the old ones need no copy.
    power.swap(previous);
    wide.simultaneous(selected_rows(used), user_columns(), previous.data(), continuing, power.data());
    return;
  }
  std::copy(power.begin(), power.end(), previous.begin());
  std::fill(power.begin(), power.end(), largest);
  for (int c = used - 1; c >= 0; --c) {
    const double* g = gain_rows[c];
    improve_by_row(n, weighted_sum(previous.data(), g, n), row_noise[c], c, g, previous.data(),
                   rx_activity.data(), gamma_up.data(), power.data(), server.data());
  }
}

// Users are updated one after the other, from the last to the first, each seeing the powers
// already updated in this sweep. The interference of each row is kept current by adding the
// change of the one user that moved, instead of summing all users again.
void Trl_Assigner::sweep_in_sequence(int used) {
  const int n = rx_count;
  std::copy(power.begin(), power.end(), previous.begin());
  std::copy(power.begin(), power.end(), running.begin());
  std::fill(power.begin(), power.end(), largest);
  if (Trl_UplinkKernels::available()) {
    wide.in_sequence(selected_rows(used), user_columns(), running.data(), power.data());
    return;
  }
  for (int c = 0; c < used; ++c) interference[c] = weighted_sum(running.data(), gain_rows[c], n);
  const double* const* G = gain_rows.data();
  double* I = interference.data();
  for (int r = n - 1; r >= 0; --r) {
    const double own = running[r];
    const double activity = rx_activity[r], target = gamma_up[r];
    double p = largest;
    double best = server[r];
    for (int c = used - 1; c >= 0; --c) {
      const double g = G[c][r];
      const double q = ((I[c] - own * g) * activity + row_noise[c]) * target / g;
      if (q < p) {
        p = q;
        best = c;
      }
    }
    power[r] = p;
    server[r] = best;
    const double change = p - own;
    for (int c = 0; c < used; ++c) I[c] += change * G[c][r];
    running[r] = p;
  }
}

bool Trl_Assigner::over_limit() const {
  if (wide.last_checks().ready) return wide.last_checks().over_limit;
  bool over = false;
  for (int r = 0; r < rx_count; ++r) over |= power[r] > rx_max_power[r];
  return over;
}

double Trl_Assigner::worst_change() const {
  if (wide.last_checks().ready) return wide.last_checks().largest_change;
  if (Trl_UplinkKernels::available()) return Trl_UplinkKernels::largest_change(power.data(), previous.data(), rx_count);
  double worst = 0;
  for (int r = 0; r < rx_count; ++r) {
    const double up = power[r] / previous[r];
    const double down = previous[r] / power[r];
    const double change = up > down ? up : down;
    if (change > worst) worst = change;
  }
  return worst;
}

// The downlink powers of the rows that serve somebody, from the SIR condition of each user,
// power * gain / (noise + interference) = gamma_down, with the own cell's interference scaled
// by the orthogonality factor. Vectors of the base stations are read by number, the gain
// rows by compact row.
bool Trl_Assigner::solve_downlink(int used, tk::vector& rx_downlink, tk::vector& tx_downlink) {
  const int n = rx_count;
  // Rows that serve at least one user, each with its position in the linear system.
  position_of.assign(static_cast<size_t>(used), -1);
  for (int r = 0; r < n; ++r) {
    const int s = static_cast<int>(server[r]);
    if (s < 0 || s >= used) {
      index_error();
      return false;
    }
    position_of[s] = 0;
  }
  row_at.clear();
  for (int c = 0; c < used; ++c)
    if (position_of[c] == 0) {
      position_of[c] = static_cast<int>(row_at.size());
      row_at.push_back(c);
    }
  const int m = static_cast<int>(row_at.size());
  const size_t width = static_cast<size_t>(m) + 1;
  const double* const* G = gain_rows.data();

  system.assign(static_cast<size_t>(m) * width, 0.0);
  for (int i = 0; i < m; ++i) {
    system[i * width + i] = 1;
    system[i * width + m] = by_number(tx_pilot_power, row_number[row_at[i]]);
  }

  for (int r = n - 1; r >= 0; --r) {
    const int s = static_cast<int>(server[r]);
    const int i = position_of[s];
    const double f = share_rows[s][r] / G[s][r];
    double* line = system.data() + i * width;
    line[m] += f * rx_noise[r];
    const double w_own = by_number(tx_orthogonality, row_number[s]);
    for (int j = 0; j < m; ++j) {
      const int t = row_at[j];
      const double w = t == s ? w_own : 1;
      line[j] -= G[t][r] * w * f;
    }
  }

  total.assign(static_cast<size_t>(m), 0.0);
  tk::solve_in_place(system.data(), m, total.data());
  for (int i = 0; i < m; ++i)
    if (total[i] < 0) return false;

  by_station.assign(static_cast<size_t>(tx_count), 0.0);
  for (int i = 0; i < m; ++i) {
    const int number = row_number[row_at[i]];
    if (number < 0 || number >= tx_count) index_error();
    else by_station[number] = total[i];
  }
  for (int k = 0; k < tx_count; ++k)
    if (by_station[k] > tx_max_power[k]) return false;

  int over = 0;
  for (int r = 0; r < n; ++r) {
    const int s = static_cast<int>(server[r]);
    const int number = row_number[s];
    const double w_own = by_number(tx_orthogonality, number);
    double acc = rx_noise[r];
    for (int j = 0; j < m; ++j) {
      const int t = row_at[j];
      const double w = t == s ? w_own : 1;
      acc += G[t][r] * w * total[j];
    }
    const double channel = downlink_share(number, r) / G[s][r] * acc;
    rx_downlink[r] = channel;
    if (channel > by_number(tx_max_channel_power, number)) ++over;
  }
  if (over) return false;
  for (int k = 0; k < tx_count; ++k) tx_downlink[k] = by_station[k];
  return true;
}
