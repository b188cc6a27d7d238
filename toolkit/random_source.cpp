#include "toolkit/random_source.h"

#include <ctime>

namespace tk {

namespace {
long sources_made = 0;
bool seed_fixed = false;
long fixed_seed_value = 0;
}  // namespace

random_source::random_source() {
  ++sources_made;
  long base = seed_fixed ? fixed_seed_value : static_cast<long>(std::time(nullptr));
  seed_with(static_cast<std::uint32_t>(base * sources_made));
}

random_source::random_source(std::uint32_t seed) { seed_with(seed); }

void random_source::fix_seed(long seed) {
  seed_fixed = true;
  fixed_seed_value = seed;
  sources_made = 0;
}

void random_source::release_seed() { seed_fixed = false; }

// Fills the words with the minimal standard generator (16807 x mod 2^31 - 1) and runs the
// lagged generator ten rounds so that the first outputs don't echo the seed.
void random_source::seed_with(std::uint32_t seed) {
  std::int64_t x = seed % 2147483647u;
  if (x == 0) x = 1;
  for (int i = 0; i < words; ++i) {
    x = (16807 * x) % 2147483647;
    state[i] = static_cast<std::uint32_t>(x);
  }
  front = separation;
  rear = 0;
  for (int i = 0; i < 10 * words; ++i) next();
}

std::uint32_t random_source::next() {
  state[front] += state[rear];
  std::uint32_t result = state[front] >> 1;
  if (++front == words) front = 0;
  if (++rear == words) rear = 0;
  return result;
}

random_source& random_source::operator>>(double& x) {
  x = next() / 2147483647.0;
  return *this;
}

random_source& random_source::operator>>(int& x) {
  x = static_cast<int>(next());
  return *this;
}

int random_source::operator()(int low, int high) {
  if (high <= low) return low;
  std::uint64_t span = static_cast<std::uint64_t>(static_cast<std::int64_t>(high) - low) + 1;
  return static_cast<int>(low + static_cast<std::int64_t>(next() % span));
}

}  // namespace tk
