#include <gtest/gtest.h>

#include "network/Trl_TxBitvector.h"

TEST(Trl_TxBitvector, WordLayoutAtTheBoundaries) {
  Trl_TxBitvector v32(32, true);
  EXPECT_EQ(v32.word_count(), 1);
  EXPECT_EQ(v32.used_in_last(), 32);
  EXPECT_EQ(v32.last_mask(), 0xffffffffu);

  Trl_TxBitvector v33(33, true);
  EXPECT_EQ(v33.word_count(), 2);
  EXPECT_EQ(v33.used_in_last(), 1);
  EXPECT_EQ(v33.last_mask(), 1u);

  Trl_TxBitvector v0;
  EXPECT_EQ(v0.word_count(), 0);
  EXPECT_EQ(v0.length(), 0);
  EXPECT_TRUE(v0.empty());
  EXPECT_EQ(v0.count(), 0);
}

TEST(Trl_TxBitvector, BitKLivesInWordKDiv32FromTheLowEnd) {
  Trl_TxBitvector v(70, true);
  v.set(0);
  v.set(31);
  v.set(32);
  v.set(69);
  EXPECT_EQ(v.data()[0], 0x80000001u);
  EXPECT_EQ(v.data()[1], 1u);
  EXPECT_EQ(v.data()[2], 1u << 5);
  EXPECT_EQ(v.count(), 4);
  EXPECT_TRUE(v.test(69));
  EXPECT_FALSE(v.test(68));
  v.assign(31, false);
  EXPECT_FALSE(v.test(31));
  EXPECT_EQ(v.count(), 3);
  EXPECT_FALSE(v.empty());
}

TEST(Trl_TxBitvector, CopyAssignAndCombine) {
  Trl_TxBitvector a(40, true), b(40, true);
  a.set(1);
  a.set(35);
  b.set(35);
  b.set(2);
  Trl_TxBitvector c(a);
  c.and_with(b);
  EXPECT_EQ(c.count(), 1);
  EXPECT_TRUE(c.test(35));
  c = a;
  c.xor_with(b);
  EXPECT_EQ(c.count(), 2);
  EXPECT_TRUE(c.test(1));
  EXPECT_TRUE(c.test(2));
  // A copy owns its own words.
  c.set(10);
  EXPECT_FALSE(a.test(10));
  // Assignment from another length replaces the storage.
  Trl_TxBitvector d(3, true);
  d = a;
  EXPECT_EQ(d.length(), 40);
  EXPECT_EQ(d.count(), 2);
  d = d;
  EXPECT_EQ(d.count(), 2);
  d.resize(5, true);
  EXPECT_EQ(d.length(), 5);
  EXPECT_TRUE(d.empty());
}

TEST(Trl_TxBitvector, IteratorWalksEveryBitAcrossWords) {
  Trl_TxBitvector v(66, true);
  const int on[] = {0, 5, 31, 32, 63, 64};
  for (int k : on) v.set(k);
  Trl_TxBitvector::iterator it(v);
  int seen = 0;
  for (int k = 0; k < v.length(); ++k, it.advance()) {
    EXPECT_EQ(it.index(), k);
    const bool expected = k == 0 || k == 5 || k == 31 || k == 32 || k == 63 || k == 64;
    EXPECT_EQ(it.bit(), expected) << "bit " << k;
    seen += it.bit();
  }
  EXPECT_EQ(seen, 6);
}
