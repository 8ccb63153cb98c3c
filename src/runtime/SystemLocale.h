#pragma once

#include "NumberLocale.h"

class QLocale;

namespace corvalog {

// The separators a Qt locale writes: its decimal mark and group separator, and the first
// separator of its short date and short time formats ("dd.MM.yy" gives "."). A mark that is
// not one plain character falls back to what a point or comma locale would use.
NumberLocale numberLocaleOf(const QLocale &locale);

// The separators of the user's own locale (LC_ALL, LC_NUMERIC, LC_TIME, LANG).
NumberLocale systemNumberLocale();

} // namespace corvalog
