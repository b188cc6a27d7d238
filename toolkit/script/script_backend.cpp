#include "toolkit/script/script_backend.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>

#include "toolkit/formatted_text.h"
#include "toolkit/menu.h"
#include "toolkit/panel.h"
#include "toolkit/window.h"

namespace tk {

namespace {

std::string trim(const std::string& s) {
  size_t b = s.find_first_not_of(" \t\r");
  if (b == std::string::npos) return "";
  size_t e = s.find_last_not_of(" \t\r");
  return s.substr(b, e - b + 1);
}

// A label as the script names it: blanks and a final colon don't count.
std::string label_key(const std::string& label) {
  std::string t = trim(label);
  while (!t.empty() && (t.back() == ':' || t.back() == ' ')) t.pop_back();
  return t;
}

std::string escaped(const std::string& s) {
  std::string r;
  for (char c : s) {
    if (c == '\n')
      r += "\\n";
    else
      r += c;
  }
  return r;
}

// Turns each finished line of the program's standard output into a transcript line.
class line_sink : public std::streambuf {
 public:
  explicit line_sink(script_backend& b) : owner(b) {}

 protected:
  int overflow(int c) override {
    if (c == EOF) return 0;
    if (c == '\n') {
      owner.write_line("stdout: " + pending);
      pending.clear();
    } else {
      pending += static_cast<char>(c);
    }
    return c;
  }

