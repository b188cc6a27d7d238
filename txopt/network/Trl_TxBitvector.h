// A fixed-length set of bits packed in 32-bit words: bit k lies in word k/32 at position
// k % 32 from the least significant end. Marks base stations, users or raster cells.
// Bits past the length are kept zero; count() relies on it. No range checks.
#pragma once

#include <cstdint>

class Trl_TxBitvector {
 public:
  Trl_TxBitvector();
  Trl_TxBitvector(int length, bool clear);
  Trl_TxBitvector(const Trl_TxBitvector& other);
  Trl_TxBitvector& operator=(const Trl_TxBitvector& other);
  ~Trl_TxBitvector();

  void resize(int length, bool clear);
  void and_with(const Trl_TxBitvector& other);
  void xor_with(const Trl_TxBitvector& other);
  bool test(int k) const { return (words[k >> 5] >> (k & 31)) & 1u; }
  void set(int k) { words[k >> 5] |= 1u << (k & 31); }
  void assign(int k, bool value) {
    if (value) set(k);
    else words[k >> 5] &= ~(1u << (k & 31));
  }
  bool empty() const;
  int count() const;
  int length() const { return bits; }
  int word_count() const { return words ? last_word + 1 : 0; }
  const uint32_t* data() const { return words; }
  // Bits k to k + 31 where k is a multiple of 32: those of `keep` stay, the others take `value`.
  void assign_word(int k, uint32_t value, uint32_t keep) { words[k >> 5] = (words[k >> 5] & keep) | (value & ~keep); }
  int used_in_last() const { return last_used; }
  uint32_t last_mask() const { return mask; }

  // Walks the bits from 0 up; it does not stop by itself: the caller counts to the length.
  class iterator {
   public:
    explicit iterator(const Trl_TxBitvector& v);
    bool bit() const { return current & 1u; }
    int index() const { return position; }
    void advance();

   private:
    const Trl_TxBitvector* vector;
    uint32_t current;   // the current word, shifted down to the current bit
    int shift;          // bit position within the current word
    int next_word;      // index of the word to load next
    int position;       // running bit index
  };

 private:
  void allocate(int length, bool clear);
  void release();

  uint32_t* words;
  int bits;           // length in bits
  int last_word;      // index of the last word
  int last_used;      // bits used in the last word, 1 to 32
  uint32_t mask;      // used bits of the last word
  bool owner;         // the vector owns its words
};
