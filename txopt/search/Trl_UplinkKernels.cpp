#include "search/Trl_UplinkKernels.h"

#include <immintrin.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <thread>

#include "search/Trl_WorkerThread.h"

namespace {

const double largest = std::numeric_limits<double>::max();
const double infinity = std::numeric_limits<double>::infinity();

}  // namespace

bool Trl_UplinkKernels::enabled = true;
bool Trl_UplinkKernels::eight_lanes_enabled = true;
bool Trl_UplinkKernels::float_keys_enabled = true;
int Trl_UplinkKernels::threads = std::thread::hardware_concurrency() >= 2 ? 2 : 1;
bool Trl_UplinkKernels::measure_threads = true;
double Trl_UplinkKernels::two_threads_from = 1 << 17;

bool Trl_UplinkKernels::available() {
  static const bool avx2 = __builtin_cpu_supports("avx2");
  return enabled && avx2;
}

bool Trl_UplinkKernels::eight_lanes() {
  static const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                             __builtin_cpu_supports("avx512vl");
  return eight_lanes_enabled && avx512 && available();
}

// The kernels below are compiled for AVX2 (and chosen at run time); clang, which builds the
// fuzz targets, takes the same as a function attribute. The build forbids contraction, so no
// multiplication and addition are fused into one rounding.
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

namespace {

// Up to four rows in one pass over p: lane l of row k's accumulator is the plain sum's
// partial sum s_l; the users past the last multiple of four go into s_0, and the partial
// sums are added as (s0 + s1) + (s2 + s3).
template <int K>
void sums_of(const double* p, const double* const* g, int n, double* out) {
  __m256d s[K];
  for (int k = 0; k < K; ++k) s[k] = _mm256_setzero_pd();
  int j = 0;
  for (; j + 4 <= n; j += 4) {
    const __m256d pj = _mm256_loadu_pd(p + j);
    for (int k = 0; k < K; ++k) s[k] = _mm256_add_pd(s[k], _mm256_mul_pd(pj, _mm256_loadu_pd(g[k] + j)));
  }
  for (int k = 0; k < K; ++k) {
    alignas(32) double l[4];
    _mm256_store_pd(l, s[k]);
    for (int i = j; i < n; ++i) l[0] += p[i] * g[k][i];
    out[k] = (l[0] + l[1]) + (l[2] + l[3]);
  }
}

// Up to four rows of the simultaneous sweep, given from the highest down, over all users:
// each user's power and row stay in registers while the rows pass, and each row replaces
// them only on a strict improvement, as row after row would. (Skipping the division where a
// bound shows no lane can improve was tried: the mispredicted branches cost more.)
template <int K>
void improve(const double* const* g, const double* I, const double* N, const double* C, int n,
             const double* old, const double* activity, const double* target, double* p,
             double* best) {
  int r = 0;
  for (; r + 4 <= n; r += 4) {
    const __m256d o = _mm256_loadu_pd(old + r), a = _mm256_loadu_pd(activity + r);
    const __m256d t = _mm256_loadu_pd(target + r);
    __m256d cur = _mm256_loadu_pd(p + r), row = _mm256_loadu_pd(best + r);
    for (int k = 0; k < K; ++k) {
      const __m256d gr = _mm256_loadu_pd(g[k] + r);
      const __m256d others = _mm256_sub_pd(_mm256_set1_pd(I[k]), _mm256_mul_pd(o, gr));
      const __m256d y = _mm256_mul_pd(_mm256_add_pd(_mm256_mul_pd(others, a), _mm256_set1_pd(N[k])), t);
      const __m256d need = _mm256_div_pd(y, gr);
      const __m256d better = _mm256_cmp_pd(need, cur, _CMP_LT_OQ);
      cur = _mm256_blendv_pd(cur, need, better);
      row = _mm256_blendv_pd(row, _mm256_set1_pd(C[k]), better);
    }
    _mm256_storeu_pd(p + r, cur);
    _mm256_storeu_pd(best + r, row);
  }
  for (; r < n; ++r)
    for (int k = 0; k < K; ++k) {
      const double q = ((I[k] - old[r] * g[k][r]) * activity[r] + N[k]) * target[r] / g[k][r];
      if (q < p[r]) {
        p[r] = q;
        best[r] = C[k];
      }
    }
}

typedef void (*sums_function)(const double*, const double* const*, int, double*);
typedef void (*improve_function)(const double* const*, const double*, const double*, const double*,
                                 int, const double*, const double*, const double*, double*, double*);
const sums_function sums_by_count[5] = {nullptr, sums_of<1>, sums_of<2>, sums_of<3>, sums_of<4>};
const improve_function improve_by_count[5] = {nullptr, improve<1>, improve<2>, improve<3>, improve<4>};


// The plain start keeps the least need of each user over the rows in row order; the least
// of the same values in any grouping is the same, so users go four at a time.
void least_alone4(const Trl_UplinkKernels::rows& R, const double* target, double* p) {
  const int n = R.users;
  int r = 0;
  for (; r + 4 <= n; r += 4) {
    const __m256d t = _mm256_loadu_pd(target + r);
    __m256d least = _mm256_set1_pd(largest);
    for (int c = 0; c < R.used; ++c) {
      const __m256d need =
          _mm256_mul_pd(_mm256_div_pd(t, _mm256_loadu_pd(R.gains[c] + r)), _mm256_set1_pd(R.noise[c]));
      least = _mm256_blendv_pd(least, need, _mm256_cmp_pd(need, least, _CMP_LT_OQ));
    }
    _mm256_storeu_pd(p + r, least);
  }
  for (; r < n; ++r) {
    double least = largest;
    for (int c = 0; c < R.used; ++c) {
      const double need = target[r] / R.gains[c][r] * R.noise[c];
      if (need < least) least = need;
    }
    p[r] = least;
  }
}

// Rows four at a time from the last down, with the interference `sums` of all rows: one pass
// of the users over each four rows, highest first.
void simultaneous4(const Trl_UplinkKernels::rows& R, const Trl_UplinkKernels::users& U,
                   const double* sums, const double* old, double* p) {
  for (int top = R.used - 1; top >= 0; top -= 4) {
    const int K = std::min(4, top + 1);
    const double* g[4];
    double I[4], N[4], C[4];
    for (int k = 0; k < K; ++k) {
      g[k] = R.gains[top - k];
      I[k] = sums[top - k];
      N[k] = R.noise[top - k];
      C[k] = top - k;
    }
    improve_by_count[K](g, I, N, C, R.users, old, U.activity, U.target, p, U.server);
  }
}

}  // namespace

