// tk::random_source: an additive lagged Fibonacci generator of 31 words with separation 3,
// giving 31 significant bits. Each source seeds itself from the time multiplied by a running
// count of the sources made in the process, so two sources made in the same second differ.
// fix_seed(n) replaces the time by n for every source made afterwards: runs become repeatable.
#pragma once

#include <cstdint>

namespace tk {

class random_source {
 public:
  random_source();
  // A source seeded with exactly this value, independent of time and count.
  explicit random_source(std::uint32_t seed);

  // The next output, 0 to 2^31 - 1.
  std::uint32_t next();
  // The next output divided by 2147483647.0: a value from 0 to 1, both ends possible.
  random_source& operator>>(double& x);
  random_source& operator>>(int& x);
  // A whole number from low to high, both included.
  int operator()(int low, int high);

  static void fix_seed(long seed);
  static void release_seed();

 private:
  void seed_with(std::uint32_t seed);

  static const int words = 31;
  static const int separation = 3;
  std::uint32_t state[words];
  int front;  // the word that receives the sum
  int rear;   // the word that is added to it
};

}  // namespace tk
