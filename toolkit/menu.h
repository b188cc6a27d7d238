// tk::menu: a panel that pops up from a button of a menu bar. Its buttons are the entries:
// a button with a handler is a command, a button with a menu opens that menu.
#pragma once

#include "toolkit/panel.h"

namespace tk {

class menu : public panel {
 public:
  menu();
};

}  // namespace tk