void Trl_UplinkKernels::weighted_sums(const double* p, const double* const* gains, int count, int n,
                                      double* sum) {
  for (int k = 0; k < count; k += 4) sums_by_count[std::min(4, count - k)](p, gains + k, n, sum + k);
}

bool Trl_UplinkKernels::all_within(const double* v, int n, double low, double high) {
  const __m256d lo = _mm256_set1_pd(low), hi = _mm256_set1_pd(high);
  __m256d inside = _mm256_castsi256_pd(_mm256_set1_epi64x(-1));
  int r = 0;
  for (; r + 4 <= n; r += 4) {
    const __m256d x = _mm256_loadu_pd(v + r);
    inside = _mm256_and_pd(inside, _mm256_and_pd(_mm256_cmp_pd(x, lo, _CMP_GE_OQ), _mm256_cmp_pd(x, hi, _CMP_LE_OQ)));
  }
  bool all = _mm256_movemask_pd(inside) == 0xF;
  for (; r < n; ++r) all = all && v[r] >= low && v[r] <= high;
  return all;
}

bool Trl_UplinkKernels::normal_gains(const double* g, int n) { return all_within(g, n, 0x1p-1020, 0x1p1020); }

double Trl_UplinkKernels::largest_change(const double* now, const double* before, int n) {
  __m256d worst = _mm256_setzero_pd();
  int r = 0;
  for (; r + 4 <= n; r += 4) {
    const __m256d p = _mm256_loadu_pd(now + r), q = _mm256_loadu_pd(before + r);
    const __m256d up = _mm256_div_pd(p, q), down = _mm256_div_pd(q, p);
    const __m256d change = _mm256_blendv_pd(down, up, _mm256_cmp_pd(up, down, _CMP_GT_OQ));
    worst = _mm256_blendv_pd(worst, change, _mm256_cmp_pd(change, worst, _CMP_GT_OQ));
  }
  alignas(32) double lanes[4];
  _mm256_store_pd(lanes, worst);
  double result = 0;
  for (double w : lanes)
    if (w > result) result = w;
  for (; r < n; ++r) {
    const double up = now[r] / before[r], down = before[r] / now[r];
    const double change = up > down ? up : down;
    if (change > result) result = change;
  }
  return result;
}

// ---------------------------------------------------------------- in sequence

void Trl_UplinkKernels::bind(const rows& R) {
  width = (R.used + 3) / 4 * 4;
  by_user.assign(static_cast<size_t>(width) * R.users, 1.0);
  const int block = 64;  // users per pass, so that the rows' lines stay in cache
  for (int r0 = 0; r0 < R.users; r0 += block) {
    const int r1 = std::min(R.users, r0 + block);
    for (int c = 0; c < R.used; ++c) {
      const double* g = R.gains[c];
      for (int r = r0; r < r1; ++r) by_user[static_cast<size_t>(r) * width + c] = g[r];
    }
  }
}

void Trl_UplinkKernels::interference(const rows& R, const double* running) {
  total.assign(width, infinity);
  noise.assign(width, 0.0);
  weighted_sums(running, R.gains, R.used, R.users, total.data());
  std::copy(R.noise, R.noise + R.used, noise.begin());
}

