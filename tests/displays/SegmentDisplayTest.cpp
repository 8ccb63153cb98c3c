#include "displays/SegmentCode.h"
#include "displays/eLCD.h"

#include <QImage>
#include <gtest/gtest.h>
#include <tuple>

using namespace corvalog;

namespace {

// Bits of a cell as the table's text ("1110111", position 1 first).
std::string bitsText(SegmentBits bits)
{
    std::string text;
    for (int i = 0; i < 7; ++i)
        text += (bits >> i) & 1u ? '1' : '0';
    return text;
}

// A few telling entries: digits, a sign, a letter standing in for a digit's shape, a bracket,
// and characters the display cannot show (lower case is made upper case before the lookup).
TEST(SegmentCode, CharactersLightTheirTableSegments)
{
    const std::pair<char, const char *> cases[] = { { '0', "1110111" }, { '1', "0010001" },
        { '8', "1111111" }, { '-', "0001000" }, { 'Q', "1111001" }, { 'E', "1101110" },
        { '{', "1100110" }, { 'M', "0000000" }, { '.', "0000000" }, { 'e', "0000000" } };
    for (const auto &[c, pattern] : cases)
        EXPECT_EQ(bitsText(segmentPattern(QChar(c))), pattern) << c;
    EXPECT_EQ(segmentPattern(QChar(0x00C4)), 0); // beyond ASCII
}

TEST(SegmentCode, CaptionsBecomeRightAlignedCellsWithThePointFolded)
{
    const auto describe = [](const QString &caption, int digits) {
        std::string out;
        for (const LcdCell &cell : lcdCells(caption, digits)) {
            out += cell.segments == 0 ? '_' : cell.segments == segmentPattern('8') ? '8' : '#';
            if (cell.point)
                out += '.';
        }
        return out;
    };
    // The caption, the display's digits and the cells: blank _, an 8, another character #.
    const std::tuple<const char *, int, const char *> cases[] = {
        { "88", 4, "__88" },
        { "8.8", 4, "__8.8" }, // the point takes no cell of its own
        { "8.8.8", 4, "8.8_8" }, // a second point stays, as a blank cell
        { ".8", 2, "_.8" }, // a leading point gets a blank cell to sit on
        { "88888", 3, "88888" }, // too long: every character still shows
        { "e8", 2, "#8" }, // lower case reads as upper case
        { "", 2, "__" },
    };
    for (const auto &[caption, digits, cells] : cases)
        EXPECT_EQ(describe(QString::fromLatin1(caption), digits), cells) << caption;
}

// Renders one cell big and reads the colour in the middle of each segment's stroke.
TEST(ELcd, LitSegmentsPaintOnColourAndUnlitOffColour)
{
    eLCD lcd;
    lcd.setDigits(1);
    lcd.resize(120, 120);
    lcd.setBackColor(0x000000);
    lcd.setOffColor(0x00FF00);
    lcd.setOnColor(0x0000FF);
    // Segment middles in template twips, in bit order, and the point's.
    const QPointF middles[8] = { { 120, 150 }, { 225, 0 }, { 360, 135 }, { 225, 255 }, { 90, 345 },
        { 225, 465 }, { 360, 345 }, { 540, 480 } };
    for (const char *caption : { "8.", "-", "7", "L" }) {
        lcd.setCaption(QString::fromLatin1(caption));
        const QImage image = lcd.grab().toImage();
        // One cell spans 45..645 by -45..525 twips: scaled by 0.2, centred 3 pixels down.
        const double scale = 0.2, top = 3;
        const SegmentBits lit = segmentPattern(QChar(caption[0]).toUpper());
        for (int i = 0; i < 8; ++i) {
            const QPoint p(static_cast<int>((middles[i].x() - 45) * scale),
                static_cast<int>(top + (middles[i].y() + 45) * scale));
            const bool on = i < 7 ? (lit >> i) & 1u : caption[1] == '.';
            EXPECT_EQ(image.pixelColor(p), on ? QColor(255, 0, 0) : QColor(0, 255, 0))
                << caption << " segment " << i;
        }
    }
}

} // namespace
