#include <gtest/gtest.h>

#include "raster/Trl_MatrixT.h"

namespace {

typedef Trl_MatrixT<double, double> DMatrix;
typedef Trl_MatrixT<short, double> SMatrix;

TEST(Matrix, ElementsByColumnThenRow) {
  DMatrix m(2, 3);  // 2 rows, 3 columns
  m.ref(2, 1) = 7;
  EXPECT_EQ(m.get(5), 7.0);
  EXPECT_EQ(m.get(2, 1), 7.0);
  DMatrix filled(2, 2, 1.5);
  EXPECT_EQ(filled.sum(), 6.0);
}

TEST(Matrix, ShortArithmeticKeepsTheLow16Bits) {
  SMatrix a(1, 1, 30000), b(1, 1, 30000);
  a.add(b);
  EXPECT_EQ(a.get(0), -5536);
  SMatrix c(1, 2, 300);
  c.scale(300);  // 90000 -> 24464
  EXPECT_EQ(c.get(1), 24464);
}

TEST(Matrix, ResampleTakesTheUpperLeftNearestCell) {
  DMatrix source(2, 3);
  for (unsigned i = 0; i < 6; ++i) source.ref(i) = i;  // rows {0 1 2} {3 4 5}
  DMatrix big(4, 6);
  big.resample(source);
  // Row factor 0.5, column factor 0.5: each source cell becomes a 2 by 2 block.
  EXPECT_EQ(big.get(0, 0), 0.0);
  EXPECT_EQ(big.get(1, 1), 0.0);
  EXPECT_EQ(big.get(5, 3), 5.0);
  EXPECT_EQ(big.get(2, 2), 4.0);
  DMatrix small(1, 2);
  small.resample(source);  // factors 2 and 1.5: columns 0 and trunc(1.5) = 1 of row 0
  EXPECT_EQ(small.get(0), 0.0);
  EXPECT_EQ(small.get(1), 1.0);
}

TEST(Matrix, WindowPadsWithZerosRightAndBelow) {
  DMatrix a(2, 2);
  a.ref(0, 0) = 1;
  a.ref(1, 0) = 2;
  a.ref(0, 1) = 3;
  a.ref(1, 1) = 4;
  DMatrix w(3, 2, 9);
  w.window_of(a, 1, 0, 3, 3);  // columns 1..2, rows 0..2
  double expected[6] = {2, 0, 4, 0, 0, 0};
  for (unsigned i = 0; i < 6; ++i) EXPECT_EQ(w.get(i), expected[i]) << i;
}

TEST(Matrix, ExtremesAndTheSmallestPositiveRule) {
  DMatrix m(1, 5);
  double v[5] = {3, -2, 0, 5, 1};
  for (unsigned i = 0; i < 5; ++i) m.ref(i) = v[i];
  EXPECT_EQ(m.maximum(), 5.0);
  EXPECT_EQ(m.minimum(), -2.0);
  double lo, hi;
  m.min_max(lo, hi);
  EXPECT_EQ(lo, -2.0);
  EXPECT_EQ(hi, 5.0);
  // Scan from index 3 down: 5 becomes the result, then 0 (no), -2 (no), 3 (yes); the last
  // element, 1, is never seen.
  EXPECT_EQ(m.smallest_positive(), 3.0);
  DMatrix negative_first(1, 4);
  double w[4] = {2, 1, -4, 7};
  for (unsigned i = 0; i < 4; ++i) negative_first.ref(i) = w[i];
  EXPECT_EQ(negative_first.smallest_positive(), -4.0);  // no positive is smaller than -4
}

TEST(Matrix, EqualityOfEmptyAndToleranceInIntegers) {
  DMatrix e1, e2;
  EXPECT_TRUE(e1.equals(e2));
  EXPECT_FALSE(e1.differs(e2));
  SMatrix a(1, 1, -30000), b(1, 1, 30000);
  EXPECT_FALSE(a.equals_within(b, 59999));  // the distance 60000 is computed in integers
  EXPECT_TRUE(a.equals_within(b, 60000));
}

TEST(Matrix, ProductIsNotImplementedAndSaysSo) {
  DMatrix a(1, 1, 2), b(1, 1, 3);
  testing::internal::CaptureStdout();
  a.product_of(a, b);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "oops, ... not implemented\n");
  EXPECT_EQ(a.get(0), 2.0);
}

TEST(Matrix, ResizeLosesTheOldValuesAndIdentityFitsAnyShape) {
  DMatrix m(2, 2, 5);
  m.resize(2, 3, true);
  EXPECT_EQ(m.sum(), 0.0);
  m.make_identity();
  EXPECT_EQ(m.get(0, 0), 1.0);
  EXPECT_EQ(m.get(1, 1), 1.0);
  EXPECT_EQ(m.get(2, 1), 0.0);
  DMatrix* n = m.copy();
  EXPECT_TRUE(n->equals(m));
  DMatrix* neg = -m;
  EXPECT_EQ(neg->get(0), -1.0);
  delete n;
  delete neg;
}

}  // namespace
