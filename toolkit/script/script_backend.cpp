#include "toolkit/script/script_backend.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>

#include "toolkit/directory.h"
#include "toolkit/formatted_text.h"
#include "toolkit/menu.h"
#include "toolkit/panel.h"
#include "toolkit/window.h"

namespace tk {

namespace {

// Event numbers the scripted events come back with; the program only tells no_event apart.
const int configure_event = 5;
const int exposure_event = 6;
const int motion_event = 7;
const int panel_press_event = 4;
const int destroy_event = 8;

std::string trim(const std::string& s) {
  size_t b = s.find_first_not_of(" \t\r");
  if (b == std::string::npos) return "";
  size_t e = s.find_last_not_of(" \t\r");
  return s.substr(b, e - b + 1);
}

// A label as a plain script names it: outer blanks and a final colon don't count.
std::string label_key(const std::string& label) {
  std::string t = trim(label);
  while (!t.empty() && (t.back() == ':' || t.back() == ' ')) t.pop_back();
  return t;
}

bool label_matches(const std::string& label, const script_step& step) {
  return step.exact ? label == step.argument : label_key(label) == label_key(step.argument);
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

std::string where(const script_step& step) { return "line " + std::to_string(step.line) + ": "; }

// Turns each finished line of the program's standard output into a transcript line.
class line_sink : public std::streambuf {
 public:
  explicit line_sink(script_backend& b) : owner(b) {}
  // A last line without its end still belongs to the transcript.
  void finish() {
    if (!pending.empty()) owner.note_stdout(pending);
    pending.clear();
  }

 protected:
  int overflow(int c) override {
    if (c == EOF) return 0;
    if (c == '\n') {
      owner.note_stdout(pending);
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

std::string panel_summary(panel& p) {
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

bool parses_whole(const std::string& value, bool real) {
  if (value.empty()) return false;
  char* end = nullptr;
  if (real)
    std::strtod(value.c_str(), &end);
  else
    std::strtol(value.c_str(), &end, 10);
  return end && *end == '\0';
}

// Puts a scripted value into an item the way the planner could type or choose it.
bool fill_item(panel_item& item, const std::string& value) {
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
    case panel_item::int_input:
    case panel_item::double_input:
      if (!parses_whole(value, item.kind == panel_item::double_input)) return false;
      item.value = value;
      return true;
    case panel_item::text:
      return false;
    default:
      item.value = value;
      return true;
  }
}

}  // namespace

script_backend::script_backend(const std::string& script_text, std::ostream& transcript)
    : out(transcript), sink(&transcript) {
  plan_script script(script_text);
  steps = script.steps();
  parse_error = script.error_text();
}

script_backend::~script_backend() { release_stdout(); }

// ---- transcript and standard output

void script_backend::capture_stdout() {
  if (saved_stdout) return;
  std::cout.flush();
  stdout_lines.reset(new line_sink(*this));
  bool transcript_is_stdout = out.rdbuf() == std::cout.rdbuf();
  saved_stdout = std::cout.rdbuf(stdout_lines.get());
  // Transcript lines must not run through the sink that makes them.
  if (transcript_is_stdout) {
    direct_out.reset(new std::ostream(saved_stdout));
    sink = direct_out.get();
  }
}

void script_backend::release_stdout() {
  if (!saved_stdout) return;
  static_cast<line_sink*>(stdout_lines.get())->finish();
  std::cout.rdbuf(saved_stdout);
  saved_stdout = nullptr;
  sink = &out;
  direct_out.reset();
}

void script_backend::note_stdout(const std::string& line) { write_line("stdout: " + line); }

void script_backend::write_line(const std::string& text) {
  *sink << text << '\n';
  sink->flush();
}

void script_backend::fail(int status, const std::string& text) {
  write_line("error: " + text);
  release_stdout();
  std::fprintf(stderr, "celvane-batch: %s\n", text.c_str());
  std::fflush(stderr);
  std::exit(status);
}

void script_backend::fail_at(const script_step& step, const std::string& text) {
  fail(unanswered_status, where(step) + text);
}

bool script_backend::next_step(script_step& step) {
  if (next >= steps.size()) return false;
  step = steps[next++];
  return true;
}

bool script_backend::peek_step(const char* verb) const { return next < steps.size() && steps[next].verb == verb; }

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
  cursors.erase(&w);
  if (main_window == &w) main_window = nullptr;
}

void script_backend::build_menu_bar(window& w) { main_window = &w; }

void script_backend::clear(window& w, int colour) { painter(w).record(drawing_op{drawing_op::clear, {}, colour, "", {}}); }

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
  if (&w == pointer_window) pointer_texts.push_back(s);
  painter(w).record(drawing_op{drawing_op::text, {x, y}, colour, s, {}});
}

// Lays the words out with a fixed advance per character, so that a layout measured here is
// the same on every machine. Each line is line_height pixels from y downward.
int script_backend::text_box(window& w, int x0, int x1, int y, const std::string& formatted, bool draw) {
  int x = x0, lines = 1;
  for (const text_run& run : parse_formatted_text(formatted)) {
    if (run.line_break) {
      ++lines;
      x = x0;
    }
    std::istringstream words(run.text);
    std::string word;
    while (words >> word) {
      int width = static_cast<int>(word.size()) * char_width;
      if (x > x0 && x + width > x1) {
        ++lines;
        x = x0;
      }
      if (draw) text(w, x, y + lines * line_height - 3, word, run.colour);
      x += width + char_width;
    }
  }
  return y + lines * line_height;
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

int script_backend::set_cursor(window& w, int kind) {
  auto found = cursors.find(&w);
  int old = found == cursors.end() ? 0 : found->second;
  cursors[&w] = kind;
  return old;
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

void script_backend::set_item(panel& p, const script_step& step) {
  std::vector<panel_item>& items = p.items();
  for (panel_item& item : items) {
    if (item.kind == panel_item::text || !label_matches(item.label, step)) continue;
    if (!fill_item(item, step.value))
      fail_at(step, "'" + step.value + "' does not fit item \"" + item.label + "\" of " + panel_summary(p));
    write_line("  set: " + item.label + "[" + step.value + "]");
    // The planner's edit of a list item tells the panel at once, as a real one does.
    if (item.on_change) {
      std::vector<char> text(item.value.begin(), item.value.end());
      text.push_back('\0');
      item.on_change(text.data());
    }
    return;
  }
  fail_at(step, "no item \"" + step.argument + "\" in " + panel_summary(p));
}

// "file PATH" fills "File name: " with the path in the program's drive form and presses
// the dialog's default button, its action.
int script_backend::answer_file_dialog(panel& p, const script_step& step) {
  panel_item* file_name = nullptr;
  for (panel_item& item : p.items())
    if (item.kind != panel_item::text && label_key(item.label) == "File name") file_name = &item;
  int action = -1;
  for (size_t i = 0; i < p.buttons().size(); ++i)
    if (!p.buttons()[i].separator && p.buttons()[i].is_default) action = static_cast<int>(i);
  if (!file_name || action < 0) fail_at(step, "'file' answers a file dialog, but " + panel_summary(p) + " is open");
  file_name->value = to_drive_path(step.argument).str();
  write_line("  file: " + step.argument);
  write_line("  press: " + p.buttons()[static_cast<size_t>(action)].label);
  return action;
}

int script_backend::find_button(panel& p, const script_step& step) {
  for (size_t i = 0; i < p.buttons().size(); ++i) {
    const panel_button& b = p.buttons()[i];
    if (b.separator || (step.exact ? b.label != step.argument : trim(b.label) != step.argument)) continue;
    return static_cast<int>(i);
  }
  fail_at(step, "no button \"" + step.argument + "\" in " + panel_summary(p));
}

int script_backend::press(panel& p, const script_step& step) {
  int index = find_button(p, step);
  write_line("  press: " + p.buttons()[static_cast<size_t>(index)].label);
  return index;
}

int script_backend::answer_panel(panel& p) {
  for (;;) {
    script_step step;
    if (!next_step(step))
      fail(unanswered_status, "the script ended while " + panel_summary(p) + " waits for an answer");
    if (step.verb == "set") {
      set_item(p, step);
      continue;
    }
    if (step.verb == "file") return answer_file_dialog(p, step);
    if (step.verb == "press") return press(p, step);
    fail_at(step, "'" + step.verb + "' came while " + panel_summary(p) + " waits for an answer");
  }
}

int script_backend::answer_question(panel& p) {
  script_step step;
  bool answered = next_step(step);
  if (answered && step.verb == "press") {
    int index = find_button(p, step);
    write_line("confirm: " + p.box_text + " -> " + p.buttons()[static_cast<size_t>(index)].label);
    return index;
  }
  if (!answered || (step.verb != "yes" && step.verb != "no"))
    fail(unanswered_status, "the question \"" + p.box_text + "\" needs 'yes' or 'no'" +
                                (answered ? " at line " + std::to_string(step.line) : std::string()));
  write_line("confirm: " + p.box_text + " -> " + step.verb);
  int wanted = step.verb == "yes" ? 1 : 0;
  for (size_t i = 0; i < p.buttons().size(); ++i)
    if (p.buttons()[i].value == wanted) return static_cast<int>(i);
  return 0;
}

int script_backend::run_panel(panel& p, int, int, window*) {
  if (p.kind == panel::message_box) {
    // A message needs no answer; an "ok" written for it is taken with it.
    write_line("message: " + p.box_text);
    if (peek_step("ok")) ++next;
    return 0;
  }
  if (p.kind == panel::question_box) return answer_question(p);
  describe_panel(p);
  return answer_panel(p);
}

// ---- events

void script_backend::do_menu(const script_step& step) {
  if (!main_window) fail_at(step, "no window has a menu bar");
  write_line("menu: " + step.argument);
  if (!main_window->panel_enabled()) fail_at(step, "the menu bar is disabled");
  const std::vector<panel_button>* level = &main_window->buttons();
  std::string path = step.argument;
  for (;;) {
    size_t slash = path.find('/');
    std::string name = path.substr(0, slash);
    const panel_button* found = nullptr;
    for (const panel_button& b : *level)
      if (!b.separator && b.label == name) found = &b;
    if (!found) fail_at(step, "no menu entry \"" + step.argument + "\"");
    if (slash == std::string::npos) {
      if (found->action) {
        // Copied: the command may change the menus it was chosen from.
        action_handler action = found->action;
        action();
        return;
      }
      fail_at(step, "\"" + step.argument + "\" is not a command");
    }
    if (!found->submenu) fail_at(step, "\"" + name + "\" has no sub-menu");
    level = &found->submenu->buttons();
    path = path.substr(slash + 1);
  }
}

window& script_backend::named_window(const script_step& step) {
  if (step.title.empty()) {
    if (!main_window) fail_at(step, "no main window is open");
    return *main_window;
  }
  for (window* w : windows)
    if (w->title() == step.title) return *w;
  fail_at(step, "no window \"" + step.title + "\" is open");
}

void script_backend::do_snapshot(const script_step& step) {
  window& target = named_window(step);
  if (!painter(target).paint_png(step.argument, target.width(), target.height()))
    fail_at(step, "cannot write " + step.argument);
  write_line("snapshot: " + step.argument);
}

// Plays an event step addressed to a window; returns the window it leaves behind, or null
// when the step's handler has deleted it.
window* script_backend::event_window(const script_step& step, window*& w, int& px, int& py) {
  window& target = named_window(step);
  write_line(step.verb + ": " + step.text);
  w = &target;
  if (step.verb == "redraw") {
    target.request_redraw();
  } else if (step.verb == "resize") {
    target.resized(static_cast<int>(step.x), static_cast<int>(step.y));
    target.request_redraw();
  } else if (step.verb == "point") {
    px = target.x_to_pixel(step.x);
    py = target.y_to_pixel(step.y);
    // What the handler writes into the window is all a planner reads there: record it.
    pointer_window = &target;
    pointer_texts.clear();
    target.show_coordinates(px, py);
    pointer_window = nullptr;
    if (target.wants_coordinates() && !target.coordinate_text.empty())
      write_line("  coordinates: " + target.coordinate_text);
    for (const std::string& t : pointer_texts) write_line("  text: \"" + t + "\"");
  } else if (step.verb == "close") {
    bool is_main = &target == main_window;
    target.user_deleted();
    bool still_open = false;
    for (window* open : windows) still_open = still_open || open == &target;
    if (!still_open) {
      w = nullptr;  // the handler closed or deleted it
      return nullptr;
    }
    // As on a screen: closing the main window ends the program, another one just closes.
    if (is_main) {
      release_stdout();
      std::exit(0);
    }
    target.close();
  }
  return w;
}

int script_backend::wait_event(window* restricted, window*& w, int& value, int& px, int& py) {
  value = px = py = 0;
  w = restricted;
  // The script's steps are the planner's commands; no event is ever pending for one window.
  if (restricted) return no_event;
  for (;;) {
    script_step step;
    if (!next_step(step)) fail(script_ended_status, "the script ended while the program waits for a command");
    if (step.verb == "stop") {
      stop_countdown = step.count;
      continue;
    }
    if (step.verb == "snapshot") {
      do_snapshot(step);
      continue;
    }
    if (step.verb == "menu") {
      w = main_window;
      do_menu(step);
      return panel_press_event;
    }
    if (step.verb == "redraw" || step.verb == "resize" || step.verb == "point" || step.verb == "close") {
      event_window(step, w, px, py);
      if (step.verb == "close") return destroy_event;
      if (step.verb == "point") return motion_event;
      return step.verb == "redraw" ? exposure_event : configure_event;
    }
    fail_at(step, "'" + step.verb + "' came while the program waits for a command");
  }
}

int script_backend::wait_mouse(window& w, int& px, int& py) {
  script_step step;
  if (!next_step(step) || step.verb != "click")
    fail(unanswered_status, "the program waits for a mouse click in \"" + w.title() + "\"" +
                                (step.line ? ", but line " + std::to_string(step.line) + " is '" + step.verb + "'"
                                           : std::string(", but the script ended")));
  px = w.x_to_pixel(step.x);
  py = w.y_to_pixel(step.y);
  write_line("click: " + step.text);
  return step.button;
}

int script_backend::poll_mouse(window&, int& px, int& py) {
  px = py = 0;
  if (stop_countdown > 0 && --stop_countdown == 0) return 1;
  return 0;
}

}  // namespace tk
