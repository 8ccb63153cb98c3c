#pragma once

#include <QIcon>

class QApplication;

namespace corvalog {

// The program's icon, compiled into it.
QIcon AppIcon();

// The program's look: the Fusion style with a palette whose 3-D light, the ground of the
// channel displays, is a soft grey rather than white; and the program's icon.
void applyAppStyle(QApplication &app);

} // namespace corvalog
