// tk::h_array<K,V>: a hashing map from integer keys. The table size is a power of two and
// a key's slot is key AND (size - 1); keys that collide wait in an overflow area, and the
// table doubles when that area is used up. Iteration visits the defined keys in slot order.
#pragma once

#include <utility>
#include <vector>

namespace tk {

template <class K, class V>
class h_array {
 public:
  explicit h_array(int initial_size = 64) {
    int size = 1;
    while (size < initial_size) size <<= 1;
    slots.assign(static_cast<size_t>(size), -1);
  }

  // The value of k, inserted with a default value on first use.
  V& operator[](const K& k) {
    int found = find(k);
    if (found >= 0) return entries[static_cast<size_t>(found)].second;
    if (overflow_used() >= overflow_capacity()) grow();
    return insert(k);
  }

  bool defined(const K& k) const { return find(k) >= 0; }
  int size() const { return static_cast<int>(entries.size()); }
  int table_size() const { return static_cast<int>(slots.size()); }

  // The keys in slot order: each slot's first key, then the keys that collided with it.
  std::vector<K> keys() const {
    std::vector<K> result;
    for (size_t s = 0; s < slots.size(); ++s)
      for (int e = slots[s]; e >= 0; e = chain[static_cast<size_t>(e)]) result.push_back(entries[static_cast<size_t>(e)].first);
    return result;
  }

 private:
  size_t slot_of(const K& k) const { return static_cast<size_t>(k) & (slots.size() - 1); }
  int overflow_capacity() const { return static_cast<int>(slots.size()) / 2; }
  int overflow_used() const { return static_cast<int>(entries.size()) - occupied; }

  int find(const K& k) const {
    for (int e = slots[slot_of(k)]; e >= 0; e = chain[static_cast<size_t>(e)])
      if (entries[static_cast<size_t>(e)].first == k) return e;
    return -1;
  }

  V& insert(const K& k) {
    size_t s = slot_of(k);
    int e = static_cast<int>(entries.size());
    entries.emplace_back(k, V());
    chain.push_back(-1);
    if (slots[s] < 0) {
      slots[s] = e;
      ++occupied;
    } else {
      int last = slots[s];
      while (chain[static_cast<size_t>(last)] >= 0) last = chain[static_cast<size_t>(last)];
      chain[static_cast<size_t>(last)] = e;
    }
    return entries.back().second;
  }

  void grow() {
    std::vector<std::pair<K, V>> old;
    old.swap(entries);
    chain.clear();
    occupied = 0;
    slots.assign(slots.size() * 2, -1);
    for (std::pair<K, V>& entry : old) insert(entry.first) = std::move(entry.second);
  }

  std::vector<int> slots;  // first entry of each slot, -1 when free
  std::vector<std::pair<K, V>> entries;
  std::vector<int> chain;  // next entry of the same slot
  int occupied = 0;
};

}  // namespace tk
