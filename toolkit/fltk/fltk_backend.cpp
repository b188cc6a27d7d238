#include "toolkit/fltk/fltk_backend.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>
#include <FL/x.H>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdlib>

#include "toolkit/fltk/fltk_canvas.h"
#include "toolkit/fltk/fltk_event_queue.h"
#include "toolkit/fltk/fltk_native_window.h"
#include "toolkit/fltk/fltk_panel_dialog.h"
#include "toolkit/fltk/fltk_style.h"
#include "toolkit/fltk/fltk_text.h"
#include "toolkit/panel.h"
#include "toolkit/window.h"

namespace tk {

namespace {

fltk_canvas& area_of(window& w) { return fltk_native_window::of(w).area(); }

bool shown(const window& w) {
  fltk_native_window* n = fltk_native_window::find(w);
  return n && n->shell().shown();
}

// The searches poll the mouse between candidates; looking at the display more often than
// this only costs time.
bool time_to_check() {
  static std::chrono::steady_clock::time_point last;
  auto now = std::chrono::steady_clock::now();
  if (now - last < std::chrono::milliseconds(20)) return false;
  last = now;
  return true;
}

int take(const fltk_event& e, int& value, int& px, int& py) {
  value = e.value;
  px = e.x;
  py = e.y;
  return e.kind;
}

}  // namespace

fltk_backend::fltk_backend() {
  Fl::visual(FL_DOUBLE | FL_RGB);
  fl_open_display();
}

fltk_backend::~fltk_backend() {}

// The FLTK window is made when the window is first shown, drawn into or given a bar.
void fltk_backend::create(window&) {}

void fltk_backend::display(window& w, int x, int y, window* parent) {
  Fl_Double_Window& shell = fltk_native_window::of(w).shell();
  fltk_native_window* over = parent ? fltk_native_window::find(*parent) : nullptr;
  int px, py;
  if (over && over->shell().shown()) {
    Fl_Double_Window& p = over->shell();
    px = fltk_place(x, shell.w(), p.x(), p.w());
    py = fltk_place(y, shell.h(), p.y(), p.h());
  } else {
    px = fltk_place(x, shell.w(), Fl::x(), Fl::w());
    py = fltk_place(y, shell.h(), Fl::y(), Fl::h());
  }
  shell.position(px, py);
  shell.show();
  // Without a window manager FLTK keeps room for a title bar it assumes (20 pixels down, one
  // to the right) but still reports the place asked for, so a plain position() would not
  // move it. A nudge and back moves the window where it was meant to be; a window manager
  // adds its decorations around that place.
  shell.position(px + 1, py + 1);
  shell.position(px, py);
  Fl::flush();
}

void fltk_backend::close(window& w) {
  fltk_native_window* n = fltk_native_window::find(w);
  if (!n) return;
  n->shell().hide();
  Fl::flush();
}

void fltk_backend::destroy(window& w) { fltk_native_window::release(w); }

void fltk_backend::set_title(window& w, const std::string& title) {
  if (fltk_native_window* n = fltk_native_window::find(w)) n->shell().copy_label(title.c_str());
}

int fltk_backend::screen_width() { return Fl::w(); }
int fltk_backend::screen_height() { return Fl::h(); }

void fltk_backend::build_menu_bar(window& w) { fltk_native_window::of(w).build_menu_bar(); }

void fltk_backend::set_items_enabled(window& w, bool enabled) {
  if (fltk_native_window* n = fltk_native_window::find(w)) n->enable_menu_bar(enabled);
}

void fltk_backend::clear(window& w, int colour) {
  fltk_canvas& area = area_of(w);
  const int width = area.w(), height = area.h();
  area.paint(
      [&]() {
        fl_color(fltk_colour(colour));
        fl_rectf(0, 0, width, height);
      },
      0, 0, width - 1, height - 1);
}

void fltk_backend::pixel(window& w, int x, int y, int colour) { area_of(w).plot(x, y, colour); }

void fltk_backend::line(window& w, int x1, int y1, int x2, int y2, int colour) {
  area_of(w).paint(
      [&]() {
        fl_color(fltk_colour(colour));
        fl_line(x1, y1, x2, y2);
      },
      x1, y1, x2, y2);
}

void fltk_backend::disc(window& w, int x, int y, int radius, int colour) {
  area_of(w).paint(
      [&]() {
        fl_color(fltk_colour(colour));
        fl_pie(x - radius, y - radius, 2 * radius + 1, 2 * radius + 1, 0, 360);
      },
      x - radius, y - radius, x + radius, y + radius);
}

void fltk_backend::polygon(window& w, const int* xy, int n, bool filled, int colour) {
  if (n <= 0) return;
  int x0 = INT_MAX, y0 = INT_MAX, x1 = INT_MIN, y1 = INT_MIN;
  for (int i = 0; i < n; ++i) {
    x0 = std::min(x0, xy[2 * i]);
    x1 = std::max(x1, xy[2 * i]);
    y0 = std::min(y0, xy[2 * i + 1]);
    y1 = std::max(y1, xy[2 * i + 1]);
  }
  area_of(w).paint(
      [&]() {
        fl_color(fltk_colour(colour));
        // A filled polygon gets its outline as well, so that it covers the same pixels.
        if (filled) {
          fl_begin_complex_polygon();
          for (int i = 0; i < n; ++i) fl_vertex(xy[2 * i], xy[2 * i + 1]);
          fl_end_complex_polygon();
        }
        fl_begin_loop();
        for (int i = 0; i < n; ++i) fl_vertex(xy[2 * i], xy[2 * i + 1]);
        fl_end_loop();
      },
      x0, y0, x1, y1);
}

void fltk_backend::rectangle(window& w, int x0, int y0, int x1, int y1, bool filled, int colour) {
  const int left = std::min(x0, x1), top = std::min(y0, y1);
  const int width = std::abs(x1 - x0) + 1, height = std::abs(y1 - y0) + 1;
  area_of(w).paint(
      [&]() {
        fl_color(fltk_colour(colour));
        if (filled)
          fl_rectf(left, top, width, height);
        else
          fl_rect(left, top, width, height);
      },
      x0, y0, x1, y1);
}

void fltk_backend::text(window& w, int x, int y, const std::string& s, int colour) { area_of(w).text(x, y, s, colour); }

int fltk_backend::text_box(window& w, int x0, int x1, int y, const std::string& formatted, bool draw) {
  fltk_text text(formatted);
  const int below = text.layout(x0, x1, y, false);
  if (draw) {
    fltk_canvas& area = area_of(w);
    area.paint([&]() { text.layout(x0, x1, y, true); }, std::min(x0, x1), y, area.w() - 1, below);
  }
  return below;
}

void fltk_backend::pixmap(window& w, int x, int y, const char* const* xpm) {
  int width = 0, height = 0;
  if (!xpm || !fl_measure_pixmap(xpm, width, height)) return;
  area_of(w).paint([&]() { fl_draw_pixmap(xpm, x, y); }, x, y, x + width - 1, y + height - 1);
}

void fltk_backend::set_font(window& w, const std::string& name) { area_of(w).set_font(name); }

int fltk_backend::set_cursor(window& w, int kind) { return fltk_native_window::of(w).set_cursor(kind); }

void fltk_backend::start_buffering(window& w) { area_of(w).set_buffering(true); }

void fltk_backend::flush(window& w, int x0, int y0, int x1, int y1) { area_of(w).show_part(x0, y0, x1, y1); }

void fltk_backend::stop_buffering(window& w) { area_of(w).set_buffering(false); }

int fltk_backend::run_panel(panel& p, int x, int y, window* parent) {
  fltk_panel_dialog dialog(p);
  return dialog.run(x, y, parent);
}

void fltk_backend::refresh_item(panel& p, int item) {
  if (fltk_panel_dialog* dialog = fltk_panel_dialog::open_for(p)) dialog->refresh(item);
}

// Menu callbacks run inside Fl::wait; their entry comes back as a panel press event. Mouse
// motion is no event here: it only moves the coordinate display.
int fltk_backend::wait_event(window* restricted, window*& w, int& value, int& px, int& py) {
  fltk_event_queue& queue = fltk_event_queue::instance();
  fltk_event e;
  w = restricted;
  value = px = py = 0;
  if (restricted) {
    if (!queue.pop_for(restricted, e)) {
      if (shown(*restricted)) Fl::wait();
      if (!queue.pop_for(restricted, e)) return no_event;
    }
    return take(e, value, px, py);
  }
  while (!queue.pop(e)) {
    // With no window left on the screen no event can come: the program is over.
    if (!Fl::first_window()) std::exit(0);
    Fl::wait();
  }
  w = e.source;
  return take(e, value, px, py);
}

// Clicks made before the wait began do not count: the planner answers what is asked now.
int fltk_backend::wait_mouse(window& w, int& px, int& py) {
  fltk_event_queue& queue = fltk_event_queue::instance();
  queue.forget(&w);
  fltk_event e;
  px = py = 0;
  while (!queue.pop_press(&w, e)) {
    if (!shown(w)) return 0;
    Fl::wait();
  }
  px = e.x;
  py = e.y;
  return e.value;
}

int fltk_backend::poll_mouse(window& w, int& px, int& py) {
  if (time_to_check()) Fl::check();
  fltk_event e;
  px = py = 0;
  if (!fltk_event_queue::instance().pop_press(&w, e)) return 0;
  px = e.x;
  py = e.y;
  return e.value;
}

void fltk_backend::open_status(window& w, int background, int height) {
  fltk_native_window::of(w).open_status(background, height);
}

void fltk_backend::set_status(window& w, const std::string& formatted) {
  fltk_native_window::of(w).set_status(formatted);
}

void fltk_backend::close_status(window& w) { fltk_native_window::of(w).close_status(); }

}  // namespace tk
