// Formatted text: a plain string with tags, each a backslash and a word ended by a blank:
// "\bf" bold, "\rm" plain, "\it" italic, "\tt" fixed width, a colour name, "\n" new line.
// A tag holds up to the next tag. Both window backends draw from the runs made here.
#pragma once

#include <string>
#include <vector>

namespace tk {

struct text_run {
  std::string text;
  bool bold = false;
  bool italic = false;
  bool fixed = false;
  int colour = 1;          // palette index
  bool line_break = false;  // this run starts a new line
};

std::vector<text_run> parse_formatted_text(const std::string& formatted);
// The text without its tags, lines joined by '\n'.
std::string plain_text(const std::string& formatted);

}  // namespace tk
