#include "FormatPattern.h"

#include "Ascii.h"

#include <algorithm>

namespace corvalog::formatting {

namespace {

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

} // namespace

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

} // namespace corvalog::formatting
