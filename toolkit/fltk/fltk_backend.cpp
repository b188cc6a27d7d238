#include "toolkit/fltk/fltk_backend.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Float_Input.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Input_Choice.H>
#include <FL/Fl_Int_Input.H>
#include <FL/Fl_Menu_Bar.H>
#include <FL/Fl_Pixmap.H>
#include <FL/Fl_Return_Button.H>
#include <FL/fl_draw.H>
#include <FL/x.H>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>
#include <vector>

#include "toolkit/formatted_text.h"
#include "toolkit/menu.h"
#include "toolkit/panel.h"
#include "toolkit/window.h"

namespace tk {

namespace {

const int bar_height = 25;
const int coordinates_width = 150;

Fl_Color fl_colour(int index) {
  int r, g, b;
  color(index).get_rgb(r, g, b);
  return fl_rgb_color(static_cast<uchar>(r), static_cast<uchar>(g), static_cast<uchar>(b));
}

Fl_Font font_of(const text_run& run) {
  if (run.fixed) return run.bold ? FL_COURIER_BOLD : FL_COURIER;
  if (run.bold && run.italic) return FL_HELVETICA_BOLD_ITALIC;
  if (run.bold) return FL_HELVETICA_BOLD;
  if (run.italic) return FL_HELVETICA_ITALIC;
  return FL_HELVETICA;
}

// Draws formatted text from (x, y) downwards, line by line; returns the y below it.
int draw_formatted(const std::string& formatted, int x, int y, bool draw, int size = 13) {
  int line_height = size + 5;
  int cx = x;
  y += line_height;
  bool first = true;
  for (const text_run& run : parse_formatted_text(formatted)) {
    if (run.line_break && !first) {
      cx = x;
      y += line_height;
    }
    first = false;
    fl_font(font_of(run), size);
    if (draw) {
      fl_color(fl_colour(run.colour));
      fl_draw(run.text.c_str(), cx, y - 4);
    }
    cx += static_cast<int>(fl_width(run.text.c_str()));
  }
  return y;
}

// A line of formatted text as a widget: panel text items and the status line.
class formatted_box : public Fl_Box {
 public:
  formatted_box(int x, int y, int w, int h, Fl_Color background) : Fl_Box(x, y, w, h), bg(background) {}
  std::string formatted;

 protected:
  void draw() override {
    fl_push_clip(x(), y(), w(), h());
    fl_color(bg);
    fl_rectf(x(), y(), w(), h());
    draw_formatted(formatted, x() + 4, y() - 2, true);
    fl_pop_clip();
  }

 private:
  Fl_Color bg;
};

// Lines and widest line of a formatted text, in pixels.
void measure_formatted(const std::string& formatted, int& lines, int& widest) {
  lines = 1;
  widest = 0;
  int current = 0;
  bool first = true;
  for (const text_run& run : parse_formatted_text(formatted)) {
    if (run.line_break && !first) {
      ++lines;
      current = 0;
    }
    first = false;
    fl_font(font_of(run), 13);
    current += static_cast<int>(fl_width(run.text.c_str()));
    widest = std::max(widest, current);
  }
}

struct native_window;

// The drawing area: shows the backing picture and reports clicks and the pointer.
class canvas : public Fl_Widget {
 public:
  canvas(int x, int y, int w, int h, native_window& n) : Fl_Widget(x, y, w, h), owner(n) {}

 protected:
  void draw() override;
  int handle(int event) override;

