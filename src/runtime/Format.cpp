#include "Format.h"

#include "Ascii.h"
#include "Convert.h"
#include "DateTime.h"
#include "NumberLocale.h"
#include "NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace corvalog {

namespace {

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

bool startsWithNoCase(std::string_view s, std::size_t i, std::string_view word)
{
    return s.size() - i >= word.size() && equalsIgnoringCase(s.substr(i, word.size()), word);
}

// Length of an AM/PM designator at s[i] ("AM/PM", "AMPM", "A/P" in any case), or 0.
std::size_t ampmLength(std::string_view s, std::size_t i)
{
    if (asciiLower(s[i]) != 'a')
        return 0;
    if (startsWithNoCase(s, i, "am/pm"))
        return 5;
    if (startsWithNoCase(s, i, "ampm"))
        return 4;
    if (startsWithNoCase(s, i, "a/p"))
        return 3;
    return 0;
}

std::size_t runLength(std::string_view s, std::size_t i, char lowerChar, std::size_t limit)
{
    std::size_t n = 0;
    while (i + n < s.size() && n < limit && asciiLower(s[i + n]) == lowerChar)
        ++n;
    return n;
}

Kind kindOfToken(std::string_view s, std::size_t i)
{
    const char c = s[i];
    if (c == '0' || c == '#' || c == '.')
        return Kind::Number;
    if (c == '@' || c == '&' || c == '<' || c == '>' || c == '!')
        return Kind::Text;
    switch (asciiLower(c)) {
    case 'd':
    case 'h':
    case 'm':
    case 'n':
    case 'q':
    case 's':
    case 'w':
    case 'y':
    case 'c':
    case '/':
    case ':':
        return Kind::Date;
    case 't':
        return startsWithNoCase(s, i, "ttttt") ? Kind::Date : Kind::Literal;
    case 'a':
        return ampmLength(s, i) ? Kind::Date : Kind::Literal;
    default:
        return Kind::Literal;
    }
}

// Appends a section's tokens, merging adjacent literal text.
class SectionBuilder
{
public:
    SectionBuilder(CompiledFormat &fmt, Section &section)
        : m_fmt(fmt)
        , m_section(section)
    {
    }

    void literal(std::string_view text)
    {
        if (text.empty())
            return;
        auto &tokens = m_section.tokens;
        const auto end = static_cast<std::uint32_t>(m_fmt.pool.size());
        if (!tokens.empty() && tokens.back().op == Op::Literal
            && tokens.back().a + tokens.back().b == end)
            tokens.back().b += static_cast<std::uint32_t>(text.size());
        else
            tokens.push_back({ Op::Literal, end, static_cast<std::uint32_t>(text.size()) });
        m_fmt.pool.append(text);
    }

    void add(Op op, std::uint32_t a = 0, std::uint32_t b = 0)
    {
        m_section.tokens.push_back({ op, a, b });
    }

