#include "toolkit/window.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "toolkit/backend.h"
#include "toolkit/error.h"
#include "toolkit/menu.h"
#include "toolkit/panel.h"

namespace tk {

// ---- the installed backend

namespace {
backend* installed_backend = nullptr;
bool error_panel_considered = false;

// The error panel: warnings get "continue"; errors "exit", "abort" and "ignore".
void window_error_handler(int number, const char* message) {
  // Without a backend (after the executable has let it go) no panel can open.
  if (!has_backend()) {
    default_error_handler(number, message);
    return;
  }
  panel p("TOOLKIT EXCEPTION HANDLER");
  p.text_item(number == 0 ? "\\bf\\blue Warning" : "\\bf\\red Error");
  std::istringstream lines(message ? message : "");
  std::string line;
  while (std::getline(lines, line)) p.text_item(tk::string("\\tt ") + tk::string(line));
  if (number == 0) {
    p.button("continue", 0);
    p.open();
    return;
  }
  p.button("exit", 0);
  p.button("abort", 1);
  p.button("ignore", 2);
  switch (p.open()) {
    case 0:
      std::exit(0);
    case 1:
      std::abort();
    default:
      return;
  }
}
}  // namespace

void set_backend(backend* b) { installed_backend = b; }

backend::~backend() {
  if (installed_backend == this) installed_backend = nullptr;
}

backend& current_backend() {
  if (!installed_backend) {
    std::fputs("no window backend installed\n", stderr);
    std::abort();
  }
  return *installed_backend;
}

bool has_backend() { return installed_backend != nullptr; }

// ---- life and placing

window::window(int w, int h, const char* title) : label(title ? title : ""), pixel_width(w), pixel_height(h) {
  scale = pixel_width / (user_x1 - user_x0);
  // The first window made with a backend installs the error panel, unless someone has
  // installed a handler of their own already.
  if (!error_panel_considered && has_backend()) {
    error_panel_considered = true;
    if (get_error_handler() == default_error_handler) set_error_handler(window_error_handler);
  }
  if (has_backend()) current_backend().create(*this);
}

window::window() : window(0, 0, "") {}

window::~window() {
  if (has_backend()) current_backend().destroy(*this);
}

void window::display(int x, int y, window* parent) {
  opened = true;
  current_backend().display(*this, x, y, parent);
}

void window::init(double x0, double x1, double y0) {
  if (x0 >= x1) {
    std::fprintf(stderr, "illegal arguments in W.init: x0 (%f) >= x1 (%f)\n", x0, x1);
    std::fflush(stderr);
    std::abort();
  }
  user_x0 = x0;
  user_x1 = x1;
  user_y0 = y0;
  scale = pixel_width / (x1 - x0);
  clear();
}

void window::close() {
  if (!opened) return;
  opened = false;
  current_backend().close(*this);
}

int window::screen_width() const { return current_backend().screen_width(); }
int window::screen_height() const { return current_backend().screen_height(); }

void window::resized(int w, int h) {
  pixel_width = w;
  pixel_height = h;
  scale = pixel_width / (user_x1 - user_x0);
}

// ---- items and buttons

int window::text_item(const tk::string& s) {
  panel_item item;
  item.kind = panel_item::text;
  item.value = s.str();
  item_list.push_back(item);
  return static_cast<int>(item_list.size()) - 1;
}

int window::string_item(const tk::string& l, tk::string& var, const tk::string& help) {
  panel_item item;
  item.kind = panel_item::string_input;
  item.label = l.str();
  item.help = help.str();
  item.string_var = &var;
  item_list.push_back(item);
  return static_cast<int>(item_list.size()) - 1;
}

int window::string_item(const tk::string& l, tk::string& var, const tk::list<tk::string>& choices, int rows,
                        const tk::string& help, string_change_handler on_change) {
  int index = string_item(l, var, help);
  panel_item& item = item_list.back();
  item.kind = panel_item::string_menu;
  item.rows = rows;
  for (const tk::string& c : choices) item.choices.push_back(c.str());
  item.on_change = on_change;
  return index;
}

int window::int_item(const tk::string& l, int& var, const tk::string& help) {
  panel_item item;
  item.kind = panel_item::int_input;
  item.label = l.str();
  item.help = help.str();
  item.int_var = &var;
  item_list.push_back(item);
  return static_cast<int>(item_list.size()) - 1;
}

int window::double_item(const tk::string& l, double& var, const tk::string& help) {
  panel_item item;
  item.kind = panel_item::double_input;
  item.label = l.str();
  item.help = help.str();
  item.double_var = &var;
  item_list.push_back(item);
  return static_cast<int>(item_list.size()) - 1;
}

int window::bool_item(const tk::string& l, bool& var, const tk::string& help) {
  panel_item item;
  item.kind = panel_item::bool_input;
  item.label = l.str();
  item.help = help.str();
  item.bool_var = &var;
  item_list.push_back(item);
  return static_cast<int>(item_list.size()) - 1;
}

int window::choice_item(const tk::string& l, int& var, const tk::list<tk::string>& choices, const tk::string& help) {
  panel_item item;
  item.kind = panel_item::choice;
  item.label = l.str();
  item.help = help.str();
  item.int_var = &var;
  for (const tk::string& c : choices) item.choices.push_back(c.str());
  item_list.push_back(item);
  return static_cast<int>(item_list.size()) - 1;
}

int window::choice_item(const tk::string& l, int& var, const char* s1, const char* s2) {
  tk::list<tk::string> c;
  c.append(s1);
  c.append(s2);
  return choice_item(l, var, c);
}

int window::choice_item(const tk::string& l, int& var, const char* s1, const char* s2, const char* s3) {
  tk::list<tk::string> c;
  c.append(s1);
  c.append(s2);
  c.append(s3);
  return choice_item(l, var, c);
}

int window::add_button(panel_button b) {
  button_list.push_back(b);
  return b.value;
}

// The smallest value no button of this window uses yet.
static int next_free_value(const std::vector<panel_button>& buttons) {
  int v = 0;
  for (;;) {
    bool used = false;
    for (const panel_button& b : buttons)
      if (!b.separator && b.value == v) used = true;
    if (!used) return v;
    ++v;
  }
}

int window::button(const tk::string& l, const tk::string& help) {
  return button(l, next_free_value(button_list), help);
}

int window::button(const tk::string& l, int value, const tk::string& help) {
  panel_button b;
  b.label = l.str();
  b.help = help.str();
  b.value = value;
  return add_button(b);
}

int window::button(const tk::string& l, action_handler action, const tk::string& help) {
  panel_button b;
  b.label = l.str();
  b.help = help.str();
  b.value = next_free_value(button_list);
  b.action = action;
  return add_button(b);
}

int window::button(const tk::string& l, menu& submenu, const tk::string& help) {
  panel_button b;
  b.label = l.str();
  b.help = help.str();
  b.value = next_free_value(button_list);
  b.submenu = &submenu;
  return add_button(b);
}

int window::fbutton(const tk::string& l, const tk::string& help) {
  int v = button(l, help);
  button_list.back().is_default = true;
  return v;
}

int window::fbutton(const tk::string& l, int value, const tk::string& help) {
  int v = button(l, value, help);
  button_list.back().is_default = true;
  return v;
}

void window::separator() {
  panel_button b;
  b.separator = true;
  b.value = -1;
  button_list.push_back(b);
}

void window::make_menu_bar(int) {
  menu_bar = true;
  if (has_backend()) current_backend().build_menu_bar(*this);
}

void window::set_menu(int item, const tk::list<tk::string>& choices) {
  if (item < 0 || item >= static_cast<int>(item_list.size())) return;
  item_list[item].choices.clear();
  for (const tk::string& c : choices) item_list[item].choices.push_back(c.str());
  panel* p = dynamic_cast<panel*>(this);
  if (p && p->is_modal_open()) current_backend().refresh_item(*p, item);
}

void window::set_item_value(int item, const tk::string& value) {
  if (item < 0 || item >= static_cast<int>(item_list.size())) return;
  item_list[item].value = value.str();
  panel* p = dynamic_cast<panel*>(this);
  if (p && p->is_modal_open()) current_backend().refresh_item(*p, item);
}

void window::disable_panel(bool) {
  enabled = false;
  if (has_backend()) current_backend().set_items_enabled(*this, false);
}

void window::enable_panel() {
  enabled = true;
  if (has_backend()) current_backend().set_items_enabled(*this, true);
}

static std::string format_double(double v) {
  char text[64];
  std::snprintf(text, sizeof text, "%g", v);
  return text;
}

void window::read_variables() {
  for (panel_item& item : item_list) {
    switch (item.kind) {
      case panel_item::string_input:
      case panel_item::string_menu:
        item.value = item.string_var->str();
        break;
      case panel_item::int_input:
        item.value = std::to_string(*item.int_var);
        break;
      case panel_item::double_input:
        item.value = format_double(*item.double_var);
        break;
      case panel_item::bool_input:
        item.value = *item.bool_var ? "1" : "0";
        break;
      case panel_item::choice:
        item.value = std::to_string(*item.int_var);
        break;
      case panel_item::text:
        break;
    }
    item.opened_value = item.value;
  }
}

void window::write_variables() {
  for (panel_item& item : item_list) {
    // An untouched item leaves its variable alone, so that a real number is not rounded
    // to the digits it was shown with.
    if (item.value == item.opened_value) continue;
    switch (item.kind) {
      case panel_item::string_input:
      case panel_item::string_menu:
        *item.string_var = tk::string(item.value);
        break;
      case panel_item::int_input:
        *item.int_var = std::atoi(item.value.c_str());
        break;
      case panel_item::double_input:
        *item.double_var = std::atof(item.value.c_str());
        break;
      case panel_item::bool_input:
        *item.bool_var = item.value == "1" || item.value == "true" || item.value == "yes";
        break;
      case panel_item::choice:
        *item.int_var = std::atoi(item.value.c_str());
        break;
      case panel_item::text:
        break;
    }
  }
}

// ---- coordinates

int window::x_to_pixel(double x) const { return static_cast<int>(std::lround((x - user_x0) * scale)); }
int window::y_to_pixel(double y) const {
  return pixel_height - 1 - static_cast<int>(std::lround((y - user_y0) * scale));
}
double window::pixel_to_x(int px) const { return user_x0 + px / scale; }
double window::pixel_to_y(int py) const { return user_y0 + (pixel_height - 1 - py) / scale; }

// ---- drawing

void window::clear(int colour) { current_backend().clear(*this, colour < 0 ? background : colour); }

void window::draw_pixel(const tk::point& p, int colour) {
  current_backend().pixel(*this, x_to_pixel(p.xcoord()), y_to_pixel(p.ycoord()), colour);
}

void window::draw_segment(double x1, double y1, double x2, double y2, int colour) {
  current_backend().line(*this, x_to_pixel(x1), y_to_pixel(y1), x_to_pixel(x2), y_to_pixel(y2), colour);
}

void window::draw_segment(const tk::point& p, const tk::point& q, int colour) {
  draw_segment(p.xcoord(), p.ycoord(), q.xcoord(), q.ycoord(), colour);
}

void window::draw_node(const tk::point& p, int colour) {
  current_backend().disc(*this, x_to_pixel(p.xcoord()), y_to_pixel(p.ycoord()), std::max(1, node_width / 2), colour);
}

int window::set_node_width(int n) {
  int old = node_width;
  node_width = n < 1 ? 1 : n;
  return old;
}

static std::vector<int> pixel_corners(const window& w, const tk::polygon& poly) {
  std::vector<int> xy;
  for (const tk::point& p : poly.vertices()) {
    xy.push_back(w.x_to_pixel(p.xcoord()));
    xy.push_back(w.y_to_pixel(p.ycoord()));
  }
  return xy;
}

void window::draw_polygon(const tk::polygon& p, int colour) {
  std::vector<int> xy = pixel_corners(*this, p);
  if (!xy.empty()) current_backend().polygon(*this, xy.data(), static_cast<int>(xy.size() / 2), false, colour);
}

void window::draw_filled_polygon(const tk::polygon& p, int colour) {
  std::vector<int> xy = pixel_corners(*this, p);
  if (!xy.empty()) current_backend().polygon(*this, xy.data(), static_cast<int>(xy.size() / 2), true, colour);
}

void window::draw_rectangle(const tk::point& p, const tk::point& q, int colour) {
  current_backend().rectangle(*this, x_to_pixel(p.xcoord()), y_to_pixel(p.ycoord()), x_to_pixel(q.xcoord()),
                              y_to_pixel(q.ycoord()), false, colour);
}

void window::draw_filled_rectangle(const tk::point& p, const tk::point& q, int colour) {
  draw_filled_rectangle(p.xcoord(), p.ycoord(), q.xcoord(), q.ycoord(), colour);
}

void window::draw_filled_rectangle(double x0, double y0, double x1, double y1, int colour) {
  current_backend().rectangle(*this, x_to_pixel(x0), y_to_pixel(y0), x_to_pixel(x1), y_to_pixel(y1), true, colour);
}

void window::draw_text(double x, double y, const tk::string& s, int colour) {
  current_backend().text(*this, x_to_pixel(x), y_to_pixel(y), s.str(), colour);
}

double window::text_box(double x0, double x1, double y, const tk::string& s, bool draw) {
  int below = current_backend().text_box(*this, x_to_pixel(x0), x_to_pixel(x1), y_to_pixel(y), s.str(), draw);
  return pixel_to_y(below);
}

void window::set_font(const tk::string& name) { current_backend().set_font(*this, name.str()); }

int window::set_cursor(int kind) { return current_backend().set_cursor(*this, kind); }

void window::draw_pixmap(double x, double y, const char* const* xpm) {
  current_backend().pixmap(*this, x_to_pixel(x), y_to_pixel(y), xpm);
}

void window::start_pixel_plotting() { start_buffering(); }
void window::plot_pixel(int px, int py, int colour) { current_backend().pixel(*this, px, py, colour); }
void window::stop_pixel_plotting() {
  flush_buffer();
  stop_buffering();
}

// ---- buffering

void window::start_buffering() {
  if (buffer_depth++ == 0) current_backend().start_buffering(*this);
}

void window::flush_buffer() {
  if (buffer_depth <= 1) current_backend().flush(*this, 0, 0, pixel_width - 1, pixel_height - 1);
}

void window::flush_buffer(double x0, double y0, double x1, double y1) {
  if (buffer_depth > 1) return;
  int px0 = x_to_pixel(x0), px1 = x_to_pixel(x1), py0 = y_to_pixel(y0), py1 = y_to_pixel(y1);
  current_backend().flush(*this, std::min(px0, px1), std::min(py0, py1), std::max(px0, px1), std::max(py0, py1));
}

void window::stop_buffering() {
  if (buffer_depth == 0) return;
  if (--buffer_depth == 0) current_backend().stop_buffering(*this);
}

// ---- handlers

void window::set_redraw(redraw_handler h) {
  on_redraw = h;
  on_redraw_part = nullptr;
}

void window::set_redraw(redraw_part_handler h) {
  on_redraw_part = h;
  on_redraw = nullptr;
}

void window::request_redraw() {
  if (on_redraw)
    on_redraw(this);
  else if (on_redraw_part)
    on_redraw_part(this, 0, 0, pixel_width - 1, pixel_height - 1);
}

void window::request_redraw(int px0, int py0, int px1, int py1) {
  if (on_redraw_part)
    on_redraw_part(this, px0, py0, px1, py1);
  else if (on_redraw)
    on_redraw(this);
}

void window::user_deleted() {
  if (on_delete) on_delete(this);
}

void window::show_coordinates(int px, int py) {
  if (on_coordinates) on_coordinates(this, pixel_to_x(px), pixel_to_y(py));
}

void show_mouse_position(window* w, double x, double y) {
  if (!w) return;
  w->coordinate_text = tk::string("%8.2f %8.2f", x, y).str();
}

// ---- events

int window::read_event(int& value, double& x, double& y) {
  window* w = this;
  int px = 0, py = 0;
  int kind = current_backend().wait_event(this, w, value, px, py);
  x = pixel_to_x(px);
  y = pixel_to_y(py);
  return kind;
}

int read_event(window*& w, int& value, double& x, double& y) {
  int px = 0, py = 0;
  w = nullptr;
  int kind = current_backend().wait_event(nullptr, w, value, px, py);
  x = w ? w->pixel_to_x(px) : px;
  y = w ? w->pixel_to_y(py) : py;
  return kind;
}

int window::read_mouse(tk::point& p) {
  int px = 0, py = 0;
  int b = current_backend().wait_mouse(*this, px, py);
  p = tk::point(pixel_to_x(px), pixel_to_y(py));
  return b;
}

int window::get_mouse(tk::point& p) {
  int px = 0, py = 0;
  int b = current_backend().poll_mouse(*this, px, py);
  p = tk::point(pixel_to_x(px), pixel_to_y(py));
  return b;
}

// ---- messages

void window::acknowledge(const tk::string& s) {
  panel p("");
  p.kind = panel::message_box;
  p.box_text = s.str();
  p.text_item("");
  p.text_item(tk::string("\\bf\\blue ") + s);
  p.fbutton("OK", 0);
  p.open();
}

bool window::confirm(const tk::string& s) {
  panel p("");
  p.kind = panel::question_box;
  p.box_text = s.str();
  p.text_item("");
  p.text_item(tk::string("\\bf\\blue ") + s);
  p.button("YES", 1);
  p.button("NO", 0);
  return p.open() == 1;
}

// ---- status line

void window::open_status_window(int bg, int h) {
  status_is_open = true;
  current_backend().open_status(*this, bg, h);
}

void window::set_status_string(const tk::string& s) {
  if (!status_is_open) return;
  current_backend().set_status(*this, s.str());
}

void window::close_status_window() {
  if (!status_is_open) return;
  status_is_open = false;
  current_backend().close_status(*this);
}

}  // namespace tk
