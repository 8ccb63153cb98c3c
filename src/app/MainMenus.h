#pragma once

class QMenu;

namespace corvalog {

class MainFrm;

// Builds the main window's menu bar, each command wired to the window's handler. Returns the
// Calibration menu, hidden until the command line asks for it.
QMenu *buildMainMenus(MainFrm &window);

} // namespace corvalog
