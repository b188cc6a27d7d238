// How toolkit values look in FLTK: the palette index as a colour, the font of a formatted
// text run, and labels shown literally.
#pragma once

#include <FL/Enumerations.H>

#include <string>

#include "toolkit/formatted_text.h"

namespace tk {

// The colour of a palette index (unknown indices are black, as the palette says).
Fl_Color fltk_colour(int index);

// Helvetica for plain text, Courier for "\tt"; bold and italic as the run asks.
Fl_Font fltk_font(const text_run& run);

// A label as FLTK shows it literally: '&' and '@' would otherwise be read as markup.
std::string fltk_literal_label(const std::string& label);

// A label as one step of an FLTK menu path: '/' separates steps and '\\' escapes.
std::string fltk_menu_step(const std::string& label);

// Where a window of the given size goes along one screen axis: a pixel number counts from
// the origin, the window constants min, center and max place it within the room.
int fltk_place(int wanted, int size, int origin, int room);

}  // namespace tk
