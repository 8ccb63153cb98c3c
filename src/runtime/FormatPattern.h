#pragma once

// The parts of Format: a pattern compiled into sections of tokens, and the number, date and
// text output that read them. Only Format's own files include this.

#include "Variant.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvalog::formatting {

// What a pattern formats as. A pattern takes its kind from its first number, date or text
// token; one with none (only literals) follows the value.
enum class Kind : std::uint8_t { Literal, Number, Date, Text, General, Boolean };

enum class Op : std::uint8_t {
    Literal, // pool text [a, a + b)
    IntDigit, // a = placeholder index from the left of the whole part
    Point,
    FracDigit, // a = placeholder index after the point
    Exponent, // a = zero placeholders, b = bit 0 upper case, bit 1 always signed
    Day,
    DayZero,
    DayShort,
    DayLong,
    ShortDate,
    LongDate,
    Month,
    MonthZero,
    MonthShort,
    MonthLong,
    Minute,
    MinuteZero,
    Second,
    SecondZero,
    Hour,
    HourZero,
    Weekday,
    WeekOfYear,
    Quarter,
    DayOfYear,
    Year2,
    Year4,
    AmPm, // a: 0 "AM", 1 "am", 2 "A", 3 "a"
    DateSep,
    TimeSep,
    GeneralDate,
    LongTime,
    CharOrSpace, // a = count
    CharOrNothing, // a = count
};

struct Token {
    Op op;
    std::uint32_t a = 0;
    std::uint32_t b = 0;
};

struct Section {
    bool present = false;
    std::vector<Token> tokens;
    // Number sections.
    int intPlaceholders = 0;
    int minInt = 0; // placeholders from the first "0" on always print
    int fracPlaceholders = 0;
    int minFrac = 0; // up to the last "0" after the point
    int scale = 0; // thousands divisions from commas left of the point
    bool grouping = false;
    bool percent = false;
    bool exponent = false;
    // Date sections.
    bool twelveHour = false;
    // Text sections.
    int textPlaceholders = 0;
    bool upper = false;
    bool lower = false;
    bool leftAlign = false;
};

struct CompiledFormat {
    Kind kind = Kind::Literal;
    std::uint8_t words = 0; // Boolean: 0 True/False, 1 Yes/No, 2 On/Off
    std::string pool;
    std::array<Section, 4> sections;
};

// A pattern's compiled form, from a small per-thread cache; a pattern too long to keep is
// compiled into `owner`, which must outlive the use of the result.
const CompiledFormat &compiledFormat(
    std::string_view pattern, std::unique_ptr<CompiledFormat> &owner);

} // namespace corvalog::formatting
