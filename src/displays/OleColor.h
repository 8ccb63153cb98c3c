#pragma once

#include "runtime/OleColor.h"

#include <QColor>
#include <QGuiApplication>
#include <QPalette>

namespace corvalog {

// The colour to paint; system colours come from the palette (3-D light is its Light role).
QColor toQColor(OleColor colour, const QPalette &palette = QGuiApplication::palette());

} // namespace corvalog