 private:
  native_window& owner;
};

struct native_window {
  window* front = nullptr;
  std::unique_ptr<Fl_Double_Window> win;
  Fl_Menu_Bar* bar = nullptr;
  Fl_Box* coordinates = nullptr;
  canvas* area = nullptr;
  formatted_box* status = nullptr;
  Fl_Offscreen picture = 0;
  int width = 0, height = 0;
  bool buffering = false;
  bool push_seen = false;
  int push_button = 0, push_x = 0, push_y = 0;
  std::string coordinate_label;
  ~native_window() {
    if (picture) fl_delete_offscreen(picture);
  }
};

void canvas::draw() {
  if (owner.picture)
    fl_copy_offscreen(x(), y(), w(), h(), owner.picture, 0, 0);
  else {
    fl_color(FL_WHITE);
    fl_rectf(x(), y(), w(), h());
  }
}

int canvas::handle(int event) {
  switch (event) {
    case FL_PUSH:
      owner.push_seen = true;
      owner.push_button = Fl::event_button();
      owner.push_x = Fl::event_x() - x();
      owner.push_y = Fl::event_y() - y();
      return 1;
    case FL_ENTER:
      return 1;
    case FL_MOVE:
      if (owner.front && owner.front->wants_coordinates() && owner.coordinates) {
        owner.front->show_coordinates(Fl::event_x() - x(), Fl::event_y() - y());
        owner.coordinate_label = owner.front->coordinate_text;
        owner.coordinates->label(owner.coordinate_label.c_str());
        owner.coordinates->redraw();
      }
      return 1;
    default:
      return Fl_Widget::handle(event);
  }
}

native_window& native(window& w) {
  if (!w.native) {
    native_window* n = new native_window;
    n->front = &w;
    w.native = n;
  }
  return *static_cast<native_window*>(w.native);
}

void close_main_window(Fl_Widget*, void* data) {
  window* w = static_cast<window*>(data);
  w->user_deleted();
  if (w->has_menu_bar()) std::exit(0);
  w->close();
}

// Builds the FLTK window of a plain window the first time it is displayed.
void build_native(window& w) {
  native_window& n = native(w);
  if (n.win) return;
  n.width = w.width();
  n.height = w.height();
  int top = w.has_menu_bar() ? bar_height : 0;
  n.win.reset(new Fl_Double_Window(n.width, n.height + top, w.title().c_str()));
  n.win->begin();
  if (w.has_menu_bar()) {
    n.bar = new Fl_Menu_Bar(0, 0, n.width - coordinates_width, bar_height);
    n.coordinates = new Fl_Box(n.width - coordinates_width, 0, coordinates_width, bar_height);
    n.coordinates->box(FL_UP_BOX);
    n.coordinates->labelfont(FL_COURIER);
    n.coordinates->labelsize(12);
  }
  n.area = new canvas(0, top, n.width, n.height, n);
  n.status = new formatted_box(0, top + n.height - 17, n.width, 17, fl_colour(status_grey));
  n.status->hide();
  n.win->end();
  n.win->callback(close_main_window, &w);
}

// Runs a drawing step on the window's backing picture and marks the screen for a copy.
// The offscreen calls of FLTK must open and close in one scope.
template <class Draw>
void draw_into(window& w, Draw draw) {
  native_window& n = native(w);
  if (!n.win || !n.win->shown()) return;
  if (!n.picture) {
    n.win->make_current();
    n.picture = fl_create_offscreen(n.width, n.height);
    fl_begin_offscreen(n.picture);
    fl_color(fl_colour(w.background_colour()));
    fl_rectf(0, 0, n.width, n.height);
    fl_end_offscreen();
  }
  fl_begin_offscreen(n.picture);
  draw();
  fl_end_offscreen();
  if (!n.buffering && n.area) n.area->redraw();
}

std::string menu_escaped(const std::string& label) {
  std::string r;
  for (char c : label) {
    if (c == '/' || c == '\\' || c == '&') r += '\\';
    r += c;
  }
  return r;
}

void menu_action(Fl_Widget*, void* data) {
  const panel_button* b = static_cast<const panel_button*>(data);
  if (b->action) b->action();
}

void add_entries(Fl_Menu_Bar* bar, const std::string& prefix, const std::vector<panel_button>& buttons) {
  int last = -1;
  for (const panel_button& b : buttons) {
    if (b.separator) {
      if (last >= 0) bar->mode(last, bar->mode(last) | FL_MENU_DIVIDER);
      continue;
    }
    std::string path = prefix + menu_escaped(b.label);
    if (b.submenu) {
      last = bar->add(path.c_str(), 0, nullptr, nullptr, FL_SUBMENU);
      add_entries(bar, path + "/", b.submenu->buttons());
    } else {
      last = bar->add(path.c_str(), 0, menu_action, const_cast<panel_button*>(&b));
    }
  }
}

// The widgets of the panel that is open, for refreshing its choices.
struct open_panel_widgets {
  panel* front = nullptr;
  std::vector<Fl_Widget*> widgets;
};
std::vector<open_panel_widgets*> open_panels;

void fill_choices(Fl_Input_Choice* input, const panel_item& item) {
  input->clear();
  for (const std::string& c : item.choices) input->add(menu_escaped(c).c_str());
  input->value(item.value.c_str());
}

struct button_press {
  int* pressed;
  int index;
  Fl_Window* dialog;
};

void button_pressed(Fl_Widget*, void* data) {
  button_press* p = static_cast<button_press*>(data);
  *p->pressed = p->index;
  p->dialog->hide();
}

struct change_call {
  panel_item* item;
};

void item_changed(Fl_Widget* widget, void* data) {
  panel_item* item = static_cast<change_call*>(data)->item;
  Fl_Input_Choice* input = static_cast<Fl_Input_Choice*>(widget);
  item->value = input->value() ? input->value() : "";
  if (item->on_change) {
    std::vector<char> text(item->value.begin(), item->value.end());
    text.push_back('\0');
    item->on_change(text.data());
  }
}

int place(int wanted, int size, int screen) {
  if (wanted == window::min) return 0;
  if (wanted == window::max) return screen - size;
  if (wanted == window::center) return (screen - size) / 2;
  return wanted;
}

}  // namespace

fltk_backend::fltk_backend() {
  fl_open_display();
  Fl::visual(FL_DOUBLE | FL_INDEX);
}

fltk_backend::~fltk_backend() {}

void fltk_backend::create(window&) {}

void fltk_backend::display(window& w, int x, int y, window*) {
  build_native(w);
  native_window& n = native(w);
  n.win->position(place(x, n.win->w(), Fl::w()), place(y, n.win->h(), Fl::h()));
  n.win->show();
  Fl::flush();
}

void fltk_backend::close(window& w) {
  native_window& n = native(w);
  if (n.win) n.win->hide();
}

void fltk_backend::destroy(window& w) {
  if (!w.native) return;
  delete static_cast<native_window*>(w.native);
  w.native = nullptr;
}

void fltk_backend::set_title(window& w, const std::string& title) {
  native_window& n = native(w);
  if (n.win) n.win->copy_label(title.c_str());
}

int fltk_backend::screen_width() { return Fl::w(); }
int fltk_backend::screen_height() { return Fl::h(); }

void fltk_backend::build_menu_bar(window& w) {
  build_native(w);
  native_window& n = native(w);
  if (!n.bar) return;
  n.bar->clear();
  add_entries(n.bar, "", w.buttons());
}

void fltk_backend::set_items_enabled(window& w, bool enabled) {
  native_window& n = native(w);
  if (!n.bar) return;
  if (enabled)
    n.bar->activate();
  else
    n.bar->deactivate();
  n.bar->redraw();
}

void fltk_backend::clear(window& w, int colour) {
  draw_into(w, [&]() {
  native_window& n = native(w);
  fl_color(fl_colour(colour));
  fl_rectf(0, 0, n.width, n.height);
  });
}

void fltk_backend::pixel(window& w, int x, int y, int colour) {
  draw_into(w, [&]() {
  fl_color(fl_colour(colour));
  fl_point(x, y);
  });
}

void fltk_backend::line(window& w, int x1, int y1, int x2, int y2, int colour) {
  draw_into(w, [&]() {
  fl_color(fl_colour(colour));
  fl_line(x1, y1, x2, y2);
  });
}

void fltk_backend::disc(window& w, int x, int y, int radius, int colour) {
  draw_into(w, [&]() {
  fl_color(fl_colour(colour));
  fl_pie(x - radius, y - radius, 2 * radius + 1, 2 * radius + 1, 0, 360);
  });
}

void fltk_backend::polygon(window& w, const int* xy, int n, bool filled, int colour) {
  draw_into(w, [&]() {
  fl_color(fl_colour(colour));
  if (filled)
    fl_begin_complex_polygon();
  else
    fl_begin_loop();
  for (int i = 0; i < n; ++i) fl_vertex(xy[2 * i], xy[2 * i + 1]);
  if (filled)
    fl_end_complex_polygon();
  else
    fl_end_loop();
  });
}

void fltk_backend::rectangle(window& w, int x0, int y0, int x1, int y1, bool filled, int colour) {
  draw_into(w, [&]() {
  fl_color(fl_colour(colour));
  int left = std::min(x0, x1), top = std::min(y0, y1);
  int width = std::abs(x1 - x0) + 1, height = std::abs(y1 - y0) + 1;
  if (filled)
    fl_rectf(left, top, width, height);
  else
    fl_rect(left, top, width, height);
  });
}

void fltk_backend::text(window& w, int x, int y, const std::string& s, int colour) {
  draw_into(w, [&]() {
  fl_font(FL_HELVETICA, 12);
  fl_color(fl_colour(colour));
  fl_draw(s.c_str(), x, y);
  });
}

int fltk_backend::text_box(window& w, int x0, int, int y, const std::string& formatted, bool draw) {
  if (!draw) {
    fl_font(FL_HELVETICA, 13);
    return draw_formatted(formatted, x0, y, false);
  }
  int below = y;
  draw_into(w, [&]() { below = draw_formatted(formatted, x0, y, true); });
  return below;
}

void fltk_backend::pixmap(window& w, int x, int y, const char* const* xpm) {
  draw_into(w, [&]() {
  Fl_Pixmap picture(xpm);
  picture.draw(x, y);
  });
}

void fltk_backend::set_font(window&, const std::string&) {}

int fltk_backend::set_cursor(window& w, int kind) {
  native_window& n = native(w);
  if (n.win) n.win->cursor(static_cast<Fl_Cursor>(kind));
  return 0;
}

void fltk_backend::start_buffering(window& w) { native(w).buffering = true; }

void fltk_backend::flush(window& w, int, int, int, int) {
  native_window& n = native(w);
  if (n.area) n.area->redraw();
  Fl::flush();
}

void fltk_backend::stop_buffering(window& w) {
  native(w).buffering = false;
  flush(w, 0, 0, 0, 0);
}

int fltk_backend::run_panel(panel& p, int x, int y, window* parent) {
  const int label_width = 170, row = 28, margin = 10;
  int field_width = p.get_item_width();
  int width = margin * 2 + label_width + field_width;
  std::vector<panel_item>& items = p.items();
  int height = margin;
  for (const panel_item& item : items) {
    if (item.kind != panel_item::text) {
      height += row;
      continue;
    }
    int lines = 1, widest = 0;
    measure_formatted(item.value, lines, widest);
    height += 18 * lines;
    width = std::max(width, widest + 2 * margin + 8);
  }
  height += row + 2 * margin;

  Fl_Double_Window dialog(width, height, p.title().c_str());
  dialog.set_modal();
  open_panel_widgets open;
  open.front = &p;
  std::vector<std::unique_ptr<change_call>> calls;
  int at = margin;
  for (panel_item& item : items) {
    Fl_Widget* widget = nullptr;
    int field_x = margin + label_width;
    switch (item.kind) {
      case panel_item::text: {
        int lines = 1, widest = 0;
        measure_formatted(item.value, lines, widest);
        formatted_box* box = new formatted_box(margin, at, width - 2 * margin, 18 * lines, FL_BACKGROUND_COLOR);
        box->formatted = item.value;
        widget = box;
        at += 18 * lines;
        break;
      }
      case panel_item::string_input:
      case panel_item::int_input:
      case panel_item::double_input: {
        Fl_Input* input = item.kind == panel_item::int_input     ? new Fl_Int_Input(field_x, at, field_width, row - 4)
                          : item.kind == panel_item::double_input ? new Fl_Float_Input(field_x, at, field_width, row - 4)
                                                                  : new Fl_Input(field_x, at, field_width, row - 4);
        input->copy_label(item.label.c_str());
        input->value(item.value.c_str());
        widget = input;
        at += row;
        break;
      }
      case panel_item::string_menu: {
        Fl_Input_Choice* input = new Fl_Input_Choice(field_x, at, field_width, row - 4);
        input->copy_label(item.label.c_str());
        fill_choices(input, item);
        if (item.on_change) {
          calls.emplace_back(new change_call{&item});
          input->callback(item_changed, calls.back().get());
          input->when(FL_WHEN_CHANGED);
        }
        widget = input;
        at += row;
        break;
      }
      case panel_item::bool_input: {
        Fl_Check_Button* check = new Fl_Check_Button(field_x, at, field_width, row - 4);
        check->copy_label(item.label.c_str());
        check->align(FL_ALIGN_LEFT);
        check->value(item.value == "1");
        widget = check;
        at += row;
        break;
      }
      case panel_item::choice: {
        Fl_Choice* choice = new Fl_Choice(field_x, at, field_width, row - 4);
        choice->copy_label(item.label.c_str());
        for (const std::string& c : item.choices) choice->add(menu_escaped(c).c_str());
        choice->value(std::atoi(item.value.c_str()));
        widget = choice;
        at += row;
        break;
      }
    }
    open.widgets.push_back(widget);
  }
  int pressed = -1;
  std::vector<std::unique_ptr<button_press>> presses;
  const std::vector<panel_button>& buttons = p.buttons();
  int count = 0;
  for (const panel_button& b : buttons)
    if (!b.separator) ++count;
  int button_width = count ? std::min(100, (width - 2 * margin) / count - 5) : 100;
  int bx = margin, cancel_index = -1;
  for (size_t i = 0; i < buttons.size(); ++i) {
    if (buttons[i].separator) continue;
    Fl_Button* b = buttons[i].is_default ? new Fl_Return_Button(bx, at + margin, button_width, row - 4)
                                         : new Fl_Button(bx, at + margin, button_width, row - 4);
    b->copy_label(buttons[i].label.c_str());
    presses.emplace_back(new button_press{&pressed, static_cast<int>(i), &dialog});
    b->callback(button_pressed, presses.back().get());
    if (buttons[i].label == "Cancel" || cancel_index < 0) cancel_index = static_cast<int>(i);
    bx += button_width + 5;
  }
  dialog.end();
  int px = x, py = y;
  if (parent && parent->native && static_cast<native_window*>(parent->native)->win) {
    Fl_Window* pw = static_cast<native_window*>(parent->native)->win.get();
    px = pw->x() + (pw->w() - width) / 2;
    py = pw->y() + (pw->h() - height) / 2;
  } else {
    px = place(x, width, Fl::w());
    py = place(y, height, Fl::h());
  }
  dialog.position(px, py);
  open_panels.push_back(&open);
  dialog.show();
  while (dialog.shown()) Fl::wait();
  open_panels.pop_back();
  if (pressed < 0) pressed = cancel_index < 0 ? 0 : cancel_index;

  for (size_t k = 0; k < items.size(); ++k) {
    panel_item& item = items[k];
    Fl_Widget* widget = open.widgets[k];
    switch (item.kind) {
      case panel_item::string_input:
      case panel_item::int_input:
      case panel_item::double_input:
        item.value = static_cast<Fl_Input*>(widget)->value();
        break;
      case panel_item::string_menu:
        item.value = static_cast<Fl_Input_Choice*>(widget)->value() ? static_cast<Fl_Input_Choice*>(widget)->value() : "";
        break;
      case panel_item::bool_input:
        item.value = static_cast<Fl_Check_Button*>(widget)->value() ? "1" : "0";
        break;
      case panel_item::choice:
        item.value = std::to_string(static_cast<Fl_Choice*>(widget)->value());
        break;
      case panel_item::text:
        break;
    }
  }
  return pressed;
}

void fltk_backend::refresh_item(panel& p, int item) {
  for (open_panel_widgets* open : open_panels) {
    if (open->front != &p || item < 0 || item >= static_cast<int>(open->widgets.size())) continue;
    panel_item& entry = p.items()[static_cast<size_t>(item)];
    if (entry.kind == panel_item::string_menu) fill_choices(static_cast<Fl_Input_Choice*>(open->widgets[item]), entry);
    if (entry.kind == panel_item::string_input) static_cast<Fl_Input*>(open->widgets[item])->value(entry.value.c_str());
  }
}

int fltk_backend::wait_event(window*, window*& w, int& value, int& px, int& py) {
  value = px = py = 0;
  w = nullptr;
  if (!Fl::first_window()) std::exit(0);
  Fl::wait();
  return 1;
}

int fltk_backend::wait_mouse(window& w, int& px, int& py) {
  native_window& n = native(w);
  n.push_seen = false;
  while (!n.push_seen) {
    if (!Fl::first_window()) std::exit(0);
    Fl::wait();
  }
  n.push_seen = false;
  px = n.push_x;
  py = n.push_y;
  return n.push_button;
}

int fltk_backend::poll_mouse(window& w, int& px, int& py) {
  native_window& n = native(w);
  Fl::check();
  if (!n.push_seen) return 0;
  n.push_seen = false;
  px = n.push_x;
  py = n.push_y;
  return n.push_button;
}

void fltk_backend::open_status(window& w, int, int) {
  native_window& n = native(w);
  if (!n.status) return;
  n.status->show();
  n.status->redraw();
}

void fltk_backend::set_status(window& w, const std::string& formatted) {
  native_window& n = native(w);
  if (!n.status) return;
  n.status->formatted = formatted;
  n.status->redraw();
  Fl::flush();
}

void fltk_backend::close_status(window& w) {
  native_window& n = native(w);
  if (!n.status) return;
  n.status->hide();
  if (n.area) n.area->redraw();
}

}  // namespace tk
