#include "propagation/Trl_XiaBertoni.h"

#include <immintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_ProfileRuns.h"
#include "raster/Trl_Clutter.h"
#include "raster/Trl_Grid.h"
#include "raster/Trl_Heightfield.h"
#include "raster/Trl_MappedMatrixT.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/error.h"

namespace {

const double pi = 3.14159265358979323846;
const double two_pi_squared = 19.739208802178716;
const double speed_of_light = 299792458;  // m/s

// The raster side of the model: only a terrain with both rasters can give a profile.
bool has_rasters(const Trl_Terrain* terrain) { return terrain && terrain->loaded(); }

std::uint32_t profile_cells(const Trl_Terrain* terrain) {
  if (!has_rasters(terrain)) return 0;
  const Trl_Grid& g = terrain->height_grid();
  return std::max(g.nx, g.ny);
}

bool on_grid(const Trl_Grid& g, int i, int j) {
  return i >= 0 && j >= 0 && i < static_cast<int>(g.nx) && j < static_cast<int>(g.ny);
}

bool has_avx512() {
  static const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                             __builtin_cpu_supports("avx512vl");
  return avx512;
}

// Where the clutter raster lies on the height grid, and how many bits a decoded row takes.
struct clutter_place {
  std::int64_t offset_i, offset_j, columns, rows, row_bits;
};

// The first part of a profile read that keeps the cells of the line before, eight places at a
// time. Stores the line's cells (row << 32 | column) in `known` and lists the places whose
// cell changed: in `changed` the place, in `height_at` where the height matrix keeps the
// cell, in `clutter_at` where the decoded building rows keep its bit (each list of n + 8
// entries at least); returns how many changed. The step-by-step walk moves the minor
// coordinate at place k by floor((2 k minor + major) / (2 major)) in all, so each place is
// found on its own. The quotient is taken as the numerator times the rounded reciprocal plus
// 2^-20, then rounded down, which is exact for lines of fewer than 2^18 cells: the product is
// then within 2^-33 of the quotient, and a quotient that is not a whole number lies at least
// 1 / (2 major) > 2^-19 below the next one.
__attribute__((target("avx512f,avx512dq,avx512vl"))) int changed_places_eight(
    std::int64_t* known, int* changed, int n, int col0, int row0, bool column_major, int step_col, int step_row,
    int major, int minor, const Trl_MappedMatrixT<short, double>& heights, std::uint32_t* height_at,
    const clutter_place& clutter, std::uint32_t* clutter_at) {
  const __m512i lanes = _mm512_setr_epi64(0, 1, 2, 3, 4, 5, 6, 7);
  // A line of one cell (major 0) has only place 0, whose numerator is 0.
  const __m512d reciprocal = _mm512_set1_pd(1.0 / std::max(2.0 * major, 1.0)), nudge = _mm512_set1_pd(0x1p-20);
  const __m512d numerator_step = _mm512_set1_pd(16.0 * minor);
  const __m512i col_start = _mm512_set1_epi64(col0), row_start = _mm512_set1_epi64(row0);
  // Offsets times a step of -1 or 1: (offset ^ sign) - sign, with sign -1 or 0.
  const __m512i col_sign = _mm512_set1_epi64(step_col < 0 ? -1 : 0), row_sign = _mm512_set1_epi64(step_row < 0 ? -1 : 0);
  const __m512i low_bits = _mm512_set1_epi64(0xFFFFFFFF);
  const __m128i page_bits = _mm_cvtsi32_si128(heights.page_bits), row_bits = _mm_cvtsi32_si128(heights.tile_row_bits);
  const __m128i column_bits = _mm_cvtsi32_si128(heights.tile_column_bits);
  const __m512i row_mask = _mm512_set1_epi64(heights.tile_row_mask), column_mask = _mm512_set1_epi64(heights.tile_column_mask);
  const __m512i tiles_across = _mm512_set1_epi64(heights.tiles_across);
  const __m512i offset_i = _mm512_set1_epi64(clutter.offset_i), offset_j = _mm512_set1_epi64(clutter.offset_j);
  const __m512i clutter_columns = _mm512_set1_epi64(clutter.columns), clutter_rows = _mm512_set1_epi64(clutter.rows);
  const __m512i row_bits_of_clutter = _mm512_set1_epi64(clutter.row_bits), outside = _mm512_set1_epi64(0xFFFFFFFF);
  __m512i place = lanes;
  __m512d numerator = _mm512_add_pd(_mm512_mul_pd(_mm512_cvtepi64_pd(lanes), _mm512_set1_pd(2.0 * minor)),
                                    _mm512_set1_pd(major));
  int count = 0;
  for (int k = 0; k < n; k += 8) {
    const __mmask8 in_line = k + 8 <= n ? __mmask8{0xFF} : static_cast<__mmask8>((1u << (n - k)) - 1);
    // (Masked forms with every lane set: the plain ones trip a warning in GCC 12's headers.)
    const __m512i moved = _mm512_cvttpd_epi64(_mm512_maskz_roundscale_pd(
        0xFF, _mm512_add_pd(_mm512_mul_pd(numerator, reciprocal), nudge), _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC));
    const __m512i col_offset = column_major ? place : moved, row_offset = column_major ? moved : place;
    const __m512i col = _mm512_add_epi64(col_start, _mm512_sub_epi64(_mm512_xor_si512(col_offset, col_sign), col_sign));
    const __m512i row = _mm512_add_epi64(row_start, _mm512_sub_epi64(_mm512_xor_si512(row_offset, row_sign), row_sign));
    const __m512i cell = _mm512_or_si512(_mm512_maskz_slli_epi64(0xFF, row, 32), _mm512_and_si512(col, low_bits));
    const __mmask8 differ = _mm512_mask_cmpneq_epi64_mask(in_line, cell, _mm512_maskz_loadu_epi64(in_line, known + k));
    _mm512_mask_storeu_epi64(known + k, in_line, cell);
    // Compressed in a register and stored whole (`changed` has eight places to spare): the
    // compressing store to memory is microcoded and slow on some processors.
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(changed + count),
                        _mm256_maskz_compress_epi32(differ, _mm512_maskz_cvtepi64_epi32(0xFF, place)));
    // Where the height matrix keeps each cell, as its own index() finds it.
    // (Tile rows and tiles across are below 2^32, so their product takes the 32-bit multiply.)
    const __m512i tile = _mm512_add_epi64(_mm512_maskz_mul_epu32(0xFF, _mm512_maskz_srl_epi64(0xFF, row, row_bits), tiles_across),
                                          _mm512_maskz_srl_epi64(0xFF, col, column_bits));
    const __m512i within = _mm512_add_epi64(_mm512_maskz_sll_epi64(0xFF, _mm512_and_si512(row, row_mask), column_bits),
                                            _mm512_and_si512(col, column_mask));
    const __m512i index = _mm512_add_epi64(_mm512_maskz_sll_epi64(0xFF, tile, page_bits), within);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(height_at + count),
                        _mm256_maskz_compress_epi32(differ, _mm512_maskz_cvtepi64_epi32(0xFF, index)));
    // And where the decoded building rows keep its bit: row * bits a row + column, or all ones
    // for a cell beyond the clutter raster.
    const __m512i ci = _mm512_add_epi64(col, offset_i), cj = _mm512_add_epi64(row, offset_j);
    const __mmask8 on_clutter = _mm512_cmpge_epi64_mask(ci, _mm512_setzero_si512()) &
                                _mm512_cmpge_epi64_mask(cj, _mm512_setzero_si512()) &
                                _mm512_cmplt_epi64_mask(ci, clutter_columns) & _mm512_cmplt_epi64_mask(cj, clutter_rows);
    const __m512i bit_at = _mm512_mask_add_epi64(
        outside, on_clutter, _mm512_maskz_mul_epu32(0xFF, cj, row_bits_of_clutter), ci);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(clutter_at + count),
                        _mm256_maskz_compress_epi32(differ, _mm512_maskz_cvtepi64_epi32(0xFF, bit_at)));
    count += __builtin_popcount(differ);
    place = _mm512_add_epi64(place, _mm512_set1_epi64(8));
    numerator = _mm512_add_pd(numerator, numerator_step);
  }
  return count;
}

}  // namespace

