// The power solver: the tables that do not depend on the chosen subset of base stations
// (linear path gains tx by rx, SIR targets, noise in W, limits in W), built once per pair of
// lists by prepare(), and solve(), which decides for one subset whether every mobile user can
// be served: an uplink power iteration under power control, then a direct linear solution of
// the downlink powers. One object lives as long as the program.
#pragma once

#include <functional>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "search/Trl_UplinkKernels.h"
#include "toolkit/array.h"
#include "toolkit/list.h"
#include "toolkit/string.h"
#include "toolkit/vector.h"

class Trl_Tx;
class Trl_Rx;
class Trl_PathLoss;
class Trl_Motorola;
class Trl_XiaBertoni;
class Trl_Terrain;
class Trl_RunningStats;

class Trl_Assigner {
 public:
  // A dense table of doubles, tx by rx, stored row after row so that one base station's
  // gains are contiguous. operator() checks its indexes; row() does not. Rows known to be
  // equal may share one storage (make with `stored_as`), so that they are written once.
  class table {
   public:
    table() : row_count(0), column_count(0) {}
    void make(int rows, int columns, bool zero);
    // Row t is kept in the storage of row stored_as[t] <= t; rows with stored_as[t] == t
    // have storage of their own.
    void make(int rows, int columns, const std::vector<int>& stored_as);
    void release();
    double operator()(int t, int r) const;
    double* row(int t) { return values.data() + start[t]; }
    const double* row(int t) const { return values.data() + start[t]; }
    int rows() const { return row_count; }
    int columns() const { return column_count; }
    void set(int t, int r, double value);

