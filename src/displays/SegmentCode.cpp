#include "SegmentCode.h"

#include <algorithm>

namespace corvalog {

namespace {

struct Entry {
    char c;
    const char *pattern;
};

constexpr Entry kTable[] = {
    { '0', "1110111" },
    { '1', "0010001" },
    { '2', "0111110" },
    { '3', "0111011" },
    { '4', "1011001" },
    { '5', "1101011" },
    { '6', "1101111" },
    { '7', "0110001" },
    { '8', "1111111" },
    { '9', "1111001" },
    { '-', "0001000" },
    { '?', "0111100" },
    { 'A', "1111101" },
    { 'B', "1001111" },
    { 'C', "0001110" },
    { 'D', "0011111" },
    { 'E', "1101110" },
    { 'F', "1101100" },
    { 'G', "1111011" },
    { 'H', "1011101" },
    { 'I', "0000001" },
    { 'J', "0010011" },
    { 'K', "1001110" },
    { 'L', "1000110" },
    { 'N', "0001101" },
    { 'O', "0001111" },
    { 'P', "1111100" },
    { 'Q', "1111001" },
    { 'R', "0001100" },
    { 'S', "1101011" },
    { 'T', "1001110" },
    { 'U', "0000111" },
    { 'V', "0000111" },
    { 'X', "1011101" },
    { 'Y', "1011011" },
    { 'Z', "0111110" },
    { '=', "0001010" },
    { '^', "1110101" },
    { '>', "0000011" },
    { '<', "0000110" },
    { '{', "1100110" },
    { '[', "1100110" },
    { '}', "0110011" },
    { ']', "0110011" },
};

// Looked up by character code; built once.
struct Lookup {
    SegmentBits bits[128] = {};
    Lookup()
    {
        for (const Entry &e : kTable)
            bits[static_cast<unsigned char>(e.c)] = segmentsFromText(e.pattern);
    }
};

} // namespace

SegmentBits segmentsFromText(const char *pattern)
{
    SegmentBits bits = 0;
    for (int i = 0; i < 7 && pattern[i]; ++i) {
        if (pattern[i] != '0')
            bits = static_cast<SegmentBits>(bits | (1u << i));
    }
    return bits;
}

SegmentBits segmentPattern(QChar c)
{
    static const Lookup lookup;
    const char16_t code = c.unicode();
    return code < 128 ? lookup.bits[code] : 0;
}

std::vector<LcdCell> lcdCells(const QString &caption, int digits)
{
    QString text = caption.toUpper();
    const qsizetype point = text.indexOf(QLatin1Char('.'));
    if (point == 0)
        text.replace(0, 1, QLatin1Char(' '));
    else if (point > 0)
        text.remove(point, 1);
    const int count = std::max<int>(digits, static_cast<int>(text.size()));
    const int pad = count - static_cast<int>(text.size());
    std::vector<LcdCell> cells(static_cast<std::size_t>(count));
    for (int i = 0; i < text.size(); ++i)
        cells[static_cast<std::size_t>(pad + i)].segments = segmentPattern(text[i]);
    if (point >= 0) {
        const int owner = point == 0 ? 0 : static_cast<int>(point) - 1;
        cells[static_cast<std::size_t>(pad + owner)].point = true;
    }
    return cells;
}

} // namespace corvalog
