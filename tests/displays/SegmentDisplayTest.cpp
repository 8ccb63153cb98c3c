#include "displays/SegmentCode.h"
#include "displays/eLCD.h"

#include <QImage>
#include <gtest/gtest.h>

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

TEST(SegmentCode, CharactersLightTheirTableSegments)
{
    const struct {
        char c;
        const char *pattern;
    } cases[] = {
        { '0', "1110111" },
        { '1', "0010001" },
        { '8', "1111111" },
        { '-', "0001000" },
        { '9', "1111001" },
        { 'Q', "1111001" },
        { 'I', "0000001" },
        { 'E', "1101110" },
        { '{', "1100110" },
        { ']', "0110011" },
        { '<', "0000110" },
        { 'M', "0000000" },
        { 'W', "0000000" },
        { ' ', "0000000" },
        { '.', "0000000" },
        { 'e', "0000000" },
    };
    for (const auto &c : cases)
        EXPECT_EQ(bitsText(segmentPattern(QChar(c.c))), c.pattern) << c.c;
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
    const struct {
        const char *caption;
        int digits;
        const char *cells;
    } cases[] = {
        { "88", 4, "__88" },
        { "8.8", 4, "__8.8" }, // the point takes no cell of its own
        { "8.8.8", 4, "8.8_8" }, // a second point stays, as a blank cell
        { ".8", 2, "_.8" }, // a leading point gets a blank cell to sit on
        { "88888", 3, "88888" }, // too long: every character still shows
        { "e8", 2, "#8" }, // lower case reads as upper case
        { "", 2, "__" },
    };
    for (const auto &c : cases)
        EXPECT_EQ(describe(QString::fromLatin1(c.caption), c.digits), c.cells) << c.caption;
}

TEST(ELcd, StrokeWidthIsAThirtySecondRoundedToEven)
{
    const struct {
        double reference;
        int width;
    } cases[] = { { 10, 1 }, { 31, 1 }, { 48, 2 }, { 80, 2 }, { 112, 4 }, { 1600, 50 } };
    for (const auto &c : cases)
        EXPECT_EQ(eLCD::strokeWidth(c.reference), c.width) << c.reference;
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
        const double scale = 0.2, left = 0, top = 3;
        const SegmentBits lit = segmentPattern(QChar(caption[0]).toUpper());
        for (int i = 0; i < 8; ++i) {
            const QPoint p(static_cast<int>(left + (middles[i].x() - 45) * scale),
                static_cast<int>(top + (middles[i].y() + 45) * scale));
            const bool on = i < 7 ? (lit >> i) & 1u : caption[1] == '.';
            EXPECT_EQ(image.pixelColor(p), on ? QColor(255, 0, 0) : QColor(0, 255, 0))
                << caption << " segment " << i;
        }
    }
}

} // namespace
