// Trl_DistributionWindow: the window "Celvane  -  Distribution parameters" that shows a user
// distribution in the colours of its legend. One window serves each form of distribution;
// it is made at the first showing and holds the distribution it shows by reference.
#pragma once

class Trl_RxDistribution;
class Trl_RxGridDistribution;
class Trl_RxPolyDistribution;
namespace tk {
class window;
}

class Trl_DistributionWindow {
 public:
  static void show_grid(Trl_RxGridDistribution& d, bool redraw_all, int x0, int y0, int x1, int y1);
  static void show_polygons(Trl_RxPolyDistribution& d, bool redraw_all, int x0, int y0, int x1, int y1);
  // A distribution that ends is no longer shown.
  static void forget(const Trl_RxDistribution* d);
  static void closed(tk::window* w);

  tk::window* window = nullptr;
  bool displayed = false;
  Trl_RxDistribution* shown = nullptr;
  int width = 0, height = 0;

 private:
  bool prepare(Trl_RxDistribution& d, bool& redraw_all);
};
