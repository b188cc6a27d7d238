// tk::fltk_canvas: the drawing area of a window. Every drawing call paints into a backing
// picture (FLTK's offscreen pixmap) of the area's size in pixels, and the screen only shows
// copies of it: covering and uncovering a window never asks the program to draw again.
// Single pixels are gathered and painted in one go, so plotting a raster stays fast.
#pragma once

#include <FL/Fl_Widget.H>
#include <FL/x.H>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

class Fl_Box;

namespace tk {

class window;

class fltk_canvas : public Fl_Widget {
 public:
  fltk_canvas(int x, int y, int w, int h, tk::window& front);
  ~fltk_canvas() override;
  fltk_canvas(const fltk_canvas&) = delete;
  fltk_canvas& operator=(const fltk_canvas&) = delete;

  // Runs FLTK drawing calls on the picture; (x0, y0)-(x1, y1) bounds what they touch.
  void paint(const std::function<void()>& draw, int x0, int y0, int x1, int y1);
  void plot(int x, int y, int colour);
  // Plain text with its top left corner at (x, y) on the window's background colour.
  void text(int x, int y, const std::string& s, int colour);
  void set_font(const std::string& name);
  // Reads a part of the picture back as red, green, blue bytes, row by row.
  void read(int x, int y, int width, int height, unsigned char* rgb);

  // While buffering the screen is left alone until show_part.
  void set_buffering(bool on);
  void show_part(int x0, int y0, int x1, int y1);
  // The lowest rows lie under the status line and are not copied to the screen.
  void cover_bottom(int rows);
  void set_coordinate_box(Fl_Box* box) { coordinates = box; }

 protected:
  void draw() override;
  int handle(int event) override;

 private:
  struct pending_pixel {
    int x, y;
    Fl_Color colour;
  };
  void paint_pending();
  void show_soon(int x0, int y0, int x1, int y1);
  void pointer_moved();
  void queue(int kind, int value);

  tk::window& front;
  Fl_Offscreen picture = 0;
  std::vector<pending_pixel> pixels;
  bool buffering = false;
  int covered = 0;
  Fl_Box* coordinates = nullptr;
  std::string coordinate_text;
  Fl_Font font = FL_HELVETICA;
  int font_size = 12;
  std::chrono::steady_clock::time_point last_shown;
};

}  // namespace tk
