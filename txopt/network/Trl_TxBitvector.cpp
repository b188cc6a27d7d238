#include "network/Trl_TxBitvector.h"

#include <bitset>
#include <cstring>

Trl_TxBitvector::Trl_TxBitvector()
    : words(nullptr), bits(0), last_word(0), last_used(0), mask(0), owner(true) {}

Trl_TxBitvector::Trl_TxBitvector(int length, bool clear) : words(nullptr), owner(true) {
  allocate(length, clear);
}

Trl_TxBitvector::Trl_TxBitvector(const Trl_TxBitvector& other)
    : words(nullptr),
      bits(other.bits),
      last_word(other.last_word),
      last_used(other.last_used),
      mask(other.mask),
      owner(true) {
  if (other.words) {
    words = new uint32_t[last_word + 1];
    std::memcpy(words, other.words, sizeof(uint32_t) * (last_word + 1));
  }
}

Trl_TxBitvector& Trl_TxBitvector::operator=(const Trl_TxBitvector& other) {
  if (this == &other) return *this;
  if (!words || !other.words || bits != other.bits) {
    release();
    bits = other.bits;
    last_word = other.last_word;
    last_used = other.last_used;
    mask = other.mask;
    if (other.words) {
      words = new uint32_t[last_word + 1];
      owner = true;
    }
  }
  if (other.words) std::memcpy(words, other.words, sizeof(uint32_t) * (last_word + 1));
  return *this;
}

Trl_TxBitvector::~Trl_TxBitvector() { release(); }

void Trl_TxBitvector::allocate(int length, bool clear) {
  bits = length < 0 ? 0 : length;
  last_word = bits == 0 ? 0 : (bits - 1) / 32;
  last_used = bits - 32 * last_word;
  if (last_used <= 0) last_used = bits == 0 ? 0 : 32;
  mask = last_used >= 32 ? 0xffffffffu : ((1u << last_used) - 1u);
  words = new uint32_t[last_word + 1];
  owner = true;
  if (clear) std::memset(words, 0, sizeof(uint32_t) * (last_word + 1));
  else words[last_word] = 0;
}

void Trl_TxBitvector::release() {
  if (owner) delete[] words;
  words = nullptr;
}

void Trl_TxBitvector::resize(int length, bool clear) {
  release();
  allocate(length, clear);
}

void Trl_TxBitvector::and_with(const Trl_TxBitvector& other) {
  for (int w = 0; w < word_count(); ++w) words[w] &= other.words[w];
}

void Trl_TxBitvector::xor_with(const Trl_TxBitvector& other) {
  for (int w = 0; w < word_count(); ++w) words[w] ^= other.words[w];
}

bool Trl_TxBitvector::empty() const {
  for (int w = 0; w < word_count(); ++w)
    if (words[w]) return false;
  return true;
}

int Trl_TxBitvector::count() const {
  int n = 0;
  for (int w = 0; w < word_count(); ++w) n += static_cast<int>(std::bitset<32>(words[w]).count());
  return n;
}

Trl_TxBitvector::iterator::iterator(const Trl_TxBitvector& v)
    : vector(&v), current(v.word_count() ? v.words[0] : 0), shift(0), next_word(1), position(0) {}

void Trl_TxBitvector::iterator::advance() {
  ++position;
  if (++shift < 32) {
    current >>= 1;
    return;
  }
  shift = 0;
  current = next_word < vector->word_count() ? vector->words[next_word] : 0;
  ++next_word;
}
