// The urban propagation model: walks the height and building rasters along the line from
// base station to mobile user, takes the mean roof height (m), building spacing (m) and
// street width (m) on it, and multiplies free space, rooftop-to-street diffraction and
// multi-screen loss (Xia-Bertoni), all as linear power ratios. Beyond the maximum cell radius
// a logarithmic law takes over; a user inside a building pays a fixed indoor attenuation.
#pragma once

#include <cstdint>
#include <vector>

#include "network/Trl_TxBitvector.h"
#include "propagation/Trl_PathLoss.h"
#include "toolkit/array.h"

class Trl_Terrain;
class Trl_ProfileRuns;

class Trl_XiaBertoni : public Trl_PathLoss {
 public:
  // frequency_ghz in GHz, max_radius in m, tolerance 0 to 1, geometric true for the
  // street average "geo", far_constant in dB, far_factor in dB per decade of metres,
  // indoor_attenuation linear (above 1). Takes a reference to the terrain, which may be null.
  Trl_XiaBertoni(Trl_Terrain* terrain, double frequency_ghz, double max_radius, double tolerance,
                 bool geometric, double lmsd_linear, double lmsd_exponent, double far_constant,
                 double far_factor, double indoor_attenuation);
  // A second model on the same terrain with its own profile buffers and scratch, and a copy
  // of the building rows the other has decoded, so that two threads can each compute with one.
  Trl_XiaBertoni(const Trl_XiaBertoni& other);
  Trl_XiaBertoni& operator=(const Trl_XiaBertoni&) = delete;
  ~Trl_XiaBertoni() override;

  // The linear gain tx antenna port to rx antenna port. Both must have their cells on the
  // terrain's height grid.
  double gain(const Trl_Tx& tx, const Trl_Rx& rx) override;
  tk::string description() override;
  // The same on a profile of n cells that the caller has fetched, from tx's cell outward:
  // heights in m, bit k set where cell k holds a building.
  double gain_on_profile(const Trl_Tx& tx, const Trl_Rx& rx, const double* profile_heights,
                         const Trl_TxBitvector& profile_bits, int n);
  // gain(tx, rx) for a pair within max_radius, which then starts the profile of (tx, next),
  // the pair the next call will most likely ask for: with reuse_profile_cells and the wide
  // walk, its line is walked and its changed cells are asked for from memory while this
  // pair's gain is worked out. The gains are those of gain(); any later call takes the
  // started profile up first.
  double gain_then_prepare(const Trl_Tx& tx, const Trl_Rx& rx, const Trl_Rx* next);
  // The gain of a pair beyond max_radius, given its plane distance in m as gain() takes it
  // (the square root of dx * dx + dy * dy): the far law, which reads no raster.
  double far_gain(const Trl_Tx& tx, const Trl_Rx& rx, double plane_distance);
  // The same on the first k cells of an indexed profile, for many cells of one line: equal
  // to gain_on_profile on those cells up to the rounding of a sum of roof heights.
  double gain_on_prefix(const Trl_Tx& tx, const Trl_Rx& rx, const Trl_ProfileRuns& line, int k);

  Trl_Terrain* terrain;         // counted reference; may be null
  std::uint32_t profile_size;   // cells: the larger of the height grid's nx, ny; 0 without terrain
  tk::array<double> heights;    // m, the profile of the last call
  Trl_TxBitvector bits;         // building bits of the same profile
  // With reuse_profile_cells a profile reads only the cells where its line differs from the
  // line before, place by place: worth it where the lines come in angular order round one
  // base station (the angular fill switches it on; copies keep it), not in list order. Gains
  // are the same either way. profile_cell_at holds per place the cell (row << 32 | column)
  // whose height and bit stand there.
  bool reuse_profile_cells = false;
  // That walk eight places at a time where the processor has AVX-512, lines are shorter than
  // 2^18 cells and every building row is decoded; off, one at a time (for comparisons).
  static bool wide_walk;
  std::vector<std::int64_t> profile_cell_at;
  std::vector<int> changed_places;  // scratch of one walk
  std::vector<std::uint32_t> changed_height_at;  // and where the height matrix keeps those cells
  std::vector<std::uint32_t> changed_bit_at;     // and the decoded building rows their bits
  int changed_count = 0;
  // A walk whose reads are still to come, and its line: tx cell, rx cell, cells.
  bool walk_pending = false;
  int pending_line[5] = {0, 0, 0, 0, 0};
  bool profile_cells_stale = true;
  double frequency;             // Hz
  double wavelength;            // m
  double max_radius;            // m
  // Scratch of the last call, shared by the formula steps.
  double d = 0;                 // m, plane distance
  double h_tx = 0;              // m, effective base station height
  double h_rx = 0;              // m, mobile height
  double h_roof = 0;            // m, mean roof height over the ground line
  double spacing = 0;           // m, mean building spacing
  double street = 0;            // m, mean street width
  double dh_tx = 0;             // m, |h_tx - h_roof|
  double dh_rx = 0;             // m, |h_rx - h_roof|
  // Fixed by the constructor.
  double lmsd_linear;           // linear constant of the multi-screen loss
  double lmsd_exponent;         // its exponent
  double far_constant;          // dB
  double far_factor;            // dB per decade of metres
  double indoor_factor;         // 1 / linear indoor attenuation
  double tolerance;             // 0 to 1
  bool geometric;               // street width by geometric ("geo") or plain ("avg") mean
  bool indoor = false;          // the user of the last call stands inside its building

