#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdint>

#include "support/ErrorGuard.h"
#include "toolkit/integer.h"
#include "toolkit/integer_vector.h"
#include "toolkit/matrix.h"
#include "toolkit/random_source.h"
#include "toolkit/vector.h"

namespace {

TEST(RandomSource, FollowsTheLaggedFibonacciRule) {
  // Two sources from one seed agree; the generator's words obey
  // out(k) = (word(k-31) + word(k-3)) >> 1 on the 32-bit sums, which we check on the outputs'
  // high bits: out(k) * 2 differs from out(k-31)*2 + out(k-3)*2 only by the dropped low bits.
  tk::random_source a(12345u), b(12345u);
  std::vector<std::uint32_t> out;
  for (int i = 0; i < 200; ++i) {
    std::uint32_t x = a.next();
    EXPECT_EQ(x, b.next());
    EXPECT_LE(x, 2147483647u);
    out.push_back(x);
  }
  for (size_t k = 31; k < out.size(); ++k) {
    std::uint32_t predicted = (out[k - 31] * 2u + out[k - 3] * 2u) >> 1;
    std::uint32_t diff = (out[k] - predicted) & 0x7fffffffu;
    EXPECT_LE(diff, 1u) << "at output " << k;
  }
}

TEST(RandomSource, DoublesLieInTheUnitIntervalAndSourcesDiffer) {
  tk::random_source::release_seed();
  tk::random_source a, b;  // made in the same second
  bool differ = false;
  for (int i = 0; i < 1000; ++i) {
    double x, y;
    a >> x;
    b >> y;
    EXPECT_GE(x, 0.0);
    EXPECT_LE(x, 1.0);
    if (x != y) differ = true;
  }
  EXPECT_TRUE(differ);
}

TEST(RandomSource, AFixedSeedRepeatsAWholeRun) {
  tk::random_source::fix_seed(7);
  tk::random_source a1, a2;
  std::vector<int> first;
  for (int i = 0; i < 50; ++i) first.push_back(a1(0, 9)), first.push_back(a2(0, 9));
  tk::random_source::fix_seed(7);
  tk::random_source b1, b2;
  std::vector<int> second;
  for (int i = 0; i < 50; ++i) second.push_back(b1(0, 9)), second.push_back(b2(0, 9));
  tk::random_source::release_seed();
  EXPECT_EQ(first, second);
}

TEST(Matrix, SolvesAKnownSystemAndReportsRank) {
  tk::matrix m(3, 3);
  double a[3][3] = {{2, 1, -1}, {-3, -1, 2}, {-2, 1, 2}};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) m(i, j) = a[i][j];
  tk::vector b(3);
  b[0] = 8;
  b[1] = -11;
  b[2] = -3;
  tk::vector x = m.solve(b);
  EXPECT_NEAR(x[0], 2.0, 1e-12);
  EXPECT_NEAR(x[1], 3.0, 1e-12);
  EXPECT_NEAR(x[2], -1.0, 1e-12);

  tk::matrix singular(2, 2);
  singular(0, 0) = 1;
  singular(0, 1) = 2;
  singular(1, 0) = 2;
  singular(1, 1) = 4;
  tk::vector c(2);
  EXPECT_TK_ERROR(singular.solve(c), 1, "matrix::solve: matrix has not full rank.");
  EXPECT_TK_ERROR(m.solve(c), 1, "Solve: wrong dimensions\n");
  EXPECT_TK_ERROR(m(3, 0), 1, "matrix: row index out of range");
  EXPECT_TK_ERROR(m(0, -1), 1, "matrix: column index out of range");
  EXPECT_TK_ERROR(m.to_vector(), 1, "error: cannot make vector from matrix\n");
  EXPECT_TK_ERROR(tk::matrix(-1, 2), 1, "matrix: negative dimension.");
}

TEST(Vector, DotProductAndChecks) {
  tk::vector u(2), v(2), w(3);
  u[0] = 1;
  u[1] = 2;
  v[0] = 3;
  v[1] = 4;
  EXPECT_EQ(u * v, 11.0);
  EXPECT_TK_ERROR(u * w, 1, "vector arguments have different dimensions.");
  EXPECT_TK_ERROR(u[2], 1, "vector: index out of range ");
  EXPECT_TK_ERROR(tk::vector(-1), 1, "vector: negative dimension.");
}

TEST(Integer, CountsBeyondSixtyFourBits) {
  tk::integer two_to_100 = tk::integer::power_of_two(100);
  EXPECT_EQ(two_to_100.to_string(), "1267650600228229401496703205376");
  tk::integer sum = 0;
  for (int i = 0; i < 1000; ++i) sum += tk::integer(1);
  EXPECT_EQ(sum, tk::integer(1000));
  tk::integer_vector v(3);
  v[2] += 5;
  EXPECT_EQ(v[2], tk::integer(5));
  EXPECT_EQ(v[0], tk::integer(0));
}

TEST(IntegerVectorDeathTest, ViolationsGoToStandardOutputAndAbort) {
  // The text goes to standard output; the death test sees standard error, so the child
  // sends its standard output there first.
  EXPECT_DEATH(
      {
        dup2(2, 1);
        tk::integer_vector v(2);
        v[2] = 1;
      },
      "TOOLKIT PRECONDITION VIOLATION: integer_vector::operator\\[\\]:     index out of range\\.");
  EXPECT_DEATH(
      {
        dup2(2, 1);
        tk::integer_vector v(-1);
      },
      "TOOLKIT PRECONDITION VIOLATION: integer_vector::constructor:   negative dimension\\.");
}

}  // namespace