    // Steps over a "\x" escape or a quoted literal at s[i], adding its text; false when s[i]
    // starts neither.
    bool quoted(std::string_view s, std::size_t &i)
    {
        if (s[i] == '\\') {
            if (i + 1 < s.size())
                literal(s.substr(i + 1, 1));
            i += 2;
            return true;
        }
        if (s[i] == '"') {
            const std::size_t close = s.find('"', i + 1);
            const std::size_t end = close == std::string_view::npos ? s.size() : close;
            literal(s.substr(i + 1, end - i - 1));
            i = end + 1;
            return true;
        }
        return false;
    }

private:
    CompiledFormat &m_fmt;
    Section &m_section;
};

void compileLiteral(SectionBuilder &b, std::string_view s)
{
    for (std::size_t i = 0; i < s.size();) {
        if (!b.quoted(s, i))
            b.literal(s.substr(i++, 1));
    }
}

void compileNumber(SectionBuilder &b, Section &sec, std::string_view s, bool laterSection)
{
    // As the platform does, ",", "%" and "E+" only mean something once the pattern has shown it
    // is a number pattern; before that they are literal text.
    bool armed = laterSection;
    bool afterPoint = false;
    bool afterExponent = false;
    int firstZero = -1;
    int pendingCommas = 0;
    for (std::size_t i = 0; i < s.size();) {
        if (b.quoted(s, i))
            continue;
        const char c = s[i];
        if (c == '%' || afterExponent) {
            if (c == '%' && armed)
                sec.percent = true;
            b.literal(s.substr(i++, 1));
        } else if (c == '0' || c == '#') {
            armed = true;
            if (afterPoint) {
                b.add(Op::FracDigit, static_cast<std::uint32_t>(sec.fracPlaceholders++));
                if (c == '0')
                    sec.minFrac = sec.fracPlaceholders;
            } else {
                if (pendingCommas > 0)
                    sec.grouping = true;
                pendingCommas = 0;
                if (c == '0' && firstZero < 0)
                    firstZero = sec.intPlaceholders;
                b.add(Op::IntDigit, static_cast<std::uint32_t>(sec.intPlaceholders++));
            }
            ++i;
        } else if (c == '.' && !afterPoint) {
            armed = true;
            afterPoint = true;
            sec.scale += pendingCommas;
            pendingCommas = 0;
            b.add(Op::Point);
            ++i;
        } else if (c == ',' && armed) {
            // Between digit placeholders a comma asks for grouping; with no placeholder after
            // it in the whole part it divides by a thousand. After the point it is dropped.
            if (!afterPoint) {
                if (sec.intPlaceholders > 0)
                    ++pendingCommas;
                else
                    sec.grouping = true;
            }
            ++i;
        } else if ((c == 'e' || c == 'E') && armed && i + 1 < s.size()
            && (s[i + 1] == '+' || s[i + 1] == '-')) {
            const bool plus = s[i + 1] == '+';
            i += 2;
            std::uint32_t zeros = 0;
            for (; i < s.size() && (s[i] == '0' || s[i] == '#'); ++i)
                zeros += s[i] == '0';
            b.add(Op::Exponent, zeros, (c == 'E' ? 1u : 0u) | (plus ? 2u : 0u));
            sec.exponent = true;
            afterExponent = true;
        } else {
            b.literal(s.substr(i++, 1));
        }
    }
    sec.scale += pendingCommas;
    if (sec.exponent)
        sec.scale = 0;
    sec.minInt = firstZero < 0 ? 0 : sec.intPlaceholders - firstZero;
}

void compileDate(SectionBuilder &b, Section &sec, std::string_view s)
{
    // "m" or "mm" is minutes when it is the first one after an hour; a day token ends that.
    bool seenHours = false;
    bool wroteMinutes = false;
    for (std::size_t i = 0; i < s.size();) {
        if (b.quoted(s, i))
            continue;
        const char c = asciiLower(s[i]);
        std::size_t n = 1;
        switch (c) {
        case 'd': {
            n = runLength(s, i, 'd', 6);
            static constexpr Op ops[]
                = { Op::Day, Op::DayZero, Op::DayShort, Op::DayLong, Op::ShortDate, Op::LongDate };
            b.add(ops[n - 1]);
            seenHours = false;
            break;
        }
        case 'm':
            n = runLength(s, i, 'm', 4);
            if (n <= 2 && seenHours && !wroteMinutes) {
                b.add(n == 2 ? Op::MinuteZero : Op::Minute);
                wroteMinutes = true;
            } else {
                static constexpr Op ops[]
                    = { Op::Month, Op::MonthZero, Op::MonthShort, Op::MonthLong };
                b.add(ops[n - 1]);
            }
            break;
        case 'h':
            n = runLength(s, i, 'h', 2);
            b.add(n == 2 ? Op::HourZero : Op::Hour);
            seenHours = true;
            break;
        case 'n':
            n = runLength(s, i, 'n', 2);
            b.add(n == 2 ? Op::MinuteZero : Op::Minute);
            break;
        case 's':
            n = runLength(s, i, 's', 2);
            b.add(n == 2 ? Op::SecondZero : Op::Second);
            break;
        case 'y':
            n = runLength(s, i, 'y', 4);
            if (n == 3)
                n = 2; // "yyy" is "yy" followed by "y"
            b.add(n == 4 ? Op::Year4 : n == 2 ? Op::Year2 : Op::DayOfYear);
            break;
        case 'w':
            n = runLength(s, i, 'w', 2);
            b.add(n == 2 ? Op::WeekOfYear : Op::Weekday);
            break;
        case 'q':
            b.add(Op::Quarter);
            break;
        case 'c':
            b.add(Op::GeneralDate);
            break;
        case '/':
            b.add(Op::DateSep);
            break;
        case ':':
            b.add(Op::TimeSep);
            break;
        case 't':
            if (startsWithNoCase(s, i, "ttttt")) {
                n = 5;
                b.add(Op::LongTime);
            } else {
                b.literal(s.substr(i, 1));
            }
            break;
        case 'a':
            n = ampmLength(s, i);
            if (n == 0) {
                n = 1;
                b.literal(s.substr(i, 1));
            } else {
                const bool upperCase = s[i] == 'A';
                const std::uint32_t style = n == 3 ? (upperCase ? 2 : 3)
                    : n == 4                       ? 0
                                                   : (upperCase ? 0 : 1);
                b.add(Op::AmPm, style);
                sec.twelveHour = true;
            }
            break;
        default:
            b.literal(s.substr(i, 1));
            break;
        }
        i += n;
    }
}

void compileText(SectionBuilder &b, Section &sec, std::string_view s)
{
    for (std::size_t i = 0; i < s.size();) {
        if (b.quoted(s, i))
            continue;
        const char c = s[i];
        if (c == '@' || c == '&') {
            const std::size_t n = runLength(s, i, c, s.size());
            b.add(c == '@' ? Op::CharOrSpace : Op::CharOrNothing, static_cast<std::uint32_t>(n));
            sec.textPlaceholders += static_cast<int>(n);
            i += n;
            continue;
        }
        if (c == '<')
            sec.lower = true;
        else if (c == '>')
            sec.upper = true;
        else if (c == '!')
            sec.leftAlign = true;
        else
            b.literal(s.substr(i, 1));
        ++i;
    }
}

// The named formats, as the patterns they stand for.
struct NamedFormat {
    std::string_view name; // lower case
    std::string_view pattern;
};

constexpr NamedFormat kNamedFormats[] = {
    { "fixed", "0.00" },
    { "standard", "#,##0.00" },
    { "percent", "0.00%" },
    { "scientific", "0.00E+00" },
    { "currency", "$#,##0.00;($#,##0.00)" },
    { "general date", "c" },
    { "long date", "dddddd" },
    { "medium date", "dd-mmm-yy" },
    { "short date", "ddddd" },
    { "long time", "ttttt" },
    { "medium time", "hh:nn AM/PM" },
    { "short time", "hh:nn" },
};

void compileInto(CompiledFormat &fmt, std::string_view pattern)
{
    // Sections split at ";" outside quotes and escapes; a fifth and later are ignored, and an
    // empty section counts as absent (the first section stands in for it).
    std::array<std::string_view, 4> texts {};
    std::size_t start = 0;
    std::size_t index = 0;
    for (std::size_t i = 0; index < 4;) {
        if (i >= pattern.size()) {
            texts[index] = pattern.substr(start);
            break;
        }
        if (pattern[i] == ';') {
            texts[index++] = pattern.substr(start, i - start);
            start = ++i;
        } else if (pattern[i] == '\\') {
            i += 2;
        } else if (pattern[i] == '"') {
            const std::size_t close = pattern.find('"', i + 1);
            i = close == std::string_view::npos ? pattern.size() : close + 1;
        } else {
            ++i;
        }
    }

    fmt.kind = Kind::Literal;
    for (std::size_t k = 0; k < 4 && fmt.kind == Kind::Literal; ++k) {
        const std::string_view s = texts[k];
        for (std::size_t i = 0; i < s.size() && fmt.kind == Kind::Literal;) {
            if (s[i] == '\\') {
                i += 2;
            } else if (s[i] == '"') {
                const std::size_t close = s.find('"', i + 1);
                i = close == std::string_view::npos ? s.size() : close + 1;
            } else {
                fmt.kind = kindOfToken(s, i++);
            }
        }
    }

    for (std::size_t k = 0; k < 4; ++k) {
        Section &sec = fmt.sections[k];
        sec.present = k == 0 || !texts[k].empty();
        SectionBuilder b(fmt, sec);
        switch (fmt.kind) {
        case Kind::Number:
            compileNumber(b, sec, texts[k], k > 0);
            break;
        case Kind::Date:
            compileDate(b, sec, texts[k]);
            break;
        case Kind::Text:
            compileText(b, sec, texts[k]);
            break;
        default:
            compileLiteral(b, texts[k]);
            break;
        }
    }
}

std::unique_ptr<CompiledFormat> compile(std::string_view pattern)
{
    auto fmt = std::make_unique<CompiledFormat>();
    if (equalsIgnoringCase(pattern, "general number")) {
        fmt->kind = Kind::General;
        return fmt;
    }
    static constexpr std::string_view words[] = { "true/false", "yes/no", "on/off" };
    for (std::uint8_t w = 0; w < 3; ++w) {
        if (equalsIgnoringCase(pattern, words[w])) {
            fmt->kind = Kind::Boolean;
            fmt->words = w;
            return fmt;
        }
    }
    for (const NamedFormat &named : kNamedFormats) {
        if (equalsIgnoringCase(pattern, named.name)) {
            compileInto(*fmt, named.pattern);
            return fmt;
        }
    }
    compileInto(*fmt, pattern);
    return fmt;
}

// Parsed patterns, per thread so that no lock is needed. Long patterns are not kept, so the
// cache stays small whatever scripts do.
const CompiledFormat &compiledFormat(
    std::string_view pattern, std::unique_ptr<CompiledFormat> &owner)
{
    struct Entry {
        std::string pattern;
        std::unique_ptr<CompiledFormat> format;
    };
    constexpr std::size_t kEntries = 32;
    constexpr std::size_t kLongestCached = 256;
    thread_local std::vector<Entry> cache;
    thread_local std::size_t last = 0;
    thread_local std::size_t victim = 0;

    if (last < cache.size() && cache[last].pattern == pattern)
        return *cache[last].format;
    for (std::size_t i = 0; i < cache.size(); ++i) {
        if (cache[i].pattern == pattern) {
            last = i;
            return *cache[i].format;
        }
    }
    owner = compile(pattern);
    if (pattern.size() > kLongestCached)
        return *owner;
    if (cache.size() < kEntries) {
        cache.push_back({ std::string(pattern), std::move(owner) });
        last = cache.size() - 1;
    } else {
        cache[victim] = { std::string(pattern), std::move(owner) };
        last = victim;
        victim = (victim + 1) % kEntries;
    }
    return *cache[last].format;
}

// ---- numbers

// A number as decimal digits: value = 0.d1 d2 ... dn x 10^point, sign aside. No trailing zero
// digits are kept; zero has n == 0.
struct Decimal {
    char digits[24];
    int n = 0;
    int point = 0;
    bool negative = false;

