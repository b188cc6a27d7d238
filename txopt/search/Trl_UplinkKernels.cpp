#include "search/Trl_UplinkKernels.h"

#include <immintrin.h>

#include <algorithm>
#include <limits>

namespace {

const double largest = std::numeric_limits<double>::max();
const double infinity = std::numeric_limits<double>::infinity();

}  // namespace

bool Trl_UplinkKernels::enabled = true;

bool Trl_UplinkKernels::available() {
  static const bool avx2 = __builtin_cpu_supports("avx2");
  return enabled && avx2;
}

// Everything below is built for AVX2 without FMA (the build forbids contraction anyway).
// The kernels below are compiled for AVX2 (and chosen at run time); clang, which builds the
// fuzz targets, takes the same as a function attribute.
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

}  // namespace

void Trl_UplinkKernels::weighted_sums(const double* p, const double* const* gains, int count, int n,
                                      double* sum) {
  for (int k = 0; k < count; k += 4) sums_by_count[std::min(4, count - k)](p, gains + k, n, sum + k);
}

// The plain start keeps the least need of each user over the rows in row order; the least
// of the same values in any grouping is the same, so users go four at a time.
void Trl_UplinkKernels::least_alone(const rows& R, const double* target, double* p) {
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

// Rows four at a time from the last down: their sums in one pass, then one pass of the
// users over the four rows, highest first.
void Trl_UplinkKernels::simultaneous(const rows& R, const users& U, const double* old, double* p) {
  for (int top = R.used - 1; top >= 0; top -= 4) {
    const int K = std::min(4, top + 1);
    const double* g[4];
    double I[4], N[4], C[4], low_first[4];
    for (int k = 0; k < K; ++k) {
      g[k] = R.gains[top - k];
      N[k] = R.noise[top - k];
      C[k] = top - k;
    }
    // The sums take the rows lowest first, the order of the gains array.
    sums_by_count[K](old, R.gains + top - K + 1, R.users, low_first);
    for (int k = 0; k < K; ++k) I[k] = low_first[K - 1 - k];
    improve_by_count[K](g, I, N, C, R.users, old, U.activity, U.target, p, U.server);
  }
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