bool Trl_XiaBertoni::wide_walk = true;

Trl_XiaBertoni::Trl_XiaBertoni(Trl_Terrain* terrain, double frequency_ghz, double max_radius,
                               double tolerance, bool geometric, double lmsd_linear,
                               double lmsd_exponent, double far_constant, double far_factor,
                               double indoor_attenuation)
    : terrain(terrain),
      profile_size(profile_cells(terrain)),
      heights(static_cast<int>(profile_size)),
      bits(static_cast<int>(profile_size), true),
      profile_cell_at(profile_size, -1),
      changed_places(profile_size + 8),
      changed_height_at(profile_size + 8),
      changed_bit_at(profile_size + 8),
      frequency(frequency_ghz * 1e9),
      wavelength(speed_of_light / (frequency_ghz * 1e9)),
      max_radius(max_radius),
      lmsd_linear(lmsd_linear),
      lmsd_exponent(lmsd_exponent),
      far_constant(far_constant),
      far_factor(far_factor),
      indoor_factor(1 / indoor_attenuation),
      tolerance(tolerance),
      geometric(geometric) {
  if (terrain) terrain->add_reference();
  prepare_clutter_cache();
}

Trl_XiaBertoni::Trl_XiaBertoni(const Trl_XiaBertoni& other)
    : Trl_PathLoss(other),
      terrain(other.terrain),
      profile_size(other.profile_size),
      heights(static_cast<int>(other.profile_size)),
      bits(static_cast<int>(other.profile_size), true),
      reuse_profile_cells(other.reuse_profile_cells),
      profile_cell_at(other.profile_size, -1),
      changed_places(other.profile_size + 8),
      changed_height_at(other.profile_size + 8),
      changed_bit_at(other.profile_size + 8),
      frequency(other.frequency),
      wavelength(other.wavelength),
      max_radius(other.max_radius),
      lmsd_linear(other.lmsd_linear),
      lmsd_exponent(other.lmsd_exponent),
      far_constant(other.far_constant),
      far_factor(other.far_factor),
      indoor_factor(other.indoor_factor),
      tolerance(other.tolerance),
      geometric(other.geometric),
      clutter_bits(other.clutter_bits),
      clutter_row_ready(other.clutter_row_ready),
      clutter_words(other.clutter_words),
      clutter_cached(other.clutter_cached),
      clutter_all_decoded(other.clutter_all_decoded) {
  // The rows the other model has decoded come along, so that they are not decoded again.
  if (terrain) terrain->add_reference();
}

