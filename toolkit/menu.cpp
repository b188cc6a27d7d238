#include "toolkit/menu.h"

namespace tk {

// A menu is made as a global before any backend exists; it asks the backend for nothing
// until a window's menu bar shows it.
menu::menu() : panel() {}

}  // namespace tk