// Each user takes the strict least need over the rows from the last to the first. The rows
// go four to a vector; each lane keeps its own least and the highest row reaching it, which
// the lanes then settle as the one row order would: the least value, the highest row among
// equals, and no change where no row needs less than the largest double.
void Trl_UplinkKernels::in_sequence(const rows& R, const users& U, double* running, double* p) {
  found = checks();
  interference(R, running);
  double* I = total.data();
  const __m256d first_index = _mm256_setr_pd(0, 1, 2, 3);
  for (int r = R.users - 1; r >= 0; --r) {
    const double* g = by_user.data() + static_cast<size_t>(r) * width;
    const double own = running[r];
    const __m256d o = _mm256_set1_pd(own), a = _mm256_set1_pd(U.activity[r]);
    const __m256d t = _mm256_set1_pd(U.target[r]);
    __m256d least = _mm256_set1_pd(largest), row = _mm256_set1_pd(-1);
    for (int c = width - 4; c >= 0; c -= 4) {
      const __m256d gc = _mm256_loadu_pd(g + c);
      const __m256d others = _mm256_sub_pd(_mm256_loadu_pd(I + c), _mm256_mul_pd(o, gc));
      const __m256d need = _mm256_div_pd(
          _mm256_mul_pd(_mm256_add_pd(_mm256_mul_pd(others, a), _mm256_loadu_pd(noise.data() + c)), t), gc);
      const __m256d better = _mm256_cmp_pd(need, least, _CMP_LT_OQ);
      least = _mm256_blendv_pd(least, need, better);
      row = _mm256_blendv_pd(row, _mm256_add_pd(first_index, _mm256_set1_pd(c)), better);
    }
    alignas(32) double lv[4], lr[4];
    _mm256_store_pd(lv, least);
    _mm256_store_pd(lr, row);
    double value = largest, best = U.server[r];
    for (int l = 0; l < 4; ++l)
      if (lr[l] >= 0 && (lv[l] < value || (lv[l] == value && lr[l] > best))) {
        value = lv[l];
        best = lr[l];
      }
    p[r] = value;
    U.server[r] = best;
    const __m256d change = _mm256_set1_pd(value - own);
    for (int c = 0; c < width; c += 4)
      _mm256_storeu_pd(I + c, _mm256_add_pd(_mm256_loadu_pd(I + c), _mm256_mul_pd(change, _mm256_loadu_pd(g + c))));
    running[r] = value;
  }
}

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

// ---------------------------------------------------------------- eight lanes

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx512f,avx512dq,avx512vl"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx512f,avx512dq,avx512vl")
#endif