Trl_XiaBertoni::~Trl_XiaBertoni() {
  if (terrain) terrain->release();
}

tk::string Trl_XiaBertoni::description() { return tk::string(""); }

// ---------------------------------------------------------------- the pair

bool Trl_XiaBertoni::gain_without_profile(const Trl_Tx& tx, const Trl_Rx& rx, double& result) {
  const double dx = tx.position.xcoord() - rx.position.xcoord();
  const double dy = tx.position.ycoord() - rx.position.ycoord();
  d = std::sqrt(dx * dx + dy * dy);
  indoor = false;
  // The far law first: a pair beyond the radius costs no raster access.
  if (d > max_radius) {
    result = far_gain(tx, rx, d);
    return true;
  }
  if (!has_rasters(terrain)) {
    h_roof = 0;
    h_tx = tx.position.zcoord();
    result = finish(tx, rx, free_space());
    return true;
  }
  return false;
}

double Trl_XiaBertoni::far_gain(const Trl_Tx& tx, const Trl_Rx& rx, double plane_distance) {
  d = plane_distance;
  indoor = false;
  return finish(tx, rx, far_loss());
}

double Trl_XiaBertoni::gain(const Trl_Tx& tx, const Trl_Rx& rx) {
  double result;
  if (gain_without_profile(tx, rx, result)) return result;
  int n = 0;
  fetch_profile(tx, rx, n);
  return near_gain(tx, rx, heights.data(), bits, n);
}