    char at(int i) const { return i >= 0 && i < n ? digits[i] : '0'; }

    void trim()
    {
        while (n > 0 && digits[n - 1] == '0')
            --n;
        if (n == 0)
            point = 0;
    }

    // Rounds half away from zero to `places` digits after the point.
    void round(int places)
    {
        const int cut = point + places;
        if (n == 0 || cut >= n)
            return;
        if (cut < 0) {
            n = 0;
            point = 0;
            return;
        }
        const bool up = digits[cut] >= '5';
        n = cut;
        if (up) {
            int i = n - 1;
            while (i >= 0 && digits[i] == '9')
                --i;
            if (i < 0) {
                digits[0] = '1';
                n = 1;
                ++point;
            } else {
                ++digits[i];
                n = i + 1;
            }
        }
        trim();
    }
};

void decimalFromInteger(std::int64_t v, Decimal &d)
{
    d.negative = v < 0;
    const std::uint64_t u
        = d.negative ? 0 - static_cast<std::uint64_t>(v) : static_cast<std::uint64_t>(v);
    if (u == 0)
        return;
    const auto res = std::to_chars(d.digits, d.digits + sizeof d.digits, u);
    d.n = static_cast<int>(res.ptr - d.digits);
    d.point = d.n;
    d.trim();
}

// The digits the script's text of the value shows: 15 significant for a Double, 7 for a Single,
// rounded as number text rounds them (exact ties away from zero).
void decimalFromFloat(double v, int significant, Decimal &d)
{
    if (v == 0)
        return;
    d.negative = v < 0;
    const DecimalDigits rounded = roundedDigits(v, significant);
    for (char c : rounded.digits) {
        if (d.n < static_cast<int>(sizeof d.digits))
            d.digits[d.n++] = c;
    }
    d.point = rounded.exponent + 1;
    d.trim();
}

// The value's digits for a number pattern; false when it is not a finite number.
bool decimalOf(const Variant &value, Decimal &d)
{
    switch (value.type()) {
    case VarType::Empty:
    case VarType::Null:
        return true;
    case VarType::Boolean:
        decimalFromInteger(value.rawBoolean() ? -1 : 0, d);
        return true;
    case VarType::Byte:
        decimalFromInteger(value.rawByte(), d);
        return true;
    case VarType::Integer:
        decimalFromInteger(value.rawInteger(), d);
        return true;
    case VarType::Long:
        decimalFromInteger(value.rawLong(), d);
        return true;
    case VarType::Single:
        if (!std::isfinite(value.rawSingle()))
            return false;
        decimalFromFloat(value.rawSingle(), 7, d);
        return true;
    case VarType::Double:
    case VarType::Date:
        if (!std::isfinite(value.rawDouble()))
            return false;
        decimalFromFloat(value.rawDouble(), 15, d);
        return true;
    case VarType::String: {
        double v = 0;
        if (!tryParseNumericText(value.rawString(), numberLocale(), v) || !std::isfinite(v))
            return false;
        decimalFromFloat(v, 15, d);
        return true;
    }
    }
    return false;
}

void appendWholeDigits(std::string &out, const Decimal &d, int from, int to, int wholeLength,
    int intLength, bool grouping, const std::string &thousands)
{
    // Digits [from, to) of a whole part `wholeLength` long, of which the last `intLength` are
    // the number's own and the rest leading zeros.
    const int pad = wholeLength - intLength;
    for (int k = from; k < to; ++k) {
        out += k < pad ? '0' : d.at(k - pad);
        const int fromRight = wholeLength - 1 - k;
        if (grouping && fromRight > 0 && fromRight % 3 == 0)
            out += thousands;
    }
}

std::string formatNumber(const CompiledFormat &fmt, Decimal d, bool isNull)
{
    const bool zero = d.n == 0;
    const Section *sec = &fmt.sections[0];
    bool writeSign = d.negative;
    if (isNull) {
        sec = &fmt.sections[3];
    } else if (d.negative && fmt.sections[1].present) {
        sec = &fmt.sections[1];
        writeSign = false;
    } else if (zero && fmt.sections[2].present) {
        sec = &fmt.sections[2];
    }

    if (d.n > 0) {
        if (sec->percent)
            d.point += 2;
        d.point -= 3 * sec->scale;
    }
    int exponent = 0;
    if (sec->exponent && d.n > 0) {
        exponent = d.point - sec->intPlaceholders;
        d.point = sec->intPlaceholders;
        d.round(sec->fracPlaceholders);
        if (d.n > 0) {
            exponent += d.point - sec->intPlaceholders;
            d.point = sec->intPlaceholders;
        } else {
            exponent = 0;
        }
    } else {
        d.round(sec->fracPlaceholders);
    }

    const NumberLocale &locale = numberLocale();
    const int intLength = d.n > 0 ? std::max(d.point, 0) : 0;
    const int wholeLength = std::max(intLength, sec->minInt);
    const int fracShown
        = std::max(std::clamp(d.n - d.point, 0, sec->fracPlaceholders), sec->minFrac);
    const int excess = wholeLength - sec->intPlaceholders; // digits the first placeholder takes

    std::string out;
    out.reserve(static_cast<std::size_t>(wholeLength + fracShown) + 8);
    for (const Token &t : sec->tokens) {
        if (t.op == Op::Literal) {
            out.append(fmt.pool, t.a, t.b);
            continue;
        }
        if (writeSign && t.op != Op::Exponent) {
            out += '-';
            writeSign = false;
        }
        switch (t.op) {
        case Op::IntDigit: {
            const int p = static_cast<int>(t.a);
            const int from = p == 0 ? 0 : p + excess;
            const int to = p + excess + 1;
            appendWholeDigits(out, d, std::max(from, 0), std::max(to, 0), wholeLength, intLength,
                sec->grouping, locale.thousands);
            break;
        }
        case Op::Point:
            // With no whole-part placeholder the whole part still shows, rather than vanish.
            if (sec->intPlaceholders == 0)
                appendWholeDigits(out, d, 0, wholeLength, wholeLength, intLength, sec->grouping,
                    locale.thousands);
            out += locale.decimal;
            break;
        case Op::FracDigit:
            if (static_cast<int>(t.a) < fracShown)
                out += d.at(d.point + static_cast<int>(t.a));
            break;
        case Op::Exponent: {
            out += (t.b & 1) ? 'E' : 'e';
            if (exponent < 0)
                out += '-';
            else if (t.b & 2)
                out += '+';
            char buf[16];
            const auto res = std::to_chars(buf, buf + sizeof buf, std::abs(exponent));
            const auto digits = static_cast<std::uint32_t>(res.ptr - buf);
            if (digits < t.a)
                out.append(t.a - digits, '0');
            out.append(buf, res.ptr);
            break;
        }
        default:
            break;
        }
    }
    return out;
}

// ---- dates

constexpr const char *kMonthNames[] = { "January", "February", "March", "April", "May", "June",
    "July", "August", "September", "October", "November", "December" };
constexpr const char *kDayNames[]
    = { "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday" };

// The script's date range, 1 January 100 to 31 December 9999.
constexpr double kFirstDate = -657434.0;
constexpr double kDateEnd = 2958466.0;

bool isLeapYear(int y)
{
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

int dayOfYear(const CivilDateTime &dt)
{
    static constexpr int before[] = { 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334 };
    return before[dt.month - 1] + dt.day + (dt.month > 2 && isLeapYear(dt.year) ? 1 : 0);
}

void appendNumber(std::string &out, int v, int width)
{
    char buf[16];
    const auto res = std::to_chars(buf, buf + sizeof buf, v);
    for (auto len = res.ptr - buf; len < width; ++len)
        out += '0';
    out.append(buf, res.ptr);
}

void appendShortDate(std::string &out, const CivilDateTime &dt)
{
    const char separator = numberLocale().dateSeparator;
    appendNumber(out, dt.day, 2);
    out += separator;
    appendNumber(out, dt.month, 2);
    out += separator;
    appendNumber(out, dt.year, 4);
}

void appendLongDate(std::string &out, const CivilDateTime &dt, double date)
{
    out += kDayNames[weekdayOf(date) - 1];
    out += ", ";
    appendNumber(out, dt.day, 1);
    out += ' ';
    out += kMonthNames[dt.month - 1];
    out += ' ';
    appendNumber(out, dt.year, 1);
}

void appendLongTime(std::string &out, const CivilDateTime &dt)
{
    const char separator = numberLocale().timeSeparator;
    appendNumber(out, dt.hour, 2);
    out += separator;
    appendNumber(out, dt.minute, 2);
    out += separator;
    appendNumber(out, dt.second, 2);
}

void appendDate(std::string &out, const CompiledFormat &fmt, const Section &sec, double date)
{
    const CivilDateTime dt = civilFromDate(date);
    const int hour12 = dt.hour % 12 == 0 ? 12 : dt.hour % 12;
    const int hour = sec.twelveHour ? hour12 : dt.hour;
    for (const Token &t : sec.tokens) {
        switch (t.op) {
        case Op::Literal:
            out.append(fmt.pool, t.a, t.b);
            break;
        case Op::Day:
        case Op::DayZero:
            appendNumber(out, dt.day, t.op == Op::DayZero ? 2 : 1);
            break;
        case Op::DayShort:
            out.append(kDayNames[weekdayOf(date) - 1], 3);
            break;
        case Op::DayLong:
            out += kDayNames[weekdayOf(date) - 1];
            break;
        case Op::ShortDate:
            appendShortDate(out, dt);
            break;
        case Op::LongDate:
            appendLongDate(out, dt, date);
            break;
        case Op::Month:
        case Op::MonthZero:
            appendNumber(out, dt.month, t.op == Op::MonthZero ? 2 : 1);
            break;
        case Op::MonthShort:
            out.append(kMonthNames[dt.month - 1], 3);
            break;
        case Op::MonthLong:
            out += kMonthNames[dt.month - 1];
            break;
        case Op::Minute:
        case Op::MinuteZero:
            appendNumber(out, dt.minute, t.op == Op::MinuteZero ? 2 : 1);
            break;
        case Op::Second:
        case Op::SecondZero:
            appendNumber(out, dt.second, t.op == Op::SecondZero ? 2 : 1);
            break;
        case Op::Hour:
        case Op::HourZero:
            appendNumber(out, hour, t.op == Op::HourZero ? 2 : 1);
            break;
        case Op::Weekday:
            appendNumber(out, weekdayOf(date), 1);
            break;
        case Op::WeekOfYear: {
            // Weeks start on Sunday and the first week holds 1 January.
            const double jan1 = dateFromCivil({ dt.year, 1, 1, 0, 0, 0 });
            appendNumber(out, (dayOfYear(dt) - 1 + weekdayOf(jan1) - 1) / 7 + 1, 1);
            break;
        }
        case Op::Quarter:
            appendNumber(out, (dt.month - 1) / 3 + 1, 1);
            break;
        case Op::DayOfYear:
            appendNumber(out, dayOfYear(dt), 1);
            break;
        case Op::Year2:
            appendNumber(out, dt.year % 100, 2);
            break;
        case Op::Year4:
            appendNumber(out, dt.year, 1);
            break;
        case Op::AmPm: {
            const bool am = dt.hour < 12;
            switch (t.a) {
            case 0:
                out += am ? "AM" : "PM";
                break;
            case 1:
                out += am ? "am" : "pm";
                break;
            case 2:
                out += am ? 'A' : 'P';
                break;
            default:
                out += am ? 'a' : 'p';
                break;
            }
            break;
        }
        case Op::DateSep:
            out += numberLocale().dateSeparator;
            break;
        case Op::TimeSep:
            out += numberLocale().timeSeparator;
            break;
        case Op::GeneralDate:
            out += dateText(date, numberLocale().dateSeparator, numberLocale().timeSeparator);
            break;
        case Op::LongTime:
            appendLongTime(out, dt);
            break;
        default:
            break;
        }
    }
}

// The date a value stands for; false when it is not one (text that is not a number, or a
// number outside the script's date range).
bool dateOf(const Variant &value, double &date)
{
    if (value.isString()) {
        if (!tryParseNumericText(value.rawString(), numberLocale(), date))
            return false;
    } else {
        date = value.numberValue();
    }
    return date >= kFirstDate && date < kDateEnd;
}

// ---- text

std::size_t utf8Length(char lead)
{
    const auto c = static_cast<unsigned char>(lead);
    return c < 0xC0 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
}

std::string formatText(const CompiledFormat &fmt, const std::string &text)
{
    const Section &sec
        = text.empty() && fmt.sections[1].present ? fmt.sections[1] : fmt.sections[0];
    const bool toUpper = sec.upper && !sec.lower;
    const bool toLower = sec.lower;
    std::size_t chars = 0;
    for (std::size_t i = 0; i < text.size(); i += utf8Length(text[i]))
        ++chars;
    // Text fills the placeholders from the right: spare "@" placeholders print spaces first,
    // or last with "!"; characters left over follow everything.
    long blanksFirst
        = sec.leftAlign ? 0 : static_cast<long>(sec.textPlaceholders) - static_cast<long>(chars);
    std::size_t src = 0;
    std::string out;
    auto copyChar = [&] {
        const std::size_t len = std::min(utf8Length(text[src]), text.size() - src);
        for (std::size_t k = 0; k < len; ++k) {
            const char c = text[src + k];
            out += toUpper ? asciiUpper(c) : toLower ? asciiLower(c) : c;
        }
        src += len;
    };
    for (const Token &t : sec.tokens) {
        if (t.op == Op::Literal) {
            out.append(fmt.pool, t.a, t.b);
            continue;
        }
        std::uint32_t count = t.a;
        const bool spaces = t.op == Op::CharOrSpace;
        for (; spaces && count > 0 && blanksFirst > 0; --count, --blanksFirst)
            out += ' ';
        for (; count > 0 && src < text.size(); --count)
            copyChar();
        if (spaces)
            out.append(count, ' ');
    }
    while (src < text.size())
        copyChar();
    return out;
}

std::string textOf(const Variant &value)
{
    return value.isEmpty() ? std::string() : CStr(value);
}

} // namespace

std::string Format(const Variant &value, std::string_view pattern)
{
    if (pattern.empty())
        return value.isNull() ? std::string() : CStr(value);

    std::unique_ptr<CompiledFormat> owner;
    const CompiledFormat &fmt = compiledFormat(pattern, owner);

    if (value.isNull()) {
        const bool numberLike = fmt.kind == Kind::Number || fmt.kind == Kind::Literal;
        return numberLike && fmt.sections[3].present ? formatNumber(fmt, Decimal {}, true)
                                                     : std::string();
    }

    Kind kind = fmt.kind;
    if (kind == Kind::Literal) {
        kind = value.type() == VarType::Date ? Kind::Date
            : value.isString()               ? Kind::Text
                                             : Kind::Number;
    }

    switch (kind) {
    case Kind::General:
        return textOf(value);
    case Kind::Boolean: {
        Decimal d;
        if (!decimalOf(value, d) && value.isString())
            return value.rawString();
        static constexpr const char *words[3][2]
            = { { "False", "True" }, { "No", "Yes" }, { "Off", "On" } };
        return words[fmt.words][d.n > 0 || !std::isfinite(value.numberValue()) ? 1 : 0];
    }
    case Kind::Number: {
        Decimal d;
        if (!decimalOf(value, d))
            return textOf(value);
        return formatNumber(fmt, d, false);
    }
    case Kind::Date: {
        double date = 0;
        if (!dateOf(value, date))
            return textOf(value);
        std::string out;
        appendDate(out, fmt, fmt.sections[0], date);
        return out;
    }
    case Kind::Text:
    default:
        return formatText(fmt, textOf(value));
    }
}

} // namespace corvalog
