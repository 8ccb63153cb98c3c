#pragma once

#include <QString>
#include <cstdint>
#include <vector>

namespace corvalog {

// The seven segments of a digit cell as bits: bit 0 upper left, 1 top, 2 upper right,
// 3 middle, 4 lower left, 5 bottom, 6 lower right.
using SegmentBits = std::uint8_t;

// The lit segments of a character (as given, already upper case); none for a character the
// table does not know, a blank among them.
SegmentBits segmentPattern(QChar c);

// The same from the table's text form, "1110111" (position 1 first).
SegmentBits segmentsFromText(const char *pattern);

struct LcdCell {
    SegmentBits segments = 0;
    bool point = false; // the decimal point to the right of this cell is lit
};

// The cells that show a caption: upper-cased, the first "." folded into the cell before it
// (a leading "." gets a blank cell of its own), other points left in as empty cells. A shorter
// text is right-aligned in `digits` cells, like a meter; a longer one gets a cell per character,
// so nothing is ever cut off.
std::vector<LcdCell> lcdCells(const QString &caption, int digits);

} // namespace corvalog