namespace {

// Users per block: on one thread, few enough that the gains of all rows stay in the nearest
// caches from the estimates to the sums; on two, more, so that the threads meet less often,
// each with half the rows (and two blocks in cache at a time).
const int block_alone = 64;
const int block_split = 256;
const int groups_per_block = block_split / 8;
const double estimate_margin = 1.0 / 1024;
const double smallest_margin = 0x1p-1000;  // covers estimates that lose bits below DBL_MIN
const double smallest_float_margin = 0x1p-80;  // and those that lose bits below FLT_MIN
const int not_finite = 0x01 | 0x08 | 0x10 | 0x80;  // fpclass: NaN, +inf, -inf

// The need of one row for eight users, in the plain loops' order of operations, and its
// estimate with the approximate reciprocal. `start` is the start from below: target / g * noise.
template <bool start>
__m512d need_of(__m512d g, __m512d I, __m512d N, __m512d o, __m512d a, __m512d t) {
  if (start) return _mm512_mul_pd(_mm512_div_pd(t, g), N);
  const __m512d others = _mm512_sub_pd(I, _mm512_mul_pd(o, g));
  return _mm512_div_pd(_mm512_mul_pd(_mm512_add_pd(_mm512_mul_pd(others, a), N), t), g);
}

// The estimate leaves out what every row of a user shares: the factor target, and in the
// sweep the user's own part of the interference, target * activity * old power, which the
// exact need subtracts from every row alike. What is left, (activity * I + noise) / g, orders
// the rows as the needs do, within a few units in the last place of the needs' terms, when
// the inputs are in the ranges estimable() checks. One fused operation and one product.
template <bool start>
__m512d estimate_of(__m512d g, __m512d I, __m512d N, __m512d a) {
  const __m512d reciprocal = _mm512_maskz_rcp14_pd(0xFF, g);  // maskz: no undefined register
  if (start) return _mm512_mul_pd(N, reciprocal);
  return _mm512_mul_pd(_mm512_fmadd_pd(a, I, N), reciprocal);
}

// The least and second least key over rows k_lo to k_hi - 1 for the eight users at j (see
// estimate_pass in least_needs). A function of its own, with everything it reads passed by
// value, so that the loop keeps its pointers, bounds and masks in registers: inside the
// closure the compiler reloaded them on every row, twelve loads for the three it needs.
template <bool start>
__attribute__((noinline)) void least_two_keys(const double* const* gains, const double* noise, const double* I,
                                              int k_lo, int k_hi, int j, int ahead, __mmask8 lanes, __m512d a,
                                              __m512i* least_out, __m512i* second_out) {
  const __m512i value_bits = _mm512_set1_epi64(~int64_t{0xFFFF}), one = _mm512_set1_epi64(1);
  __m512i least = _mm512_set1_epi64(std::numeric_limits<int64_t>::max()), second = least;
  __m512i row = _mm512_set1_epi64(k_lo);
  for (int k = k_lo; k < k_hi; ++k) {
    const double* g = gains[k] + j;
    _mm_prefetch(reinterpret_cast<const char*>(g + ahead), _MM_HINT_T1);
    const __m512d e = estimate_of<start>(_mm512_maskz_loadu_pd(lanes, g), _mm512_set1_pd(start ? 0 : I[k]),
                                         _mm512_set1_pd(noise[k]), a);
    const __m512i key = _mm512_ternarylogic_epi64(_mm512_castpd_si512(e), value_bits, row, 0xEA);
    // (Masked forms with every lane set: the plain ones trip a warning in GCC 12's headers.)
    second = _mm512_mask_min_epi64(second, 0xFF, _mm512_mask_max_epi64(key, 0xFF, key, least), second);
    least = _mm512_mask_min_epi64(least, 0xFF, key, least);
    row = _mm512_add_epi64(row, one);
  }
  *least_out = least;
  *second_out = second;
}

// The same for sixteen users at j in single precision, returned as the double-precision
// keys least_two_keys gives (the value's bits with the row in the low 16). The float key
// holds the row in its low 8 bits, so up to 256 rows; its value is the estimate to within
// 2^-14 (reciprocal) + 2^-15 (the row bits) + a few float roundings, still far inside the
// margin. Sixteen lanes a vector take half the operations per row of the double keys.
template <bool start>
__attribute__((noinline)) void least_two_keys_float(const double* const* gains, const float* noise,
                                                    const float* I, int k_lo, int k_hi, int j, int ahead,
                                                    __mmask16 lanes, __m512 a, __m512i* keys_out) {
  const __m512i value_bits = _mm512_set1_epi32(~0xFF), one = _mm512_set1_epi32(1);
  __m512i least = _mm512_set1_epi32(std::numeric_limits<int32_t>::max()), second = least;
  __m512i row = _mm512_set1_epi32(k_lo);
  const __mmask8 low = static_cast<__mmask8>(lanes), high = static_cast<__mmask8>(lanes >> 8);
  for (int k = k_lo; k < k_hi; ++k) {
    const double* g = gains[k] + j;
    _mm_prefetch(reinterpret_cast<const char*>(g + ahead), _MM_HINT_T1);
    _mm_prefetch(reinterpret_cast<const char*>(g + ahead + 8), _MM_HINT_T1);
    const __m512 gf = _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_maskz_cvtpd_ps(0xFF, _mm512_maskz_loadu_pd(low, g))),
                                         _mm512_maskz_cvtpd_ps(0xFF, _mm512_maskz_loadu_pd(high, g + 8)), 1);
    const __m512 reciprocal = _mm512_maskz_rcp14_ps(0xFFFF, gf);
    const __m512 e = start ? _mm512_mul_ps(_mm512_set1_ps(noise[k]), reciprocal)
                           : _mm512_mul_ps(_mm512_fmadd_ps(a, _mm512_set1_ps(I[k]), _mm512_set1_ps(noise[k])),
                                           reciprocal);
    const __m512i key = _mm512_ternarylogic_epi32(_mm512_castps_si512(e), value_bits, row, 0xEA);
    second = _mm512_mask_min_epi32(second, 0xFFFF, _mm512_mask_max_epi32(key, 0xFFFF, key, least), second);
    least = _mm512_mask_min_epi32(least, 0xFFFF, key, least);
    row = _mm512_add_epi32(row, one);
  }
  // Widened: the value to double (exact), the row into the low 16 bits, which a double made
  // from a float has clear.
  const __m512i row_bits = _mm512_set1_epi32(0xFF);
  const __m512i both[2] = {least, second};
  for (int w = 0; w < 2; ++w) {
    const __m512 value = _mm512_castsi512_ps(_mm512_and_si512(both[w], value_bits));
    const __m512i rows = _mm512_and_si512(both[w], row_bits);
    for (int h = 0; h < 2; ++h) {
      const __m512d wide =
          _mm512_maskz_cvtps_pd(0xFF, h ? _mm512_maskz_extractf32x8_ps(0xFF, value, 1) : _mm512_maskz_extractf32x8_ps(0xFF, value, 0));
      const __m512i r = _mm512_maskz_cvtepu32_epi64(
          0xFF, h ? _mm512_maskz_extracti32x8_epi32(0xFF, rows, 1) : _mm512_maskz_extracti32x8_epi32(0xFF, rows, 0));
      keys_out[2 * h + w] = _mm512_or_si512(_mm512_castpd_si512(wide), r);
    }
  }
}

// K rows' four partial sums (s[k] at partial + 4k) plus p[i] * g[k][j0 + i] for i < count,
// four users a step. K independent chains of additions, kept in registers.
template <int K>
void add_products(const double* p, const double* const* gains, int j0, int count, double* partial) {
  __m256d s[K];
  const double* g[K];
#pragma GCC unroll 8
  for (int m = 0; m < K; ++m) {
    s[m] = _mm256_loadu_pd(partial + 4 * m);
    g[m] = gains[m] + j0;
  }
  for (int i = 0; i < count; i += 4) {
    const __m256d pi = _mm256_loadu_pd(p + i);
#pragma GCC unroll 8
    for (int m = 0; m < K; ++m) s[m] = _mm256_add_pd(s[m], _mm256_mul_pd(pi, _mm256_loadu_pd(g[m] + i)));
  }
#pragma GCC unroll 8
  for (int m = 0; m < K; ++m) _mm256_storeu_pd(partial + 4 * m, s[m]);
}