double Trl_XiaBertoni::gain_on_profile(const Trl_Tx& tx, const Trl_Rx& rx,
                                       const double* profile_heights,
                                       const Trl_TxBitvector& profile_bits, int n) {
  double result;
  if (gain_without_profile(tx, rx, result)) return result;
  TK_ASSERT(n >= 1, "a profile holds at least the base station's cell");
  return near_gain(tx, rx, profile_heights, profile_bits, n);
}

// The heights and building bits of the line from tx's cell to rx's cell, both on the height
// grid: the Bresenham walk of Trl_Grid::iterator_line, written out here so that one walk
// reads both rasters without a call per cell. It delivers the cells of the terrain's
// height and clutter profiles, one for one.
void Trl_XiaBertoni::fetch_profile(const Trl_Tx& tx, const Trl_Rx& rx, int& n) {
  if (walk_pending) {
    const bool same_line = pending_line[0] == tx.cell_i && pending_line[1] == tx.cell_j &&
                           pending_line[2] == rx.cell_i && pending_line[3] == rx.cell_j;
    read_changes();
    if (same_line) {
      n = pending_line[4];
      return;
    }
  }
  if (reuse_profile_cells && walks_wide()) {
    walk_changes(tx, rx, n);
    read_changes();
    return;
  }
  const Trl_Grid& g = terrain->height_grid();
  TK_ASSERT(on_grid(g, tx.cell_i, tx.cell_j) && on_grid(g, rx.cell_i, rx.cell_j),
            "base station and mobile user cells lie on the height grid");
  const Trl_Heightfield& field = *terrain->heightfield;
  int col = tx.cell_i, row = tx.cell_j;
  const int di = rx.cell_i - col, dj = rx.cell_j - row;
  const bool column_major = std::abs(di) >= std::abs(dj);
  const int step_col = di < 0 ? -1 : 1, step_row = dj < 0 ? -1 : 1;
  const int major = std::max(std::abs(di), std::abs(dj)), minor = std::min(std::abs(di), std::abs(dj));
  const int inc_straight = 2 * minor, inc_diagonal = 2 * (minor - major);
  int decision = 2 * minor - major;
  double* H = heights.data();
  n = major + 1;
  auto step = [&]() {
    if (column_major) col += step_col;
    else row += step_row;
    if (decision >= 0) {
      if (column_major) row += step_row;
      else col += step_col;
      decision += inc_diagonal;
    } else {
      decision += inc_straight;
    }
  };
  // The loops work on local copies of the tiling and of the clutter's place, so that their
  // stores do not make the compiler read them again.
  const Trl_MappedMatrixT<short, double>& matrix = *field.matrix;
  const short* data = matrix.data;
  const std::uint32_t tiles_across = matrix.tiles_across;
  const int page_bits = matrix.page_bits, row_bits = matrix.tile_row_bits, row_mask = matrix.tile_row_mask;
  const int column_bits = matrix.tile_column_bits, column_mask = matrix.tile_column_mask;
  const Trl_Clutter& clutter = *terrain->clutter;
  const int offset_i = terrain->offset_i, offset_j = terrain->offset_j;
  const int clutter_columns = static_cast<int>(clutter.columns), clutter_rows = static_cast<int>(clutter.rows);
  auto height_at = [&]() {
    const std::uint32_t c = col, r = row;
    return data[(((r >> row_bits) * tiles_across + (c >> column_bits)) << page_bits) + ((r & row_mask) << column_bits) +
                (c & column_mask)];
  };
  // The building bit of the cell; a cell beyond the clutter raster is open ground.
  auto built_at = [&]() {
    const int ci = col + offset_i, cj = row + offset_j;
    return ci >= 0 && cj >= 0 && ci < clutter_columns && cj < clutter_rows && built_cell(ci, cj);
  };

  if (reuse_profile_cells) {
    // A cell already at its place from the line before keeps its height and bit: first the
    // walk, noting the places whose cell changed (without a branch on it), then the reads of
    // those cells alone.
    if (profile_cells_stale) std::fill(profile_cell_at.begin(), profile_cell_at.end(), -1);
    profile_cells_stale = false;
    std::int64_t* known = profile_cell_at.data();
    int* changed = changed_places.data();
    int count = 0;
    for (int k = 0; k < n; ++k, step()) {
      const std::int64_t cell = (static_cast<std::int64_t>(row) << 32) | static_cast<std::uint32_t>(col);
      changed[count] = k;
      count += known[k] != cell;
      known[k] = cell;
    }
    for (int m = 0; m < count; ++m) {
      const int k = changed[m];
      row = static_cast<int>(known[k] >> 32);
      col = static_cast<int>(static_cast<std::uint32_t>(known[k]));
      H[k] = height_at();
      bits.assign(k, built_at());
    }
    return;
  }
  // Every cell read; the building bits gather in a word that is written every 32 cells.
  profile_cells_stale = true;
  std::uint32_t word = 0;
  for (int k = 0; k < n; ++k, step()) {
    H[k] = height_at();
    word |= static_cast<std::uint32_t>(built_at()) << (k & 31);
    if ((k & 31) == 31) {
      bits.assign_word(k & ~31, word, 0);
      word = 0;
    }
  }
  if (n & 31) bits.assign_word(n & ~31, word, ~((std::uint32_t(1) << (n & 31)) - 1));
}

