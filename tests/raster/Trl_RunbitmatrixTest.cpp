// A row decoded a run at a time against the cell query column by column: rows of a few long
// runs, of hundreds of short ones with empty runs among them (where the search's backward
// finish answers the run before at an end), rows whose lengths wrapped past 65535, and rows
// that repeat the one before.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "raster/Trl_Runbitmatrix.h"

namespace {

// Decodes into words that hold the opposite of the answer, so that a bit left alone shows.
int compare_with_get(const Trl_Runbitrow& row, int columns) {
  std::vector<std::uint64_t> words((columns + 63) / 64 + 1);
  for (int c = 0; c < columns; ++c)
    if (!row.get(static_cast<std::uint16_t>(c))) words[c >> 6] |= std::uint64_t(1) << (c & 63);
  const std::uint64_t beyond = words.back() = 0x5555;
  row.decode(words.data(), columns);
  int wrong = 0;
  for (int c = 0; c < columns; ++c)
    wrong += ((words[c >> 6] >> (c & 63)) & 1) != row.get(static_cast<std::uint16_t>(c));
  EXPECT_EQ(words.back(), beyond);
  return wrong;
}

}  // namespace

TEST(Trl_Runbitrow, DecodedRowIsTheCellQuery) {
  const struct {
    int columns;
    std::string text;
  } rows[] = {
      {1000, "1 5 5 990"},
      {64, "0 64"},
      {130, "1 0 63 1 0 66"},          // an empty first run and one in the middle
      {2000, "1 1999 65000 600"},      // the second end wraps below the first
      {100, "2"},                      // repeats the row before: no runs of its own
      {70, "0 10 x"},                  // a broken stream ends the row
  };
  for (const auto& r : rows) {
    std::istringstream in(r.text);
    Trl_Runbitrow row;
    row.read(in, static_cast<std::uint16_t>(r.columns));
    EXPECT_EQ(compare_with_get(row, r.columns), 0) << r.text;
  }
  // Long rows of short runs, a third of them empty.
  std::mt19937 random(7);
  int quirks = 0;
  for (int k = 0; k < 200; ++k) {
    const int columns = 1 + static_cast<int>(random() % 3000);
    std::ostringstream text;
    text << random() % 2;
    for (int sum = 0; sum < columns;) {
      const int length = random() % 3 == 0 ? 0 : 1 + static_cast<int>(random() % 8);
      text << ' ' << length;
      sum += length;
    }
    std::istringstream in(text.str());
    Trl_Runbitrow row;
    row.read(in, static_cast<std::uint16_t>(columns));
    EXPECT_EQ(compare_with_get(row, columns), 0) << text.str();
    // Ends where the answer is not the value of the run that holds the column.
    for (int p = 0; p < row.last; ++p) {
      const int end = row.ends[p];
      if (end >= columns) continue;
      int holder = 0;
      while (holder < row.last && row.ends[holder] <= end) ++holder;
      quirks += row.get(static_cast<std::uint16_t>(end)) != ((holder % 2 == 0) == row.first);
    }
  }
  EXPECT_GT(quirks, 10);
}
