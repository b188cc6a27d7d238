#include "toolkit/fltk/fltk_native_window.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Menu_Bar.H>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "toolkit/fltk/fltk_canvas.h"
#include "toolkit/fltk/fltk_event_queue.h"
#include "toolkit/fltk/fltk_formatted_box.h"
#include "toolkit/fltk/fltk_style.h"
#include "toolkit/menu.h"
#include "toolkit/window.h"

namespace tk {

namespace {

const int coordinates_width = 150;

// The native windows still alive: a close handler may delete its own window.
std::set<const fltk_native_window*>& alive() {
  static std::set<const fltk_native_window*> windows;
  return windows;
}

}  // namespace

fltk_native_window& fltk_native_window::of(window& w) {
  fltk_native_window* n = find(w);
  if (n && w.has_menu_bar() && !n->bar) {
    release(w);
    n = nullptr;
  }
  if (!n) {
    n = new fltk_native_window(w);
    w.native = n;
  }
  return *n;
}

fltk_native_window* fltk_native_window::find(const window& w) { return static_cast<fltk_native_window*>(w.native); }

void fltk_native_window::release(window& w) {
  delete find(w);
  w.native = nullptr;
}

fltk_native_window::fltk_native_window(window& w) : front(w) {
  const int width = std::max(1, w.width()), height = std::max(1, w.height());
  const int top = w.has_menu_bar() ? bar_height : 0;
  shell_window = new Fl_Double_Window(width, height + top);
  shell_window->copy_label(w.title().c_str());
  shell_window->begin();
  if (w.has_menu_bar()) {
    bar = new Fl_Menu_Bar(0, 0, width - coordinates_width, bar_height);
    coordinates = new Fl_Box(width - coordinates_width, 0, coordinates_width, bar_height);
    coordinates->box(FL_UP_BOX);
    coordinates->labelfont(FL_COURIER);
    coordinates->labelsize(12);
  }
  canvas = new fltk_canvas(0, top, width, height, w);
  canvas->set_coordinate_box(coordinates);
  status = new fltk_formatted_box(0, top + height - 17, width, 17, fltk_colour(status_grey));
  status->hide();
  shell_window->end();
  shell_window->callback(close_pressed, this);
  alive().insert(this);
}

// FLTK deletes the window later, outside any callback that may still be running on it.
fltk_native_window::~fltk_native_window() {
  alive().erase(this);
  fltk_event_queue::instance().forget(&front);
  shell_window->hide();
  Fl::delete_widget(shell_window);
}

void fltk_native_window::build_menu_bar() {
  if (!bar) return;
  bar->clear();
  entries.clear();
  add_entries("", front);
  if (coordinates && !front.wants_coordinates()) coordinates->hide();
  bar->redraw();
}

// The buttons of a window or menu as entries of the bar; a separator sets the divider
// under the entry before it.
void fltk_native_window::add_entries(const std::string& prefix, const window& holder) {
  const std::vector<panel_button>& buttons = holder.buttons();
  int last = -1;
  for (std::size_t i = 0; i < buttons.size(); ++i) {
    const panel_button& b = buttons[i];
    if (b.separator) {
      if (last >= 0) bar->mode(last, bar->mode(last) | FL_MENU_DIVIDER);
      continue;
    }
    std::string path = prefix + fltk_menu_step(fltk_literal_label(b.label));
    if (b.submenu) {
      last = bar->add(path.c_str(), 0, nullptr, nullptr, FL_SUBMENU);
      add_entries(path + "/", *b.submenu);
    } else {
      entries.push_back({&front, &holder, i});
      last = bar->add(path.c_str(), 0, entry_chosen, &entries.back());
    }
  }
}

// Runs the entry's command, then tells the event wait which entry it was.
void fltk_native_window::entry_chosen(Fl_Widget*, void* data) {
  const menu_entry& entry = *static_cast<menu_entry*>(data);
  const panel_button& b = entry.holder->buttons()[entry.index];
  fltk_event e;
  e.source = entry.front;
  e.kind = panel_press_event;
  e.value = b.value;
  action_handler action = b.action;
  if (action) action();
  fltk_event_queue::instance().push(e);
}

// The window manager's close button: the program's handler decides; without one the main
// window ends the program and any other window is closed. Escape closes nothing.
void fltk_native_window::close_pressed(Fl_Widget*, void* data) {
  if (Fl::event() == FL_SHORTCUT && Fl::event_key() == FL_Escape) return;
  fltk_native_window* n = static_cast<fltk_native_window*>(data);
  window& w = n->front;
  fltk_event e;
  e.source = &w;
  e.kind = destroy_event;
  fltk_event_queue::instance().push(e);
  w.user_deleted();
  if (!alive().count(n) || !n->shell_window->shown()) return;
  if (w.has_menu_bar()) std::exit(0);
  w.close();
}

void fltk_native_window::enable_menu_bar(bool on) {
  if (!bar) return;
  // FLTK keeps a deactivated bar's labels black; grey them so that the planner sees it is inert.
  if (on)
    bar->activate();
  else
    bar->deactivate();
  bar->textcolor(on ? FL_BLACK : fl_inactive(FL_BLACK));
  bar->redraw();
  if (shell_window->shown()) Fl::flush();
}

void fltk_native_window::open_status(int background, int height) {
  const int h = std::max(1, std::min(height, canvas->h()));
  status->resize(0, canvas->y() + canvas->h() - h, canvas->w(), h);
  status->color(fltk_colour(background));
  status->show();
  status->redraw();
  canvas->cover_bottom(h);
}

void fltk_native_window::set_status(const std::string& formatted) {
  status->text(formatted);
  if (shell_window->shown()) Fl::flush();
}

void fltk_native_window::close_status() {
  status->hide();
  canvas->cover_bottom(0);
  if (shell_window->shown()) Fl::flush();
}

int fltk_native_window::set_cursor(int kind) {
  int old = cursor;
  cursor = kind;
  shell_window->cursor(static_cast<Fl_Cursor>(kind));
  return old;
}

}  // namespace tk
