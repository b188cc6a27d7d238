#include "toolkit/script/plan_script.h"

#include <cstdlib>
#include <sstream>

namespace tk {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

std::string trim(const std::string& s) {
  size_t b = 0, e = s.size();
  while (b < e && is_blank(s[b])) ++b;
  while (e > b && is_blank(s[e - 1])) --e;
  return s.substr(b, e - b);
}

// Cuts a comment: "#" at the start or after a blank, outside double quotes, so that a
// path or label may hold a "#" of its own.
std::string without_comment(const std::string& line) {
  bool quoted = false;
  for (size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') quoted = !quoted;
    if (line[i] == '#' && !quoted && (i == 0 || is_blank(line[i - 1]))) return line.substr(0, i);
  }
  return line;
}

// Reads the words of one step from left to right. A word in double quotes is taken as it
// stands, blanks included; it ends at the next double quote (there is no escape).
class words {
 public:
  explicit words(const std::string& text) : s(text) {}

  bool at_end() {
    skip();
    return i >= s.size();
  }
  // One word, quoted or ended by a blank. False at the end or at an unclosed quote.
  bool word(std::string& out, bool& quoted) {
    skip();
    if (i >= s.size()) return false;
    if (s[i] == '"') return quoted_word(out, quoted);
    size_t b = i;
    while (i < s.size() && !is_blank(s[i])) ++i;
    out = s.substr(b, i - b);
    quoted = false;
    return true;
  }
  // Everything left: a quoted text alone, or the plain text without its outer blanks.
  bool rest(std::string& out, bool& quoted) {
    skip();
    if (i < s.size() && s[i] == '"') return quoted_word(out, quoted) && at_end();
    out = trim(s.substr(i < s.size() ? i : s.size()));
    i = s.size();
    quoted = false;
    return true;
  }
  // Plain text up to a character, which is passed over; false if it does not come.
  bool up_to(char stop, std::string& out) {
    size_t at = s.find(stop, i);
    if (at == std::string::npos) return false;
    out = trim(s.substr(i, at - i));
    i = at + 1;
    return true;
  }
  bool expect(char c) {
    skip();
    if (i >= s.size() || s[i] != c) return false;
    ++i;
    return true;
  }
  bool starts_quoted() {
    skip();
    return i < s.size() && s[i] == '"';
  }
  bool unclosed() const { return open_quote; }

 private:
  void skip() {
    while (i < s.size() && is_blank(s[i])) ++i;
  }
  bool quoted_word(std::string& out, bool& quoted) {
    size_t close = s.find('"', i + 1);
    if (close == std::string::npos) {
      open_quote = true;
      return false;
    }
    out = s.substr(i + 1, close - i - 1);
    i = close + 1;
    quoted = true;
    return true;
  }

  const std::string& s;
  size_t i = 0;
  bool open_quote = false;
};

bool number(const std::string& w, double& v) {
  char* end = nullptr;
  v = std::strtod(w.c_str(), &end);
  return !w.empty() && end && *end == '\0';
}

bool whole_number(const std::string& w, long& v) {
  char* end = nullptr;
  v = std::strtol(w.c_str(), &end, 10);
  return !w.empty() && end && *end == '\0';
}

}  // namespace

plan_script::plan_script(const std::string& text) {
  std::istringstream in(text);
  std::string raw;
  int number = 0;
  while (std::getline(in, raw)) {
    ++number;
    script_step step;
    std::string line = trim(without_comment(raw));
    if (line.empty()) continue;
    if (!read_line(line, number, step)) return;
    list.push_back(step);
  }
}

bool plan_script::read_line(const std::string& line, int n, script_step& step) {
  std::string where = "line " + std::to_string(n) + ": ";
  auto fail = [&](const std::string& why) {
    error = where + why;
    return false;
  };
  size_t blank = 0;
  while (blank < line.size() && !is_blank(line[blank])) ++blank;
  step.line = n;
  step.verb = line.substr(0, blank);
  step.text = trim(line.substr(blank));
  words w(step.text);
  const std::string& v = step.verb;
  std::string word;
  bool quoted = false;

  if (v == "menu" || v == "file" || v == "press") {
    if (!w.rest(step.argument, step.exact))
      return fail(w.unclosed() ? "a quote is not closed" : "'" + v + "' takes one argument");
    if (step.argument.empty() && !step.exact) return fail("'" + v + "' needs an argument");
    return true;
  }
  if (v == "set") {
    if (w.starts_quoted()) {
      if (!w.word(step.argument, step.exact)) return fail("a quote is not closed");
      if (!w.expect('=')) return fail("'set' is written 'set LABEL = VALUE'");
    } else if (!w.up_to('=', step.argument) || step.argument.empty()) {
      return fail("'set' is written 'set LABEL = VALUE'");
    }
    if (!w.rest(step.value, quoted)) return fail(w.unclosed() ? "a quote is not closed" : "a quoted value stands alone");
    return true;
  }
  if (v == "yes" || v == "no" || v == "ok") {
    if (!w.at_end()) return fail("'" + v + "' takes no argument");
    return true;
  }
  if (v == "click" || v == "point") {
    std::string xs, ys;
    if (!w.word(xs, quoted) || !w.word(ys, quoted) || !number(xs, step.x) || !number(ys, step.y))
      return fail(v == "click" ? "'click' is written 'click X Y [left|middle|right]'" : "'point' is written 'point X Y [TITLE]'");
    if (v == "click") {
      std::string b = "left";
      if (!w.at_end()) w.word(b, quoted);
      if (b == "left") step.button = 1;
      else if (b == "middle") step.button = 2;
      else if (b == "right") step.button = 3;
      else return fail("unknown mouse button '" + b + "'");
      if (!w.at_end()) return fail("'click' is written 'click X Y [left|middle|right]'");
      return true;
    }
    if (!w.rest(step.title, quoted)) return fail("a quote is not closed");
    return true;
  }
  if (v == "stop") {
    std::string after, count;
    if (!w.word(after, quoted) || after != "after" || !w.word(count, quoted) || !whole_number(count, step.count) ||
        step.count < 1 || !w.at_end())
      return fail("'stop' is written 'stop after N' with N at least 1");
    return true;
  }
  if (v == "snapshot") {
    if (!w.word(step.argument, quoted)) return fail(w.unclosed() ? "a quote is not closed" : "'snapshot' needs a file name");
    if (!w.rest(step.title, quoted)) return fail("a quote is not closed");
    return true;
  }
  if (v == "close") {
    if (!w.rest(step.title, quoted)) return fail("a quote is not closed");
    if (step.title.empty()) return fail("'close' needs the title of a window");
    return true;
  }
  if (v == "redraw") {
    if (!w.rest(step.title, quoted)) return fail("a quote is not closed");
    return true;
  }
  if (v == "resize") {
    std::string ws, hs;
    long width = 0, height = 0;
    if (!w.word(ws, quoted) || !w.word(hs, quoted) || !whole_number(ws, width) || !whole_number(hs, height) ||
        width < 1 || height < 1)
      return fail("'resize' is written 'resize WIDTH HEIGHT [TITLE]' in pixels");
    step.x = static_cast<double>(width);
    step.y = static_cast<double>(height);
    if (!w.rest(step.title, quoted)) return fail("a quote is not closed");
    return true;
  }
  return fail("unknown step '" + v + "'");
}

}  // namespace tk