bool Trl_XiaBertoni::walks_wide() const {
  return wide_walk && has_avx512() && profile_size < (1u << 18) && clutter_all_decoded;
}

bool Trl_XiaBertoni::built_cell_first(int ci, int cj) {
  if (!clutter_cached) return terrain->clutter->built(ci, cj);
  decode_clutter_row(cj);
  return built_cell(ci, cj);
}

// The first half of a profile read that keeps the cells of the line before, eight places at a
// time: notes the places whose cell changed and where the height matrix keeps those cells,
// and asks for those heights, so that they are on their way while other work goes on.
void Trl_XiaBertoni::walk_changes(const Trl_Tx& tx, const Trl_Rx& rx, int& n) {
  const Trl_Grid& g = terrain->height_grid();
  TK_ASSERT(on_grid(g, tx.cell_i, tx.cell_j) && on_grid(g, rx.cell_i, rx.cell_j),
            "base station and mobile user cells lie on the height grid");
  const int di = rx.cell_i - tx.cell_i, dj = rx.cell_j - tx.cell_j;
  const int major = std::max(std::abs(di), std::abs(dj)), minor = std::min(std::abs(di), std::abs(dj));
  n = major + 1;
  if (profile_cells_stale) std::fill(profile_cell_at.begin(), profile_cell_at.end(), -1);
  profile_cells_stale = false;
  const Trl_MappedMatrixT<short, double>& matrix = *terrain->heightfield->matrix;
  std::uint32_t* at = changed_height_at.data();
  std::uint32_t* bit_at = changed_bit_at.data();
  const clutter_place clutter{terrain->offset_i, terrain->offset_j, terrain->clutter->columns, terrain->clutter->rows,
                              static_cast<std::int64_t>(clutter_words) * 64};
  changed_count = changed_places_eight(profile_cell_at.data(), changed_places.data(), n, tx.cell_i, tx.cell_j,
                                       std::abs(di) >= std::abs(dj), di < 0 ? -1 : 1, dj < 0 ? -1 : 1, major, minor,
                                       matrix, at, clutter, bit_at);
  for (int m = 0; m < changed_count; ++m) _mm_prefetch(reinterpret_cast<const char*>(matrix.data + at[m]), _MM_HINT_T0);
  walk_pending = true;
  pending_line[0] = tx.cell_i;
  pending_line[1] = tx.cell_j;
  pending_line[2] = rx.cell_i;
  pending_line[3] = rx.cell_j;
  pending_line[4] = n;
}

