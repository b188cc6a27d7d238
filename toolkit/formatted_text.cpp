#include "toolkit/formatted_text.h"

#include <map>

#include "toolkit/color.h"

namespace tk {

namespace {
const std::map<std::string, int>& colour_tags() {
  static const std::map<std::string, int> tags = {
      {"black", black}, {"white", white}, {"blue", blue},   {"blue2", blue2}, {"red", red},
      {"green", green}, {"green2", green2}, {"yellow", yellow}, {"violet", violet}, {"orange", orange},
      {"cyan", cyan},   {"brown", brown}, {"grey1", grey1}, {"grey2", grey2}, {"grey3", grey3}};
  return tags;
}
}  // namespace

std::vector<text_run> parse_formatted_text(const std::string& s) {
  std::vector<text_run> runs;
  text_run current;
  // Ends the current run; a line break with no text yet stays with the next run.
  auto flush = [&]() {
    if (current.text.empty()) return;
    runs.push_back(current);
    current.text.clear();
    current.line_break = false;
  };
  size_t i = 0;
  while (i < s.size()) {
    char c = s[i];
    if (c == '\n') {
      flush();
      current.line_break = true;
      ++i;
      continue;
    }
    if (c == '\\') {
      size_t end = i + 1;
      while (end < s.size() && s[end] != ' ' && s[end] != '\\' && s[end] != '\n') ++end;
      std::string tag = s.substr(i + 1, end - i - 1);
      text_run style = current;
      style.line_break = false;  // a break belongs to the one run after it
      bool known = true;
      if (tag == "bf") style.bold = true;
      else if (tag == "rm") style.bold = style.italic = style.fixed = false;
      else if (tag == "it") style.italic = true;
      else if (tag == "tt") style.fixed = true;
      else if (tag == "n") style.line_break = true;
      else if (colour_tags().count(tag)) style.colour = colour_tags().at(tag);
      else known = false;
      if (known) {
        flush();
        bool line_break = style.line_break || current.line_break;
        current = style;
        current.text.clear();
        current.line_break = line_break;
        i = end;
        if (i < s.size() && s[i] == ' ') ++i;  // the blank ends the tag
        continue;
      }
    }
    current.text += c;
    ++i;
  }
  if (!current.text.empty() || current.line_break) runs.push_back(current);
  return runs;
}

std::string plain_text(const std::string& formatted) {
  std::string out;
  bool first = true;
  for (const text_run& r : parse_formatted_text(formatted)) {
    if (r.line_break && !first) out += '\n';
    out += r.text;
    first = false;
  }
  return out;
}

}  // namespace tk