  // The factors of the formula on the scratch values, each a linear ratio.
  double free_space() const;
  double rooftop_to_street() const;
  double multi_screen() const;
  double far_loss() const;

  // Decodes the clutter rows first, first + step, ... into the building-bit cache, which
  // copies of this model then share. Rows are independent: threads may call it with
  // different `first` and the same `step` at once. Without a cache it does nothing. The walk
  // that finds eight places at a time runs once every row is decoded, by a call with 0, 1.
  void decode_clutter_rows(int first, int step);

 private:
  void fetch_profile(const Trl_Tx& tx, const Trl_Rx& rx, int& n);
  // The walk of kept cells goes eight places at a time (on AVX-512, for lines shorter than
  // 2^18, with every building row decoded).
  bool walks_wide() const;
  void walk_changes(const Trl_Tx& tx, const Trl_Rx& rx, int& n);
  void read_changes();
  // The building bit of clutter cell (ci, cj), which lies on the clutter raster: from the
  // decoded rows, decoding the cell's row first if need be.
  bool built_cell(int ci, int cj) {
    if (clutter_cached && clutter_row_ready[cj])
      return ((clutter_bits[static_cast<size_t>(cj) * clutter_words + (ci >> 6)] >> (ci & 63)) & 1u) != 0;
    return built_cell_first(ci, cj);
  }
  bool built_cell_first(int ci, int cj);
  void prepare_clutter_cache();
  void decode_clutter_row(int row);
  // Sets the distance; for a pair beyond the radius (far law) or without rasters (free
  // space) puts the gain into `result` and returns true: such pairs need no profile.
  bool gain_without_profile(const Trl_Tx& tx, const Trl_Rx& rx, double& result);
  double near_gain(const Trl_Tx& tx, const Trl_Rx& rx, const double* H, const Trl_TxBitvector& B, int n);
  void analyse(const Trl_Tx& tx, const Trl_Rx& rx, const double* H, const Trl_TxBitvector& B, int n);
  void analyse_prefix(const Trl_Tx& tx, const Trl_Rx& rx, const Trl_ProfileRuns& line, int k);
  void set_ends(const Trl_Tx& tx, const Trl_Rx& rx, const double* H, const Trl_TxBitvector& B, int n, double A,
                double Z);
  void set_means(int n, int streets, int street_cells, int buildings, double roof_sum, double gap_product);
  double loss_of_analysis() const;
  bool well_above() const;
  bool well_below() const;
  double finish(const Trl_Tx& tx, const Trl_Rx& rx, double loss) const;

  // The clutter rows that profiles have touched, decoded once each through the clutter's own
  // cell query into plain bits, so that a profile tests a bit instead of searching a row's
  // runs for every cell. Rows of clutter_words 64-bit words; kept only for rasters of up to
  // 2^27 cells (16 MB), larger ones are asked cell by cell.
  std::vector<std::uint64_t> clutter_bits;
  std::vector<unsigned char> clutter_row_ready;
  int clutter_words = 0;
  bool clutter_cached = false;
  bool clutter_all_decoded = false;  // every row, by decode_clutter_rows(0, 1)
};