// The second half: reads the changed cells' heights and building bits into the profile (every
// building row is decoded by then). The bits gather in a word that is written when the next
// place lies in another.
void Trl_XiaBertoni::read_changes() {
  walk_pending = false;
  const short* data = terrain->heightfield->matrix->data;
  const int* changed = changed_places.data();
  const std::uint32_t* at = changed_height_at.data();
  const std::uint32_t* bit_at = changed_bit_at.data();
  const std::uint64_t* decoded = clutter_bits.data();
  double* H = heights.data();
  int word = -1;
  std::uint32_t value = 0, written = 0;
  for (int m = 0; m < changed_count; ++m) {
    const int k = changed[m];
    if (k >> 5 != word) {
      if (word >= 0) bits.assign_word(word << 5, value, ~written);
      word = k >> 5;
      value = written = 0;
    }
    H[k] = data[at[m]];
    const std::uint32_t b = bit_at[m];
    const bool built = b != 0xFFFFFFFF && ((decoded[b >> 6] >> (b & 63)) & 1u) != 0;
    value |= static_cast<std::uint32_t>(built) << (k & 31);
    written |= std::uint32_t(1) << (k & 31);
  }
  if (word >= 0) bits.assign_word(word << 5, value, ~written);
}

double Trl_XiaBertoni::gain_then_prepare(const Trl_Tx& tx, const Trl_Rx& rx, const Trl_Rx* next) {
  double result;
  if (gain_without_profile(tx, rx, result)) return result;
  int n = 0;
  fetch_profile(tx, rx, n);
  // The next line's walk changes only which cells the places will hold; this profile's
  // heights and bits stay until its reads.
  int next_n = 0;
  if (next && reuse_profile_cells && walks_wide()) walk_changes(tx, *next, next_n);
  return near_gain(tx, rx, heights.data(), bits, n);
}

void Trl_XiaBertoni::prepare_clutter_cache() {
  if (!has_rasters(terrain)) return;
  const Trl_Clutter& clutter = *terrain->clutter;
  const std::uint64_t cells = static_cast<std::uint64_t>(clutter.rows) * clutter.columns;
  clutter_cached = cells <= (std::uint64_t(1) << 27);
  if (!clutter_cached) return;
  clutter_words = static_cast<int>((clutter.columns + 63) / 64);
  clutter_bits.assign(static_cast<size_t>(clutter.rows) * clutter_words, 0);
  clutter_row_ready.assign(clutter.rows, 0);
}

void Trl_XiaBertoni::decode_clutter_rows(int first, int step) {
  if (!clutter_cached) return;
  for (int row = first; row < static_cast<int>(clutter_row_ready.size()); row += step)
    if (!clutter_row_ready[row]) decode_clutter_row(row);
  if (first == 0 && step == 1) clutter_all_decoded = true;
}

// The bits the clutter's cell query answers, a run at a time.
void Trl_XiaBertoni::decode_clutter_row(int row) {
  const Trl_Clutter& clutter = *terrain->clutter;
  std::uint64_t* words = clutter_bits.data() + static_cast<size_t>(row) * clutter_words;
  clutter.get_matrix()->row_array[row].decode(words, static_cast<int>(clutter.columns));
  clutter_row_ready[row] = 1;
}

double Trl_XiaBertoni::near_gain(const Trl_Tx& tx, const Trl_Rx& rx, const double* H,
                                 const Trl_TxBitvector& B, int n) {
  analyse(tx, rx, H, B, n);
  return finish(tx, rx, loss_of_analysis());
}

