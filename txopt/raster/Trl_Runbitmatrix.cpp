#include "raster/Trl_Runbitmatrix.h"

#include <algorithm>
#include <cstring>

Trl_Runbitrow::~Trl_Runbitrow() {
  if (owns) delete[] ends;
}

void Trl_Runbitrow::read(std::istream& in, std::uint16_t columns) {
  last = 0;
  int code = 0;
  in >> code;
  if (code == 2) {
    if (owns) delete[] ends;
    ends = nullptr;
    capacity = 0;
    owns = true;
    return;
  }
  if (ends == nullptr || !owns) {
    ends = new std::uint16_t[4];
    capacity = 4;
    owns = true;
  }
  first = code != 0;
  std::uint16_t sum = 0;
  int count = 0;
  // A broken stream ends the row too, so a bad file cannot keep this loop going.
  while (sum < columns && in) {
    if (count == capacity) {
      std::uint16_t* wider = new std::uint16_t[capacity * 2];
      std::memcpy(wider, ends, sizeof(std::uint16_t) * capacity);
      delete[] ends;
      ends = wider;
      capacity = static_cast<std::uint16_t>(capacity * 2);
    }
    // A length is an unsigned 16-bit number; one that does not fit fails the stream, which
    // ends the row, instead of being kept modulo 65536.
    std::uint16_t length = 0;
    in >> length;
    if (!in) length = columns;
    std::uint16_t end = static_cast<std::uint16_t>(length);
    if (count > 0) end = static_cast<std::uint16_t>(end + ends[count - 1]);
    ends[count] = end;
    sum = static_cast<std::uint16_t>(sum + length);
    ++count;
    if (count == 65535) break;
  }
  last = static_cast<std::uint16_t>(count > 0 ? count - 1 : 0);
  if (count == 0) ends[0] = 0;
}

// A binary search for long rows with a linear finish; its backward finish keeps the
// required quirks (see the format notes in docs/formats.md).
bool Trl_Runbitrow::get(std::uint16_t x) const {
  if (!ends) return false;  // a first row that repeats nothing has no runs to ask
  int p = 0;
  int step = (last + 1) / 2;
  bool forward = true;
  while (step >= 4) {
    p += forward ? step : -step;
    // The rounded-up halving overshoots in rows of some 500 runs or more; the walk stays on
    // the row's own runs instead of reading before or past them.
    p = std::clamp(p, 0, static_cast<int>(last));
    step = (step + 1) / 2;
    if (ends[p] <= x) {
      forward = true;
    } else if (p > 0 && ends[p - 1] <= x) {
      return value(p);
    } else {
      forward = false;
    }
  }
  if (forward) {
    while (p < last && ends[p] <= x) ++p;
  } else {
    while (p != 0 && ends[p] >= x) --p;
    if (p != 0) ++p;
  }
  return value(p);
}

namespace {

void set_bits(std::uint64_t* words, int from, int to, bool value) {
  for (int c = from; c < to;) {
    const int bit = c & 63, count = std::min(64 - bit, to - c);
    const std::uint64_t mask = (count == 64 ? ~std::uint64_t(0) : ((std::uint64_t(1) << count) - 1)) << bit;
    if (value) words[c >> 6] |= mask;
    else words[c >> 6] &= ~mask;
    c += count;
  }
}

}  // namespace

// Where the ends never fall, get() answers the value of the run that holds the column,
// whichever way its search went, but for the quirks of its backward finish: a column equal
// to an end may take the run before, and one from the first end to the second, whose walk
// stops at the first run without looking at its end, the first run. Those columns alone are
// asked. Ends that fall (lengths that wrapped past 65535 in a bad file) leave no runs to
// speak of, and every column is asked.
void Trl_Runbitrow::decode(std::uint64_t* words, int columns) const {
  if (!ends) {
    set_bits(words, 0, columns, false);
    return;
  }
  bool rising = true;
  for (int p = 1; p <= last; ++p) rising = rising && ends[p] >= ends[p - 1];
  if (!rising) {
    for (int c = 0; c < columns; ++c) set_bits(words, c, c + 1, get(static_cast<std::uint16_t>(c)));
    return;
  }
  int start = 0;
  for (int p = 0; p <= last; ++p) {
    const int end = std::min<int>(ends[p], columns);
    set_bits(words, start, end, value(p));
    start = std::max(start, end);
  }
  set_bits(words, start, columns, value(last));
  auto ask = [&](int c) { set_bits(words, c, c + 1, get(static_cast<std::uint16_t>(c))); };
  for (int p = 0; p <= last; ++p)
    if (ends[p] < columns) ask(ends[p]);
  if (last >= 1)
    for (int c = ends[0] + 1; c < std::min<int>(ends[1], columns); ++c) ask(c);
}

bool Trl_Runbitrow::operator==(const Trl_Runbitrow& o) const {
  if (!ends && !o.ends) return true;
  if (!ends || !o.ends) return false;
  if (last != o.last || first != o.first || ends[last] != o.ends[o.last]) return false;
  for (int k = 0; k <= last; ++k)
    if (ends[k] != o.ends[k]) return false;
  return true;
}

void Trl_Runbitrow::share(const Trl_Runbitrow& other) {
  if (owns) delete[] ends;
  ends = other.ends;
  capacity = other.capacity;
  last = other.last;
  first = other.first;
  owns = false;
}

Trl_Runbitmatrix::~Trl_Runbitmatrix() { free_rows(); }

void Trl_Runbitmatrix::free_rows() {
  delete[] row_array;
  row_array = nullptr;
  rows = columns = 0;
}

void Trl_Runbitmatrix::read(std::istream& in) {
  free_rows();
  std::uint32_t r = 0, c = 0;
  in >> r >> c;
  if (!in || r == 0 || c == 0 || c > 65535 || r > 1000000) return;
  rows = r;
  columns = c;
  row_array = new Trl_Runbitrow[rows];
  row_array[0].read(in, static_cast<std::uint16_t>(columns));
  for (std::uint32_t i = 1; i < rows; ++i) {
    Trl_Runbitrow& row = row_array[i];
    row.read(in, static_cast<std::uint16_t>(columns));
    if (!row.has_runs() || row == row_array[i - 1]) row.share(row_array[i - 1]);
  }
}
