#include "toolkit/fltk/fltk_canvas.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "toolkit/fltk/fltk_style.h"
#include "toolkit/fltk/fltk_event_queue.h"
#include "toolkit/window.h"

namespace tk {

namespace {
// Unbuffered drawing reaches the screen at once, but no more often than this, so that a
// loop of single drawing calls does not spend its time copying pictures.
const std::chrono::milliseconds screen_interval(30);
const size_t most_pending_pixels = 1 << 20;
}  // namespace

fltk_canvas::fltk_canvas(int x, int y, int w, int h, tk::window& f) : Fl_Widget(x, y, w, h), front(f) {
  picture = fl_create_offscreen(w, h);
  fl_begin_offscreen(picture);
  fl_color(fltk_colour(front.background_colour()));
  fl_rectf(0, 0, w, h);
  fl_end_offscreen();
}

fltk_canvas::~fltk_canvas() {
  if (picture) fl_delete_offscreen(picture);
}

void fltk_canvas::paint(const std::function<void()>& draw, int x0, int y0, int x1, int y1) {
  paint_pending();
  fl_begin_offscreen(picture);
  draw();
  fl_end_offscreen();
  show_soon(x0, y0, x1, y1);
}

void fltk_canvas::plot(int x, int y, int colour) {
  if (x < 0 || y < 0 || x >= w() || y >= h()) return;
  pixels.push_back({x, y, fltk_colour(colour)});
  if (pixels.size() >= most_pending_pixels) paint_pending();
  show_soon(x, y, x, y);
}

// Paints the gathered pixels in their order, changing the colour only where it changes.
void fltk_canvas::paint_pending() {
  if (pixels.empty()) return;
  fl_begin_offscreen(picture);
  Fl_Color current = pixels.front().colour;
  fl_color(current);
  for (const pending_pixel& p : pixels) {
    if (p.colour != current) fl_color(current = p.colour);
    fl_point(p.x, p.y);
  }
  fl_end_offscreen();
  pixels.clear();
}

void fltk_canvas::read(int x, int y, int width, int height, unsigned char* rgb) {
  paint_pending();
  fl_begin_offscreen(picture);
  fl_read_image(rgb, x, y, width, height);
  fl_end_offscreen();
}

void fltk_canvas::text(int x, int y, const std::string& s, int colour) {
  fl_font(font, font_size);
  int width = static_cast<int>(fl_width(s.c_str()) + 0.5), height = fl_height();
  paint(
      [&]() {
        fl_font(font, font_size);
        fl_color(fltk_colour(front.background_colour()));
        fl_rectf(x, y, width, height);
        fl_color(fltk_colour(colour));
        fl_draw(s.c_str(), x, y + height - fl_descent());
      },
      x, y, x + width, y + height);
}

// Names as "T12": a letter for the face (T or R text, B bold, I italic, F fixed width) and
// the size in points; what is not understood keeps the present choice.
void fltk_canvas::set_font(const std::string& name) {
  if (name.empty()) return;
  switch (std::toupper(static_cast<unsigned char>(name[0]))) {
    case 'T':
    case 'R':
      font = FL_HELVETICA;
      break;
    case 'B':
      font = FL_HELVETICA_BOLD;
      break;
    case 'I':
      font = FL_HELVETICA_ITALIC;
      break;
    case 'F':
      font = FL_COURIER;
      break;
    default:
      return;
  }
  int size = std::atoi(name.c_str() + 1);
  if (size >= 6 && size <= 72) font_size = size;
}

void fltk_canvas::set_buffering(bool on) {
  buffering = on;
  if (!on) show_part(0, 0, w() - 1, h() - 1);
}

void fltk_canvas::show_part(int x0, int y0, int x1, int y1) {
  paint_pending();
  int left = std::max(0, std::min(x0, x1)), top = std::max(0, std::min(y0, y1));
  int right = std::min(w() - 1, std::max(x0, x1)), bottom = std::min(h() - 1, std::max(y0, y1));
  if (right < left || bottom < top) return;
  damage(FL_DAMAGE_USER1, x() + left, y() + top, right - left + 1, bottom - top + 1);
  Fl::flush();
  last_shown = std::chrono::steady_clock::now();
}

void fltk_canvas::show_soon(int x0, int y0, int x1, int y1) {
  if (buffering) return;
  int left = std::max(0, std::min(x0, x1) - 1), top = std::max(0, std::min(y0, y1) - 1);
  int right = std::min(w() - 1, std::max(x0, x1) + 1), bottom = std::min(h() - 1, std::max(y0, y1) + 1);
  if (right >= left && bottom >= top)
    damage(FL_DAMAGE_USER1, x() + left, y() + top, right - left + 1, bottom - top + 1);
  if (std::chrono::steady_clock::now() - last_shown >= screen_interval) {
    paint_pending();
    Fl::flush();
    last_shown = std::chrono::steady_clock::now();
  }
}

void fltk_canvas::cover_bottom(int rows) {
  covered = std::max(0, std::min(rows, h()));
  redraw();
}

void fltk_canvas::draw() {
  paint_pending();
  if (h() > covered) fl_copy_offscreen(x(), y(), w(), h() - covered, picture, 0, 0);
}

void fltk_canvas::queue(int kind, int value) {
  fltk_event e;
  e.source = &front;
  e.kind = kind;
  e.value = value;
  e.x = Fl::event_x() - x();
  e.y = Fl::event_y() - y();
  fltk_event_queue::instance().push(e);
}

void fltk_canvas::pointer_moved() {
  if (!front.wants_coordinates()) return;
  front.show_coordinates(Fl::event_x() - x(), Fl::event_y() - y());
  if (!coordinates || front.coordinate_text == coordinate_text) return;
  coordinate_text = front.coordinate_text;
  coordinates->label(coordinate_text.c_str());
  coordinates->redraw();
}

int fltk_canvas::handle(int event) {
  switch (event) {
    case FL_PUSH:
      if (Fl::focus() != this) Fl::focus(this);
      queue(button_press_event, Fl::event_button());
      return 1;
    case FL_RELEASE:
      queue(button_release_event, Fl::event_button());
      return 1;
    case FL_ENTER:
    case FL_MOVE:
    case FL_DRAG:
      pointer_moved();
      return 1;
    case FL_FOCUS:
    case FL_UNFOCUS:
      return 1;
    case FL_KEYDOWN:
      queue(key_press_event, Fl::event_key());
      return 1;
    case FL_KEYUP:
      return 1;
    default:
      return Fl_Widget::handle(event);
  }
}

}  // namespace tk
