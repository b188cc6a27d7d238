#include "toolkit/fltk/fltk_text.h"

#include <FL/fl_draw.H>

#include <algorithm>

#include "toolkit/fltk/fltk_style.h"

namespace tk {

namespace {

// A word with the blanks that follow it: the unit that wrapping moves to the next line.
std::vector<std::string> words_of(const std::string& text) {
  std::vector<std::string> words;
  size_t i = 0;
  while (i < text.size()) {
    size_t end = i;
    while (end < text.size() && text[end] != ' ') ++end;
    while (end < text.size() && text[end] == ' ') ++end;
    words.push_back(text.substr(i, end - i));
    i = end;
  }
  return words;
}

int width_of(const std::string& s) { return static_cast<int>(fl_width(s.c_str(), static_cast<int>(s.size())) + 0.5); }

int trimmed_width(const std::string& word) {
  size_t end = word.find_last_not_of(' ');
  return end == std::string::npos ? 0 : width_of(word.substr(0, end + 1));
}

}  // namespace

fltk_text::fltk_text(const std::string& formatted, int font_size)
    : runs(parse_formatted_text(formatted)), size(font_size) {}

int fltk_text::layout(int x0, int x1, int y, bool draw) const {
  const bool wrap = x1 > x0;
  int top = y, cx = x0;
  bool first = true;
  for (const text_run& run : runs) {
    if (run.line_break && !first) {
      top += line_height();
      cx = x0;
    }
    first = false;
    fl_font(fltk_font(run), size);
    if (draw) fl_color(fltk_colour(run.colour));
    for (const std::string& word : words_of(run.text)) {
      if (wrap && cx > x0 && cx + trimmed_width(word) > x1) {
        top += line_height();
        cx = x0;
        if (word.find_first_not_of(' ') == std::string::npos) continue;  // no blanks at a line start
      }
      const int baseline = top + line_height() - fl_descent() - 2;
      if (draw) fl_draw(word.c_str(), static_cast<int>(word.size()), cx, baseline);
      cx += width_of(word);
    }
  }
  return top + line_height();
}

void fltk_text::measure(int& width, int& lines) const {
  width = 0;
  lines = 1;
  int current = 0;
  bool first = true;
  for (const text_run& run : runs) {
    if (run.line_break && !first) {
      ++lines;
      current = 0;
    }
    first = false;
    fl_font(fltk_font(run), size);
    current += width_of(run.text);
    width = std::max(width, current);
  }
}

}  // namespace tk