double Trl_XiaBertoni::gain_on_prefix(const Trl_Tx& tx, const Trl_Rx& rx, const Trl_ProfileRuns& line, int k) {
  double result;
  if (gain_without_profile(tx, rx, result)) return result;
  TK_ASSERT(k >= 1 && k <= line.n, "a prefix holds at least the base station's cell");
  analyse_prefix(tx, rx, line, k);
  return finish(tx, rx, loss_of_analysis());
}

double Trl_XiaBertoni::loss_of_analysis() const {
  double loss = free_space();
  // No street or no more than one building on the line: nothing to diffract over.
  if (!(street == 0 || spacing == d)) loss = loss * rooftop_to_street() * multi_screen();
  if (indoor) loss = loss * indoor_factor;
  return loss;
}

double Trl_XiaBertoni::finish(const Trl_Tx& tx, const Trl_Rx& rx, double loss) const {
  return tx.gain * rx.gain * loss;
}

// ---------------------------------------------------------------- the profile

// Mean roof height over the ground line, mean building spacing and mean street width of the
// profile H (heights, m) and B (building bits), cell 0 at the base station.
void Trl_XiaBertoni::analyse(const Trl_Tx& tx, const Trl_Rx& rx, const double* H,
                             const Trl_TxBitvector& B, int n) {
  // The ground at both ends: the first and the last open cell.
  int first_open = 0;
  while (first_open < n && B.test(first_open)) ++first_open;
  const double A = first_open < n ? H[first_open] : H[0];
  int last_open = n - 1;
  while (last_open >= 0 && B.test(last_open)) --last_open;
  const double Z = last_open >= 0 ? H[last_open] : H[n - 1];

  set_ends(tx, rx, H, B, n, A, Z);
  const double slope = (Z - A) / static_cast<double>(n - 1);

  bool in_building = B.test(0);
  int streets = in_building ? 0 : 1;
  int gap = 0, street_cells = 0, building_cells = 0, buildings = 0;
  double gap_product = 1.0, height_sum = 0, roof_sum = 0;
  for (int i = 0; i < n; ++i) {
    const bool built = B.test(i);
    if (!in_building && !built) {
      ++gap;
      ++street_cells;
    } else if (!in_building && built) {
      in_building = true;
      height_sum += std::max(0.0, H[i] - i * slope - A);
      ++building_cells;
      if (geometric) gap_product = gap_product * gap;
      gap = 0;
    } else if (built) {
      height_sum += std::max(0.0, H[i] - i * slope - A);
      ++building_cells;
    } else if (!(height_sum > 0)) {
      // A building no higher than the ground line is street.
      in_building = false;
      gap += 1 + building_cells;
      street_cells += 1 + building_cells;
      building_cells = 0;
    } else {
      in_building = false;
      roof_sum += height_sum / building_cells;
      height_sum = 0;
      building_cells = 0;
      ++buildings;
      ++gap;
      ++street_cells;
      ++streets;
    }
  }
  // A building still open at the end of the line is not counted.
  set_means(n, streets, street_cells, buildings, roof_sum, gap_product);
}

// The antenna heights and whether the mobile is indoors, from the ground A at the near end
// and Z at the far end of a profile of n cells.
void Trl_XiaBertoni::set_ends(const Trl_Tx& tx, const Trl_Rx& rx, const double* H, const Trl_TxBitvector& B, int n,
                              double A, double Z) {
  // A mobile no higher than the building it stands in is indoors; above the roof it is out.
  indoor = B.test(n - 1) && rx.position.zcoord() <= H[n - 1] - Z;
  // An antenna on a building stands on its roof.
  h_tx = (H[0] - A) + tx.position.zcoord();
  h_rx = rx.position.zcoord();
}