typedef void (*add_products_function)(const double*, const double* const*, int, int, double*);
const add_products_function add_products_by_count[9] = {
    nullptr, add_products<1>, add_products<2>, add_products<3>, add_products<4>,
    add_products<5>, add_products<6>, add_products<7>, add_products<8>};

}  // namespace

// Single-precision estimates hold where the rows' noise lies in [2^-60, 2^20] and their
// interference in [0, 2^20], and for users whose activity is at most 2^20 (the others take
// every row exactly): the numerators, activity * I + noise, then lie in [2^-60, 2^41]. A gain
// beyond the float range gives an estimate of 0 or infinity; the true estimate is then below
// 2^-87 or above 2^66. So the need pass takes estimates below 2^-80 as near each other and a
// least of 2^60 or more as unsure, and everything else orders as in double precision.
bool Trl_UplinkKernels::float_estimates(const rows& R, const double* I) {
  if (!float_keys_enabled || R.used > 256 || !all_within(R.noise, R.used, 0x1p-60, 0x1p20)) return false;
  if (I && !all_within(I, R.used, 0, 0x1p20)) return false;
  float_row_noise.assign(R.noise, R.noise + R.used);
  if (I) float_row_sums.assign(I, I + R.used);
  return true;
}

// Blocks of users, each in three passes, by one thread or by two that share the rows out.
// First, eight users at a time, each thread over its rows: the estimates, with the least and
// second least key of each user. Second, each thread for its share of the block's users:
// where one row alone is near the least over all rows, its exact need is the user's;
// otherwise the rows are walked again, all of them: the least finite estimate, then from the
// last row down the exact need where the estimate is near it (or not finite), with a strict
// improvement as in the plain loop. Third, each thread over its rows: the new powers times the
// gains into each row's four partial sums, grouped as weighted_sums groups them, while the
// block is in cache. Each row's sum is added by one thread in the users' order, so the split
// changes no result.
template <bool start>
void Trl_UplinkKernels::least_needs(const rows& R, const users& U, const double* old, double* p) {
  const int n = R.users, used = R.used;
  partial.assign(static_cast<size_t>(used) * 4, 0.0);
  keys.resize(static_cast<size_t>(2) * 2 * 2 * groups_per_block * 8);
  const bool large = threads >= 2 && used >= 2 && static_cast<double>(used) * n >= two_threads_from;
  const bool split = large && (!measure_threads || split_choice.split_next());
  auto began = std::chrono::steady_clock::now();
  const double* I = start ? nullptr : sums.data();
  const bool in_floats = float_estimates(R, I);
  const float* const float_noise = float_row_noise.data();
  const float* const float_sums = float_row_sums.data();
  meeting[0].count.store(0, std::memory_order_relaxed);
  meeting[1].count.store(0, std::memory_order_relaxed);
  // The members the threads read, as locals: no loop reads them through `this`, whose lines
  // hold what the other thread writes.
  int64_t* const key_table = keys.data();
  double* const partial_sums = partial.data();
  bool signed_powers[2] = {false, false};  // a thread gave a power below 0 or NaN
  bool over[2] = {false, false};           // and one above its user's limit
  double worst_of[2][8] = {};              // its largest changes, lane by lane

  auto part = [&, n, used, I, in_floats, float_noise, float_sums](int T, int parts) {
    // Copies on this thread's stack, so that neither thread reads the other's lines.
    const rows Rt = R;
    const users Ut = U;
    const int k_lo = used * T / parts, k_hi = used * (T + 1) / parts;
    const __m512d margin = _mm512_set1_pd(estimate_margin);
    const __m512d smallest = _mm512_set1_pd(in_floats ? smallest_float_margin : smallest_margin);
    const __m512d quarter_of_largest = _mm512_set1_pd(in_floats ? 0x1p60 : largest / 4);
    const __m512d activity_limit = _mm512_set1_pd(in_floats ? 0x1p20 : 0x1p64);
    const __m512i lane_offsets = _mm512_setr_epi64(0, 8, 16, 24, 32, 40, 48, 56);
    const __m512i row_bits = _mm512_set1_epi64(0xFFFF), value_bits = _mm512_set1_epi64(~int64_t{0xFFFF});
    auto row_of = [&](int k) { return _mm512_set1_pd(start ? 0 : I[k]); };
    auto lanes_at = [n](int j) { return j + 8 <= n ? __mmask8{0xFF} : static_cast<__mmask8>((1u << (n - j)) - 1); };
    __mmask8 signed_lanes = 0, over_lanes = 0;
    __m512d worst_lanes = _mm512_setzero_pd();
    int meetings = 0;
    auto meet = [&] {
      if (parts == 1) return;
      meeting[T].count.store(++meetings, std::memory_order_release);
      for (int spins = 0; meeting[1 - T].count.load(std::memory_order_acquire) < meetings; ++spins) {
        if (spins < 1 << 14) _mm_pause();
        else std::this_thread::yield();
      }
    };
    const int block = parts == 1 ? block_alone : block_split;
    auto groups_of = [n, block](int b) { return (std::min(block, n - b * block) + 7) / 8; };
    auto keys_of = [&](int b, int thread) { return key_table + ((b & 1) * 2 + thread) * 2 * groups_per_block * 8; };
    auto estimate_pass = [&](int b) {
      int64_t* least_keys = keys_of(b, T);
      int64_t* second_keys = least_keys + groups_per_block * 8;
      if (in_floats) {
        for (int v = 0; v < groups_of(b); v += 2) {
          const int j = b * block + 8 * v, m = std::min(16, n - j);
          const __mmask16 lanes = static_cast<__mmask16>((1u << m) - 1);
          __m512 a = _mm512_setzero_ps();
          if (!start)
            a = _mm512_insertf32x8(
                _mm512_castps256_ps512(_mm512_maskz_cvtpd_ps(0xFF, _mm512_maskz_loadu_pd(static_cast<__mmask8>(lanes), Ut.activity + j))),
                _mm512_maskz_cvtpd_ps(0xFF, _mm512_maskz_loadu_pd(static_cast<__mmask8>(lanes >> 8), Ut.activity + j + 8)), 1);
          __m512i k4[4];
          least_two_keys_float<start>(Rt.gains, float_noise, float_sums, k_lo, k_hi, j, block, lanes, a, k4);
          _mm512_storeu_si512(least_keys + 8 * v, k4[0]);
          _mm512_storeu_si512(second_keys + 8 * v, k4[1]);
          _mm512_storeu_si512(least_keys + 8 * v + 8, k4[2]);
          _mm512_storeu_si512(second_keys + 8 * v + 8, k4[3]);
        }
        return;
      }
      for (int v = 0; v < groups_of(b); ++v) {
        const int j = b * block + 8 * v;
        const __mmask8 lanes = lanes_at(j);
        const __m512d a = start ? _mm512_setzero_pd() : _mm512_maskz_loadu_pd(lanes, Ut.activity + j);
        // Each estimate becomes a key: its bits with the row number in the low 16 (a change
        // of 2^-36 at most, far inside the margin). Keys of estimates of 0 and above order as
        // the estimates do, those of negative ones below all of them, so the least and second
        // least key are integer minima, off the floating-point pipes.
        __m512i least, second;
        least_two_keys<start>(Rt.gains, Rt.noise, I, k_lo, k_hi, j, block, lanes, a, &least, &second);
        _mm512_storeu_si512(least_keys + 8 * v, least);
        _mm512_storeu_si512(second_keys + 8 * v, second);
      }
    };
    auto need_pass = [&](int b) {
      const int groups = groups_of(b);
      // Locals for what the loop reads: its vector stores may alias anything, so whatever it
      // read through the closure would be read again after each of them.
      const double* const* const gains = Rt.gains;
      const double* const noise = Rt.noise;
      const double* const activity = Ut.activity;
      const double* const target = Ut.target;
      double* const server = Ut.server;
      double* const powers = p;
      const double* const before = old;
      const double* const limit = Ut.limit;
      __mmask8 over_here = 0;
      __m512d worst = _mm512_setzero_pd();
      const double* const interference = I;
      __mmask8 signed_here = 0;
      const __m512d margin_v = margin, smallest_v = smallest, unsure_from = quarter_of_largest;
      const __m512d most_activity = activity_limit;
      // Estimates up to this lie near the least.
      auto near_bound = [margin_v, smallest_v](__m512d least) {
        return _mm512_add_pd(_mm512_add_pd(least, _mm512_mul_pd(_mm512_abs_pd(least), margin_v)), smallest_v);
      };
      auto key_at = [&](int thread, int which, int v) {
        return _mm512_loadu_si512(keys_of(b, thread) + (which * groups_per_block + v) * 8);
      };
      for (int v = groups * T / parts; v < groups * (T + 1) / parts; ++v) {
        const int j = b * block + 8 * v;
        const __mmask8 lanes = lanes_at(j);
        __m512i least = key_at(0, 0, v), second = key_at(0, 1, v);
        if (parts == 2) {
          const __m512i other_least = key_at(1, 0, v);
          const __m512i other_second = key_at(1, 1, v);
          second = _mm512_mask_min_epi64(second, 0xFF, second, other_second);
          second = _mm512_mask_min_epi64(second, 0xFF, second, _mm512_mask_max_epi64(least, 0xFF, least, other_least));
          least = _mm512_mask_min_epi64(least, 0xFF, least, other_least);
        }
        const __m512d o = start ? _mm512_setzero_pd() : _mm512_maskz_loadu_pd(lanes, before + j);
        const __m512d a = start ? _mm512_setzero_pd() : _mm512_maskz_loadu_pd(lanes, activity + j);
        const __m512d t = _mm512_maskz_loadu_pd(lanes, target + j);
        // Users whose target or activity lies outside the estimate's ranges take every row exactly.
        __mmask8 tame = _mm512_cmp_pd_mask(t, _mm512_set1_pd(0x1p-64), _CMP_GE_OQ) &
                        _mm512_cmp_pd_mask(t, _mm512_set1_pd(0x1p64), _CMP_LE_OQ);
        if (!start)
          tame &= _mm512_cmp_pd_mask(a, _mm512_setzero_pd(), _CMP_GE_OQ) &
                  _mm512_cmp_pd_mask(a, most_activity, _CMP_LE_OQ);
        const __mmask8 wild = static_cast<__mmask8>(~tame) & lanes;
        const __m512d least_value = _mm512_castsi512_pd(_mm512_and_si512(least, value_bits));
        const __m512d second_value = _mm512_castsi512_pd(_mm512_and_si512(second, value_bits));
        __m512d cur = _mm512_set1_pd(largest);
        __m512d row = start ? _mm512_setzero_pd() : _mm512_mask_loadu_pd(_mm512_setzero_pd(), lanes, server + j);
        // Walked again: users with a second row near the least, and users whose least is
        // negative, NaN, or not safely below an estimate that overflowed.
        const __mmask8 plain_least = _mm512_cmp_pd_mask(least_value, _mm512_setzero_pd(), _CMP_GE_OQ) &
                                     _mm512_cmp_pd_mask(least_value, unsure_from, _CMP_LT_OQ);
        const __mmask8 crowded = (_mm512_cmp_pd_mask(second_value, near_bound(least_value), _CMP_LE_OQ) |
                                  static_cast<__mmask8>(~plain_least) | wild) &
                                 lanes;
        if (!crowded) {
          // One candidate per user: its gain, interference and noise gathered by row.
          const __m512i least_row = _mm512_and_si512(least, row_bits);
          const __m512i row_pointers = _mm512_mask_i64gather_epi64(least_row, 0xFF, least_row, gains, 8);
          const __m512i at = _mm512_add_epi64(row_pointers, _mm512_add_epi64(_mm512_set1_epi64(j * 8), lane_offsets));
          const __m512d g = _mm512_mask_i64gather_pd(_mm512_set1_pd(1), lanes, at, nullptr, 1);
          const __m512d N = _mm512_mask_i64gather_pd(_mm512_setzero_pd(), 0xFF, least_row, noise, 8);
          const __m512d Ik = start ? _mm512_setzero_pd() : _mm512_mask_i64gather_pd(_mm512_setzero_pd(), 0xFF, least_row, interference, 8);
          const __m512d need = need_of<start>(g, Ik, N, o, a, t);
          const __mmask8 better = _mm512_mask_cmp_pd_mask(lanes, need, cur, _CMP_LT_OQ);
          cur = _mm512_mask_blend_pd(better, cur, need);
          row = _mm512_mask_blend_pd(better, row, _mm512_cvtepi64_pd(least_row));
        } else {
          // The least finite estimate, then every row near it or not finite, from the last
          // row down with a strict improvement.
          __m512d finite_least = _mm512_set1_pd(infinity);
          for (int k = 0; k < used; ++k) {
            const __m512d e = estimate_of<start>(_mm512_maskz_loadu_pd(lanes, gains[k] + j), row_of(k),
                                                 _mm512_set1_pd(noise[k]), a);
            const __mmask8 finite = static_cast<__mmask8>(~_mm512_fpclass_pd_mask(e, not_finite));
            finite_least = _mm512_mask_min_pd(finite_least, finite, finite_least, e);
          }
          const __m512d bound = near_bound(finite_least);
          for (int k = used - 1; k >= 0; --k) {
            const __m512d g = _mm512_maskz_loadu_pd(lanes, gains[k] + j);
            const __m512d N = _mm512_set1_pd(noise[k]);
            const __m512d e = estimate_of<start>(g, row_of(k), N, a);
            const __mmask8 near =
                (_mm512_cmp_pd_mask(e, bound, _CMP_LE_OQ) | _mm512_fpclass_pd_mask(e, not_finite) | wild) & lanes;
            if (!near) continue;
            const __m512d need = need_of<start>(g, row_of(k), N, o, a, t);
            const __mmask8 better = _mm512_mask_cmp_pd_mask(near, need, cur, _CMP_LT_OQ);
            cur = _mm512_mask_blend_pd(better, cur, need);
            row = _mm512_mask_blend_pd(better, row, _mm512_set1_pd(k));
          }
        }
        _mm512_mask_storeu_pd(powers + j, lanes, cur);
        signed_here |= _mm512_mask_cmp_pd_mask(lanes, cur, _mm512_setzero_pd(), _CMP_NGE_UQ);
        if (!start && limit) {
          // The checks of Trl_Assigner, lane by lane: a power over its limit, and the change
          // taken only where it is greater (a NaN never is), which any order of users gives.
          over_here |= _mm512_mask_cmp_pd_mask(lanes, cur, _mm512_maskz_loadu_pd(lanes, limit + j), _CMP_GT_OQ);
          const __m512d up = _mm512_div_pd(cur, o), down = _mm512_div_pd(o, cur);
          const __m512d change = _mm512_mask_blend_pd(_mm512_cmp_pd_mask(up, down, _CMP_GT_OQ), down, up);
          worst = _mm512_mask_blend_pd(_mm512_mask_cmp_pd_mask(lanes, change, worst, _CMP_GT_OQ), worst, change);
        }
        if (!start) _mm512_mask_storeu_pd(server + j, lanes, row);
      }
      signed_lanes |= signed_here;
      over_lanes |= over_here;
      worst_lanes = _mm512_mask_blend_pd(_mm512_cmp_pd_mask(worst, worst_lanes, _CMP_GT_OQ), worst_lanes, worst);
    };
    // Whole groups of four only: the users past the last multiple of four go into the first
    // partial sum at the end, as in weighted_sums. Eight rows at a time keep eight chains of
    // additions going.
    auto sum_pass = [&](int b) {
      const int j0 = b * block, in_block = std::min(block, n - j0);
      const int grouped = j0 + in_block == n ? in_block / 4 * 4 : in_block;
      for (int k0 = k_lo; k0 < k_hi; k0 += 8)
        add_products_by_count[std::min(8, k_hi - k0)](p + j0, Rt.gains + k0, j0, grouped, partial_sums + 4 * k0);
    };
    const int blocks = (n + block - 1) / block;
    if (parts == 1) {
      for (int b = 0; b < blocks; ++b) {
        estimate_pass(b);
        need_pass(b);
        sum_pass(b);
      }
    } else {
      // One meeting per block: after it, the other thread has settled the needs of block b
      // and estimated block b + 1, so both can sum block b and settle block b + 1. The keys
      // of two blocks in turn keep apart what one thread writes and the other still reads.
      estimate_pass(0);
      meet();
      // A shared sweep is timed from here, once both threads work: the worker may have been
      // asleep after lone sweeps, and its waking would otherwise count against every try of
      // the shared way (a sweep of 40 x 10,000 takes about as long as a wake-up here). The
      // estimates of the first block, left out, are a fortieth of that sweep.
      if (T == 0) began = std::chrono::steady_clock::now();
      for (int b = 0; b < blocks; ++b) {
        need_pass(b);
        if (b + 1 < blocks) estimate_pass(b + 1);
        meet();
        sum_pass(b);
      }
    }
    signed_powers[T] = signed_lanes != 0;
    over[T] = over_lanes != 0;
    _mm512_storeu_pd(worst_of[T], worst_lanes);
  };

  // The worker is made on the first split sweep, so that small plans never start it.
  const bool shared = split && Trl_WorkerThread::shared().start([&part] { part(1, 2); });
  if (shared) {
    part(0, 2);
    Trl_WorkerThread::shared().wait();
  } else {
    part(0, 1);
  }
  if (large && measure_threads && !start) {
    const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - began;
    split_choice.record(shared, spent.count() / (static_cast<double>(used) * n));
  }
  next_sums.resize(used);
  for (int k = 0; k < used; ++k) {
    double* l = partial.data() + 4 * k;
    for (int i = n / 4 * 4; i < n; ++i) l[0] += p[i] * R.gains[k][i];
    next_sums[k] = (l[0] + l[1]) + (l[2] + l[3]);
  }
  next_sums_ready = true;
  next_powers_nonnegative = !signed_powers[0] && !signed_powers[1];
  if (!start && U.limit) {
    found.ready = true;
    found.over_limit = over[0] || over[1];
    found.largest_change = 0;
    for (const double* lanes : worst_of)
      for (int l = 0; l < 8; ++l)
        if (lanes[l] > found.largest_change) found.largest_change = lanes[l];
  }
}

