#include "propagation/Trl_Motorola.h"

#include <immintrin.h>

#include <algorithm>
#include <cmath>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"

// The two-lane (SSE) and four-lane (AVX2) exp and log of the C library's vector math
// library, libmvec.
extern "C" __m128d _ZGVbN2v_exp(__m128d);
extern "C" __m128d _ZGVbN2v_log(__m128d);
// The four-lane ones take AVX registers, so they are declared for AVX2 like their caller
// (clang refuses the call otherwise).
extern "C" __attribute__((target("avx2"))) __m256d _ZGVdN4v_exp(__m256d);
extern "C" __attribute__((target("avx2"))) __m256d _ZGVdN4v_log(__m256d);
// The eight-lane exp gives the four-lane one's bits (the same algorithm, checked by the
// propagation tests); the eight-lane log does not, so the logs stay four-lane.
extern "C" __attribute__((target("avx512f"))) __m512d _ZGVeN8v_exp(__m512d);

namespace {

// The two steps of a row, each over all its users in turn: first the logs of the squared
// distances, then the exps of the levels. Each library function then runs back to back on
// its own, about a sixth faster than one log and one exp per group of users. Both steps
// return how many users they did, a multiple of four.

// ln(d^2) four users at a time, into out.
__attribute__((target("avx2"))) int logs_four(double tx_x, double tx_y, double tx_z, const double* x,
                                              const double* y, const double* z, int n, double* out) {
  const __m256d X = _mm256_set1_pd(tx_x), Y = _mm256_set1_pd(tx_y), Z = _mm256_set1_pd(tx_z);
  int r = 0;
  for (; r + 4 <= n; r += 4) {
    const __m256d dz = _mm256_sub_pd(Z, _mm256_loadu_pd(z + r));
    const __m256d dx = _mm256_sub_pd(X, _mm256_loadu_pd(x + r));
    const __m256d dy = _mm256_sub_pd(Y, _mm256_loadu_pd(y + r));
    const __m256d plane = _mm256_add_pd(_mm256_mul_pd(dx, dx), _mm256_mul_pd(dy, dy));
    _mm256_storeu_pd(out + r, _ZGVdN4v_log(_mm256_add_pd(_mm256_mul_pd(dz, dz), plane)));
  }
  return r;
}

// exp(slope ln(d^2) + (offset + ln(rx gain))) in place over the logs, four users at a time.
__attribute__((target("avx2"))) int exps_four(double slope, double offset, const double* log_rx_gain, int n,
                                              double* out) {
  const __m256d K = _mm256_set1_pd(slope), A = _mm256_set1_pd(offset);
  int r = 0;
  for (; r + 4 <= n; r += 4) {
    const __m256d level = _mm256_add_pd(_mm256_mul_pd(K, _mm256_loadu_pd(out + r)),
                                        _mm256_add_pd(A, _mm256_loadu_pd(log_rx_gain + r)));
    _mm256_storeu_pd(out + r, _ZGVdN4v_exp(level));
  }
  return r;
}

// The same eight users at a time where the processor has AVX-512.
__attribute__((target("avx512f,avx2"))) int exps_eight(double slope, double offset, const double* log_rx_gain,
                                                       int n, double* out) {
  const __m512d K = _mm512_set1_pd(slope), A = _mm512_set1_pd(offset);
  int r = 0;
  for (; r + 8 <= n; r += 8) {
    const __m512d level = _mm512_add_pd(_mm512_mul_pd(K, _mm512_loadu_pd(out + r)),
                                        _mm512_add_pd(A, _mm512_loadu_pd(log_rx_gain + r)));
    _mm512_storeu_pd(out + r, _ZGVeN8v_exp(level));
  }
  return r;
}

bool has_avx512() {
  static const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx2");
  return avx512;
}

bool has_avx2() {
  static const bool avx2 = __builtin_cpu_supports("avx2");
  return avx2;
}

}  // namespace

bool Trl_Motorola::eight_lanes = true;

Trl_Motorola::Trl_Motorola(double constant, double factor) : constant(constant), factor(factor) {}

double Trl_Motorola::gain(const Trl_Tx& tx, const Trl_Rx& rx) {
  const double d = tx.distance(rx);
  const double loss = constant + factor * std::log10(d);
  const double level = 10 * std::log10(tx.gain * rx.gain) - loss;
  return std::pow(10.0, level * 0.1);
}

tk::string Trl_Motorola::description() { return tk::string(""); }

void Trl_Motorola::gain_row(const Trl_Tx& tx, const double* x, const double* y, const double* z,
                            const double* log_rx_gain, int n, double* out) const {
  const double tx_x = tx.position.xcoord(), tx_y = tx.position.ycoord();
  const double tx_z = tx.position.zcoord();
  const double slope = -factor / 20;  // per ln of the squared distance
  const double offset = std::log(tx.gain) - constant * std::log(10.0) / 10;
  const __m128d X = _mm_set1_pd(tx_x), Y = _mm_set1_pd(tx_y), Z = _mm_set1_pd(tx_z);
  const __m128d K = _mm_set1_pd(slope), A = _mm_set1_pd(offset);
  if (has_avx2()) {
    const int whole = logs_four(tx_x, tx_y, tx_z, x, y, z, n, out);
    const int r = has_avx512() && Trl_Motorola::eight_lanes ? exps_eight(slope, offset, log_rx_gain, whole, out) : 0;
    exps_four(slope, offset, log_rx_gain + r, whole - r, out + r);
    if (whole < n) {
      // The last users, padded to four, through the same four-lane functions: the two-lane
      // ones can differ in the last place, and a gain must not depend on the user's place.
      double px[4], py[4], pz[4], pg[4], po[4];
      for (int k = 0; k < 4; ++k) {
        const int from = std::min(whole + k, n - 1);
        px[k] = x[from];
        py[k] = y[from];
        pz[k] = z[from];
        pg[k] = log_rx_gain[from];
      }
      logs_four(tx_x, tx_y, tx_z, px, py, pz, 4, po);
      exps_four(slope, offset, pg, 4, po);
      for (int k = 0; whole + k < n; ++k) out[whole + k] = po[k];
    }
    return;
  }
  int r = 0;
  for (; r + 2 <= n; r += 2) {
    const __m128d dz = _mm_sub_pd(Z, _mm_loadu_pd(z + r));
    const __m128d dx = _mm_sub_pd(X, _mm_loadu_pd(x + r));
    const __m128d dy = _mm_sub_pd(Y, _mm_loadu_pd(y + r));
    const __m128d plane = _mm_add_pd(_mm_mul_pd(dx, dx), _mm_mul_pd(dy, dy));
    const __m128d d2 = _mm_add_pd(_mm_mul_pd(dz, dz), plane);
    const __m128d level = _mm_add_pd(_mm_mul_pd(K, _ZGVbN2v_log(d2)),
                                     _mm_add_pd(A, _mm_loadu_pd(log_rx_gain + r)));
    _mm_storeu_pd(out + r, _ZGVbN2v_exp(level));
  }
  for (; r < n; ++r) {
    // The last odd user goes through the same vector functions, so that every column is
    // computed alike.
    const double dz = tx_z - z[r], dx = tx_x - x[r], dy = tx_y - y[r];
    const double d2 = dz * dz + (dx * dx + dy * dy);
    const __m128d l = _ZGVbN2v_log(_mm_set1_pd(d2));
    const __m128d level = _mm_add_pd(_mm_mul_pd(K, l), _mm_set1_pd(offset + log_rx_gain[r]));
    out[r] = _mm_cvtsd_f64(_ZGVbN2v_exp(level));
  }
}