// The means of the line from the counts of its walk over n cells.
void Trl_XiaBertoni::set_means(int n, int streets, int street_cells, int buildings, double roof_sum,
                               double gap_product) {
  h_roof = buildings ? roof_sum / buildings : 0;
  spacing = buildings ? d / buildings : d;
  if (streets == 0) street = 0;
  else if (!geometric) street = street_cells * d / (static_cast<double>(n) * streets);
  else street = (d / n) * std::pow(gap_product, 1.0 / streets);
  dh_tx = std::fabs(h_tx - h_roof);
  dh_rx = std::fabs(h_rx - h_roof);
}

// The walk of analyse over the first k cells, a building at a time: the open cells between
// buildings only count, and a building closed by an open cell adds its mean height over
// the ground line, or becomes street when it does not rise above it.
void Trl_XiaBertoni::analyse_prefix(const Trl_Tx& tx, const Trl_Rx& rx, const Trl_ProfileRuns& line, int k) {
  const double* H = line.heights;
  const double A = line.first_open < k ? H[line.first_open] : H[0];
  const int last_open = line.last_open_below[k];
  const double Z = last_open >= 0 ? H[last_open] : H[k - 1];
  set_ends(tx, rx, H, *line.bits, k, A, Z);
  const double slope = (Z - A) / static_cast<double>(k - 1);
  int streets = line.bits->test(0) ? 0 : 1;
  int gap = 0, street_cells = 0, buildings = 0, at = 0;
  double gap_product = 1.0, roof_sum = 0;
  for (const Trl_ProfileRuns::run& r : line.runs) {
    if (r.start >= k) break;
    gap += r.start - at;
    street_cells += r.start - at;
    // A building entered from the street; one at the base station's cell has no gap before it.
    if (r.start > 0) {
      if (geometric) gap_product = gap_product * gap;
      gap = 0;
    }
    at = k;
    if (r.end >= k) break;  // still open at the end: not counted
    const int cells = r.end - r.start;
    const double sum = line.height_sum(r, A, slope);
    if (!(sum > 0)) {
      gap += 1 + cells;
      street_cells += 1 + cells;
    } else {
      roof_sum += sum / cells;
      ++buildings;
      ++gap;
      ++street_cells;
      ++streets;
    }
    at = r.end + 1;
  }
  street_cells += k - at;
  set_means(k, streets, street_cells, buildings, roof_sum, gap_product);
}

// ---------------------------------------------------------------- the factors

bool Trl_XiaBertoni::well_above() const { return h_tx > h_roof && h_roof / h_tx < tolerance; }

bool Trl_XiaBertoni::well_below() const { return h_tx < h_roof && h_tx / h_roof < tolerance; }

double Trl_XiaBertoni::free_space() const {
  const double F = wavelength / (4 * pi * d);
  return well_above() ? F * F : 2 * F * F;
}

double Trl_XiaBertoni::rooftop_to_street() const {
  const double r = std::sqrt(dh_rx * dh_rx + 0.25 * street * street);
  double theta = std::atan(2 * dh_rx / street);
  if (theta < 0.01) theta = 0.01;
  const double t = 1 / theta - 1 / (theta + 2 * pi);
  return wavelength / (two_pi_squared * r) * t * t;
}

double Trl_XiaBertoni::multi_screen() const {
  if (well_above()) {
    const double x = (dh_tx / d) * std::sqrt(spacing / wavelength);
    return lmsd_linear * std::pow(x, lmsd_exponent);
  }
  if (well_below()) {
    const double q = spacing / (2 * pi * (d - spacing));
    const double r = std::sqrt(dh_tx * dh_tx + spacing * spacing);
    const double phi = -std::atan2(dh_tx, spacing);
    const double t = 1 / phi - 1 / (phi + 2 * pi);
    return q * q * wavelength / r * t * t;
  }
  // The antenna near roof height.
  return spacing * spacing / (d * d);
}

double Trl_XiaBertoni::far_loss() const {
  return 1 / std::pow(10.0, (far_constant + far_factor * std::log10(d)) * 0.1);
}