   private:
    int row_count;
    int column_count;
    // Leaves new doubles unset: the fill steps write every entry, and fresh pages are
    // then first touched by the threads that fill the rows rather than all by this one.
    template <class T>
    struct unset_allocator : std::allocator<T> {
      template <class U>
      struct rebind {
        typedef unset_allocator<U> other;
      };
      unset_allocator() = default;
      template <class U>
      unset_allocator(const unset_allocator<U>&) {}
      template <class U>
      void construct(U* p) { ::new (static_cast<void*>(p)) U; }
      template <class U, class... Args>
      void construct(U* p, Args&&... args) { ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...); }
    };
    std::vector<size_t> start;  // per row: offset of its storage in values
    std::vector<double, unset_allocator<double>> values;
  };

  // What prepare() takes from the planner.
  struct parameters {
    double tolerance;        // convergence ratio, linear
    int max_iterations;      // sweeps of the uplink iteration at most
    bool validate_downlink;  // run the downlink step at all
    int strategy;            // 0 to 3, see solve()
    double bandwidth;        // MHz
    double temperature;      // degrees Celsius
    parameters();
  };

  double tolerance;          // linear; 0.03 dB after release
  table path_gain;           // linear, antenna gains included; [position of tx][number of rx]
  table downlink_share;      // gamma_down / (orthogonality * gamma_down + 1); equal rows shared
  std::vector<double> gamma_up;    // rx: Eb/N0 * rate / chip rate
  std::vector<double> tx_noise;    // tx: W
  std::vector<double> gamma_down;  // rx
  std::vector<double> rx_noise;    // rx: W
  std::vector<double> rx_max_power;  // rx: W
  std::vector<double> rx_activity;   // rx
  std::vector<double> tx_max_power;  // tx: W
  std::vector<double> tx_pilot_power;        // tx: W
  std::vector<double> tx_max_channel_power;  // tx: W
  std::vector<double> tx_orthogonality;      // tx
  int tx_count;
  int rx_count;
  bool validate_downlink;
  double rx_max_power_sum;   // W, the scale of the objective "PS"
  int max_iterations;
  int strategy;              // 0 to 3

  Trl_Assigner();

  // Shows a progress text on the status line.
  typedef std::function<void(const tk::string&)> status_function;

  // Releases the old tables and builds new ones for the two lists. The gains come from the
  // model in the plain double loop (fill_path_gains), or, for the Xia-Bertoni model with a
  // loaded terrain, round each base station in angular order with progress on `status`.
  void prepare(const tk::list<Trl_Tx>& tx_list, const tk::list<Trl_Rx>& rx_list,
               const parameters& settings, Trl_PathLoss& model,
               const Trl_Terrain* terrain = nullptr, const status_function& status = status_function());
  // The pieces of prepare(), for a caller that fills the gains its own way:
  // release and size all tables, then take the lists' values and the settings.
  void make_tables(const tk::list<Trl_Tx>& tx_list, const tk::list<Trl_Rx>& rx_list,
                   const parameters& settings);
  // path_gain[position of tx][number of rx] = model.gain(tx, rx), in list order.
  void fill_path_gains(const tk::list<Trl_Tx>& tx_list, const tk::list<Trl_Rx>& rx_list,
                       Trl_PathLoss& model);
  // The same table with the users taken anticlockwise round each base station, so that
  // neighbouring lines touch neighbouring raster pages; the table does not depend on the
  // order. Each base station gets its cell on the height grid first. After each base station
  // `status` (when set) gets " Computing pathloss: %d of %d done.".
  void fill_path_gains_in_angular_order(const tk::list<Trl_Tx>& tx_list,
                                        const tk::list<Trl_Rx>& rx_list, Trl_XiaBertoni& model,
                                        const Trl_Terrain& terrain, const status_function& status);
  // SIR targets, the share table and the noise of both sides.
  void fill_targets_and_noise(const tk::list<Trl_Tx>& tx_list, const tk::list<Trl_Rx>& rx_list,
                              const parameters& settings);
  // Frees all tables and returns to the state before the first prepare().
  void release();

  // Lets the simple model fill the gain table from two threads (the result is the same).
  static bool parallel_fill;
  // Threads of the angular-order fill, each with its own model, taking base stations one
  // after the other (the table and the progress texts are the same for any count). 1 by
  // default; the program sets the machine's count.
  static int terrain_fill_threads;

  void set_strategy(int s) { strategy = s; }

  // Solves for the base stations at the positions with selected[k] != 0 (there are `used`).
  // Strategy 0: start from below, simultaneous update, fail at once over a limit;
  // 1: from above, simultaneous, go on; 2: from below, in sequence, fail at once;
  // 3: from above, in sequence, go on. Other values: false.
  // On true rx_uplink, serving (a row of the subset per user) and rows (base station number
  // per row) hold the result, and, when the downlink step ran, rx_downlink and tx_downlink
  // (W, indexed by base station number) too. The downlink step runs only when both
  // `validate` and validate_downlink are set.
  bool solve(int used, tk::vector& rx_downlink, tk::vector& rx_uplink, tk::vector& tx_downlink,
             tk::array<int>& serving, tk::array<int>& rows, const tk::array<int>& selected,
             const tk::array<int>& tx_numbers, bool validate, Trl_RunningStats* stats = nullptr);

  // For each user the position with the largest gain; the lowest position wins a tie.
  void strongest_server(tk::array<int>& serving) const;

 private:
  void reset();
  // Sizes every table for the lists and takes the settings; the vectors of targets and noise
  // are zeroed only with zero_targets, since prepare() writes them in full.
  void size_tables(int stations, int users, const parameters& settings, bool zero_targets);
  // The stations' values (and their noise when settings is given) and the users' limits
  // (and their targets and noise when settings is given), each list walked once.
  void take_stations(const tk::list<Trl_Tx>& tx_list, const parameters* settings);
  void take_users(const tk::list<Trl_Rx>& rx_list, const parameters* settings);
  // The share table: its rows (stored_as, see table::make) from the orthogonalities, then
  // their values from gamma_down.
  void size_shares(std::vector<int>& stored_as);
  void fill_share_rows(const std::vector<int>& stored_as);
  // The simple model's gains on two threads where the table is large enough; with settings
  // the second thread first takes the lists' values and fills the share table (all of
  // prepare() but the gains). False, with the gains not filled, when a user's number is
  // out of range.
  bool fill_simple_gains(const tk::list<Trl_Tx>& tx_list, const tk::list<Trl_Rx>& rx_list,
                         const Trl_Motorola& model, const parameters* settings);
  // The users' columns for the simple model (sized by the caller); false on a number out
  // of range.
  bool gather_columns(const tk::list<Trl_Rx>& rx_list);
  void fill_simple_row(const Trl_Motorola& model, const Trl_Tx& tx, int t, double* scratch);
  bool iterate(int used, Trl_RunningStats* stats);
  void start_from_below(int used);
  void start_from_above();
  void sweep_simultaneous(int used, bool continuing);
  void sweep_in_sequence(int used);
  bool over_limit() const;
  double worst_change() const;
  bool solve_downlink(int used, tk::vector& rx_downlink, tk::vector& tx_downlink);
  Trl_UplinkKernels::rows selected_rows(int used) const;
  Trl_UplinkKernels::users user_columns();

  // Work space of one solve, sized once per call. Row c of the subset is the c-th selected
  // position: its gains and shares are read in place through these row pointers.
  std::vector<const double*> gain_rows;
  std::vector<const double*> share_rows;
  std::vector<double> row_noise;  // W, per row
  std::vector<int> row_number;    // base station number of each row
  std::vector<double> power;      // rx: p
  std::vector<double> previous;   // rx: p before the sweep
  std::vector<double> running;    // rx: the running vector of the in-sequence sweep
  std::vector<double> interference;  // per row: I[c]
  std::vector<double> server;     // rx: noted server row, kept as a double for the vector blend
  bool gains_normal = false;     // every gain in [2^-1020, 2^1020] (see Trl_UplinkKernels)
  std::vector<signed char> row_normal;  // per row: the same, -1 while not yet checked
  // The users as columns for the simple model, in list order: coordinates (m), the natural
  // log of the antenna gain and the number. Kept so that a new prepare() allocates nothing.
  std::vector<double> column_x, column_y, column_z, column_log_gain;
  std::vector<int> column_number;
  bool columns_in_order = true;  // column_number[k] == k for every k
  Trl_UplinkKernels wide;         // the sweeps four or eight doubles at a time, where the processor can
  // Downlink step: the rows that serve somebody and their linear system, b in its last
  // column. Kept between calls so that a search allocates nothing per candidate.
  std::vector<int> position_of;   // per row: position in the system, -1 when serving nobody
  std::vector<int> row_at;        // per position: the row
  std::vector<double> system;     // m rows of m + 1 entries
  std::vector<double> total;      // per position: the station's total power, W
  std::vector<double> by_station; // per base station number: total power, W
};