template void Trl_UplinkKernels::least_needs<true>(const rows&, const users&, const double*, double*);
template void Trl_UplinkKernels::least_needs<false>(const rows&, const users&, const double*, double*);

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

// ---------------------------------------------------------------- the choice of loops

// The estimates order the rows as the exact needs do only within these ranges (beside the
// per-user ones checked in least_needs): each row's noise well inside the normal doubles, so
// that no term of a need is subnormal, and, in the sweep, powers of 0 and above whose
// interference sums are finite, so that a user's own part of a row's interference is no
// larger than the row's sum.
bool Trl_UplinkKernels::estimable_rows(const rows& R) {
  return eight_lanes() && R.gains_normal && R.used <= 0x10000 && all_within(R.noise, R.used, 0x1p-900, 0x1p900);
}

void Trl_UplinkKernels::least_alone(const rows& R, const double* target, double* p) {
  next_sums_ready = false;
  found = checks();
  if (!estimable_rows(R)) {
    least_alone4(R, target, p);
    return;
  }
  least_needs<true>(R, users{target, nullptr, nullptr}, nullptr, p);
}

void Trl_UplinkKernels::simultaneous(const rows& R, const users& U, const double* old, bool continuing,
                                     double* p) {
  bool nonnegative;
  if (continuing && next_sums_ready && static_cast<int>(next_sums.size()) == R.used) {
    sums.swap(next_sums);
    nonnegative = next_powers_nonnegative;
  } else {
    sums.resize(R.used);
    weighted_sums(old, R.gains, R.used, R.users, sums.data());
    nonnegative = all_within(old, R.users, 0, infinity);
  }
  next_sums_ready = false;
  found = checks();
  if (!estimable_rows(R) || !nonnegative || !all_within(sums.data(), R.used, 0, largest)) {
    std::fill(p, p + R.users, largest);
    simultaneous4(R, U, sums.data(), old, p);
    return;
  }
  least_needs<false>(R, U, old, p);
}