 private:
  script_backend& owner;
  std::string pending;
};

}  // namespace

std::vector<script_step> script_backend::parse(const std::string& text, std::string& error) {
  std::vector<script_step> result;
  std::istringstream in(text);
  std::string raw;
  int number = 0;
  while (std::getline(in, raw)) {
    ++number;
    std::string line = raw;
    size_t hash = line.find('#');
    if (hash != std::string::npos) line.erase(hash);
    line = trim(line);
    if (line.empty()) continue;
    script_step step;
    step.line = number;
    size_t blank = line.find(' ');
    step.verb = line.substr(0, blank);
    std::string rest = blank == std::string::npos ? "" : trim(line.substr(blank + 1));
    if (step.verb == "menu" || step.verb == "file" || step.verb == "press" || step.verb == "snapshot") {
      if (rest.empty()) {
        error = "line " + std::to_string(number) + ": '" + step.verb + "' needs an argument";
        return result;
      }
      step.argument = rest;
    } else if (step.verb == "set") {
      size_t eq = rest.find(" = ");
      if (eq == std::string::npos) {
        error = "line " + std::to_string(number) + ": 'set' is written 'set LABEL = VALUE'";
        return result;
      }
      step.argument = rest.substr(0, eq);
      step.value = trim(rest.substr(eq + 3));
    } else if (step.verb == "yes" || step.verb == "no") {
    } else if (step.verb == "click") {
      std::istringstream args(rest);
      double x, y;
      std::string button = "left";
      if (!(args >> x >> y)) {
        error = "line " + std::to_string(number) + ": 'click' is written 'click X Y [left|middle|right]'";
        return result;
      }
      args >> button;
      if (button != "left" && button != "middle" && button != "right") {
        error = "line " + std::to_string(number) + ": unknown mouse button '" + button + "'";
        return result;
      }
      step.argument = rest;
    } else if (step.verb == "stop") {
      std::istringstream args(rest);
      std::string after;
      long n = 0;
      if (!(args >> after >> n) || after != "after" || n < 1) {
        error = "line " + std::to_string(number) + ": 'stop' is written 'stop after N' with N at least 1";
        return result;
      }
      step.argument = std::to_string(n);
    } else {
      error = "line " + std::to_string(number) + ": unknown step '" + step.verb + "'";
      return result;
    }
    result.push_back(step);
  }
  return result;
}

script_backend::script_backend(const std::string& script_text, std::ostream& transcript) : out(transcript) {
  steps = parse(script_text, parse_error);
}

script_backend::~script_backend() { release_stdout(); }

void script_backend::capture_stdout() {
  if (saved_stdout) return;
  std::cout.flush();
  stdout_lines.reset(new line_sink(*this));
  saved_stdout = std::cout.rdbuf(stdout_lines.get());
}

void script_backend::release_stdout() {
  if (!saved_stdout) return;
  std::cout.rdbuf(saved_stdout);
  saved_stdout = nullptr;
}

void script_backend::write_line(const std::string& text) {
  out << text << '\n';
  out.flush();
}

void script_backend::fail(int status, const std::string& text) {
  write_line("error: " + text);
  release_stdout();
  std::fprintf(stderr, "celvane-batch: %s\n", text.c_str());
  std::fflush(stderr);
  std::exit(status);
}

bool script_backend::next_step(script_step& step) {
  if (next >= steps.size()) return false;
  step = steps[next++];
  return true;
}

// ---- windows and drawing

script_painter& script_backend::painter(window& w) { return drawings[&w]; }

const script_painter* script_backend::drawing_of(const window& w) const {
  auto found = drawings.find(&w);
  return found == drawings.end() ? nullptr : &found->second;
}

void script_backend::create(window&) {}

void script_backend::display(window& w, int, int, window*) {
  for (window* known : windows)
    if (known == &w) return;
  windows.push_back(&w);
}

void script_backend::close(window& w) {
  for (size_t i = 0; i < windows.size(); ++i)
    if (windows[i] == &w) windows.erase(windows.begin() + static_cast<long>(i));
}

void script_backend::destroy(window& w) {
  close(w);
  drawings.erase(&w);
  if (main_window == &w) main_window = nullptr;
}

void script_backend::build_menu_bar(window& w) { main_window = &w; }

void script_backend::clear(window& w, int colour) {
  drawing_op op{drawing_op::clear, {}, colour, "", {}};
  painter(w).record(op);
}

void script_backend::pixel(window& w, int x, int y, int colour) {
  painter(w).record(drawing_op{drawing_op::pixel, {x, y}, colour, "", {}});
}

void script_backend::line(window& w, int x1, int y1, int x2, int y2, int colour) {
  painter(w).record(drawing_op{drawing_op::line, {x1, y1, x2, y2}, colour, "", {}});
}

void script_backend::disc(window& w, int x, int y, int radius, int colour) {
  painter(w).record(drawing_op{drawing_op::disc, {x, y, radius}, colour, "", {}});
}

void script_backend::polygon(window& w, const int* xy, int n, bool filled, int colour) {
  drawing_op op{filled ? drawing_op::filled_polygon : drawing_op::polygon, std::vector<int>(xy, xy + 2 * n), colour,
                "", {}};
  painter(w).record(op);
}

void script_backend::rectangle(window& w, int x0, int y0, int x1, int y1, bool filled, int colour) {
  painter(w).record(
      drawing_op{filled ? drawing_op::filled_rectangle : drawing_op::rectangle, {x0, y0, x1, y1}, colour, "", {}});
}

void script_backend::text(window& w, int x, int y, const std::string& s, int colour) {
  painter(w).record(drawing_op{drawing_op::text, {x, y}, colour, s, {}});
}

int script_backend::text_box(window& w, int x0, int, int y, const std::string& formatted, bool draw) {
  int line_height = 14;
  std::istringstream lines(plain_text(formatted));
  std::string l;
  while (std::getline(lines, l)) {
    y += line_height;
    if (draw) text(w, x0, y, l, 1);
  }
  return y;
}

void script_backend::pixmap(window& w, int x, int y, const char* const* xpm) {
  drawing_op op{drawing_op::pixmap, {x, y}, 1, "", {}};
  if (xpm && xpm[0]) {
    int width = 0, height = 0, colours = 0, cpp = 0;
    std::sscanf(xpm[0], "%d %d %d %d", &width, &height, &colours, &cpp);
    int total = 1 + (colours > 0 ? colours : 0) + (height > 0 ? height : 0);
    for (int i = 0; i < total && xpm[i]; ++i) op.xpm.push_back(xpm[i]);
  }
  painter(w).record(op);
}

void script_backend::set_status(window&, const std::string& formatted) { write_line("status: " + formatted); }

// ---- panels

void script_backend::describe_panel(panel& p) {
  write_line("panel: " + p.title());
  for (const panel_item& item : p.items()) {
    switch (item.kind) {
      case panel_item::text:
        write_line("  | " + escaped(item.value));
        break;
      case panel_item::choice: {
        int index = std::atoi(item.value.c_str());
        std::string shown = index >= 0 && index < static_cast<int>(item.choices.size())
                                ? item.choices[static_cast<size_t>(index)]
                                : item.value;
        write_line("  " + item.label + "[" + shown + "]");
        break;
      }
      default:
        write_line("  " + item.label + "[" + item.value + "]");
        break;
    }
  }
  std::string buttons;
  for (const panel_button& b : p.buttons()) {
    if (b.separator) continue;
    if (!buttons.empty()) buttons += " | ";
    buttons += b.label;
  }
  write_line("  buttons: " + buttons);
}

static std::string panel_summary(panel& p) {
  std::string s = "panel \"" + p.title() + "\" with items";
  bool any = false;
  for (const panel_item& item : p.items()) {
    if (item.kind == panel_item::text) continue;
    s += (any ? ", \"" : " \"") + item.label + "\"";
    any = true;
  }
  if (!any) s += " (none)";
  s += " and buttons";
  for (const panel_button& b : p.buttons())
    if (!b.separator) s += " \"" + b.label + "\"";
  return s;
}

static bool set_item(panel_item& item, const std::string& value) {
  switch (item.kind) {
    case panel_item::choice: {
      for (size_t i = 0; i < item.choices.size(); ++i)
        if (item.choices[i] == value) {
          item.value = std::to_string(i);
          return true;
        }
      char* end = nullptr;
      long index = std::strtol(value.c_str(), &end, 10);
      if (end == value.c_str() || *end || index < 0 || index >= static_cast<long>(item.choices.size())) return false;
      item.value = std::to_string(index);
      return true;
    }
    case panel_item::bool_input:
      if (value == "yes" || value == "true" || value == "1" || value == "on")
        item.value = "1";
      else if (value == "no" || value == "false" || value == "0" || value == "off")
        item.value = "0";
      else
        return false;
      return true;
    case panel_item::text:
      return false;
    default:
      item.value = value;
      return true;
  }
}

int script_backend::answer_panel(panel& p) {
  for (;;) {
    script_step step;
    if (!next_step(step)) fail(unanswered_status, "the script ended while " + panel_summary(p) + " waits for an answer");
    if (step.verb == "set") {
      bool found = false;
      std::vector<panel_item>& items = p.items();
      for (size_t i = 0; i < items.size() && !found; ++i) {
        if (items[i].kind == panel_item::text || label_key(items[i].label) != label_key(step.argument)) continue;
        found = true;
        if (!set_item(items[i], step.value))
          fail(unanswered_status, "line " + std::to_string(step.line) + ": '" + step.value + "' does not fit item \"" +
                                      items[i].label + "\" of " + panel_summary(p));
        write_line("  set: " + items[i].label + "[" + step.value + "]");
        if (items[i].on_change) {
          std::vector<char> text(items[i].value.begin(), items[i].value.end());
          text.push_back('\0');
          items[i].on_change(text.data());
        }
      }
      if (!found)
        fail(unanswered_status,
             "line " + std::to_string(step.line) + ": no item \"" + step.argument + "\" in " + panel_summary(p));
      continue;
    }
    if (step.verb == "file") {
      std::vector<panel_item>& items = p.items();
      bool found = false;
      for (panel_item& item : items)
        if (label_key(item.label) == "File name") {
          item.value = step.argument;
          found = true;
        }
      int action = -1, seen = 0;
      for (size_t i = 0; i < p.buttons().size(); ++i) {
        if (p.buttons()[i].separator) continue;
        if (seen++ == 1) action = static_cast<int>(i);
      }
      if (!found || action < 0)
        fail(unanswered_status, "line " + std::to_string(step.line) + ": 'file' answers a file dialog, but " +
                                    panel_summary(p) + " is open");
      write_line("  file: " + step.argument);
      write_line("  press: " + p.buttons()[static_cast<size_t>(action)].label);
      return action;
    }
    if (step.verb == "press") {
      for (size_t i = 0; i < p.buttons().size(); ++i)
        if (!p.buttons()[i].separator && p.buttons()[i].label == step.argument) {
          write_line("  press: " + step.argument);
          return static_cast<int>(i);
        }
      fail(unanswered_status,
           "line " + std::to_string(step.line) + ": no button \"" + step.argument + "\" in " + panel_summary(p));
    }
    fail(unanswered_status, "line " + std::to_string(step.line) + ": '" + step.verb + "' came while " +
                                panel_summary(p) + " waits for an answer");
  }
}

int script_backend::run_panel(panel& p, int, int, window*) {
  if (p.kind == panel::message_box) {
    write_line("message: " + p.box_text);
    return 0;
  }
  if (p.kind == panel::question_box) {
    script_step step;
    if (!next_step(step) || (step.verb != "yes" && step.verb != "no"))
      fail(unanswered_status, "the question \"" + p.box_text + "\" needs 'yes' or 'no'" +
                                  (step.line ? " at line " + std::to_string(step.line) : std::string()));
    write_line("confirm: " + p.box_text + " -> " + step.verb);
    int wanted = step.verb == "yes" ? 1 : 0;
    for (size_t i = 0; i < p.buttons().size(); ++i)
      if (p.buttons()[i].value == wanted) return static_cast<int>(i);
    return 0;
  }
  describe_panel(p);
  return answer_panel(p);
}

// ---- events

void script_backend::do_menu(const script_step& step) {
  if (!main_window) fail(unanswered_status, "line " + std::to_string(step.line) + ": no window has a menu bar");
  write_line("menu: " + step.argument);
  const std::vector<panel_button>* level = &main_window->buttons();
  std::string path = step.argument;
  for (;;) {
    size_t slash = path.find('/');
    std::string name = path.substr(0, slash);
    const panel_button* found = nullptr;
    for (const panel_button& b : *level)
      if (!b.separator && b.label == name) found = &b;
    if (!found) fail(unanswered_status, "line " + std::to_string(step.line) + ": no menu entry \"" + step.argument + "\"");
    if (slash == std::string::npos) {
      if (found->action) {
        found->action();
        return;
      }
      fail(unanswered_status, "line " + std::to_string(step.line) + ": \"" + step.argument + "\" is not a command");
    }
    if (!found->submenu) fail(unanswered_status, "line " + std::to_string(step.line) + ": \"" + name + "\" has no sub-menu");
    level = &found->submenu->buttons();
    path = path.substr(slash + 1);
  }
}

void script_backend::do_snapshot(const script_step& step) {
  std::istringstream args(step.argument);
  std::string file;
  args >> file;
  std::string title;
  std::getline(args, title);
  title = trim(title);
  window* target = title.empty() ? main_window : nullptr;
  for (window* w : windows)
    if (!title.empty() && w->title() == title) target = w;
  if (!target) fail(unanswered_status, "line " + std::to_string(step.line) + ": no window to take a snapshot of");
  if (!painter(*target).paint_png(file, target->width(), target->height()))
    fail(unanswered_status, "line " + std::to_string(step.line) + ": cannot write " + file);
  write_line("snapshot: " + file);
}

int script_backend::wait_event(window*, window*& w, int& value, int& px, int& py) {
  for (;;) {
    script_step step;
    if (!next_step(step)) fail(script_ended_status, "the script ended while the program waits for a command");
    if (step.verb == "stop") {
      stop_countdown = std::atol(step.argument.c_str());
      continue;
    }
    if (step.verb == "snapshot") {
      do_snapshot(step);
      continue;
    }
    if (step.verb == "menu") {
      w = main_window;
      value = 0;
      px = py = 0;
      do_menu(step);
      return 1;
    }
    fail(unanswered_status,
         "line " + std::to_string(step.line) + ": '" + step.verb + "' came while the program waits for a command");
  }
}

int script_backend::wait_mouse(window& w, int& px, int& py) {
  script_step step;
  if (!next_step(step) || step.verb != "click")
    fail(unanswered_status, "the program waits for a mouse click in \"" + w.title() + "\"" +
                                (step.line ? ", but line " + std::to_string(step.line) + " is '" + step.verb + "'"
                                           : std::string(", but the script ended")));
  std::istringstream args(step.argument);
  double x = 0, y = 0;
  std::string button = "left";
  args >> x >> y >> button;
  px = w.x_to_pixel(x);
  py = w.y_to_pixel(y);
  write_line("click: " + step.argument);
  return button == "left" ? 1 : (button == "middle" ? 2 : 3);
}

int script_backend::poll_mouse(window&, int& px, int& py) {
  px = py = 0;
  if (stop_countdown > 0 && --stop_countdown == 0) return 1;
  return 0;
}

}  // namespace tk
