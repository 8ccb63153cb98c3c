#include "IniDocument.h"

#include "runtime/Ascii.h"

#include <algorithm>
#include <cstring>

namespace corvalog {

namespace {

// The blanks the platform's reader trims around names and values.
bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\v' || c == '\f';
}

std::string_view trimBlanks(std::string_view s)
{
    std::size_t b = 0;
    std::size_t e = s.size();
    while (b < e && isBlank(s[b]))
        ++b;
    while (e > b && isBlank(s[e - 1]))
        --e;
    return s.substr(b, e - b);
}

// Sections and keys share one table; a header's tag keeps "[a]" apart from a key "a".
std::uint32_t nameHash(std::uint32_t tag, std::string_view name)
{
    std::uint64_t h = 0xcbf29ce484222325ull ^ (tag * 0x9E3779B97F4A7C15ull);
    for (char c : name) {
        h ^= static_cast<unsigned char>(asciiLower(c));
        h *= 0x100000001b3ull;
    }
    h ^= h >> 32;
    return static_cast<std::uint32_t>(h);
}

// Edited lines leave their old text behind; it is reclaimed once it outweighs the live text.
constexpr std::size_t kCompactThreshold = 1u << 20;

// What a line is to the reader.
enum class Shape { Blank, Comment, Header, Key, Other };

Shape shapeOf(std::string_view trimmed)
{
    if (trimmed.empty())
        return Shape::Blank;
    if (trimmed[0] == ';')
        return Shape::Comment;
    if (trimmed[0] == '[' && trimmed.find(']') != std::string_view::npos)
        return Shape::Header;
    return trimmed.find('=') != std::string_view::npos ? Shape::Key : Shape::Other;
}

std::string_view headerName(std::string_view trimmed)
{
    return trimBlanks(trimmed.substr(1, trimmed.rfind(']') - 1));
}

std::string_view keyName(std::string_view trimmed)
{
    return trimBlanks(trimmed.substr(0, trimmed.find('=')));
}

} // namespace

IniDocument IniDocument::parse(std::string_view bytes)
{
    return build(std::string(bytes));
}

IniDocument IniDocument::parseOwned(std::string &&bytes)
{
    return build(std::move(bytes));
}

IniDocument IniDocument::build(std::string &&bytes)
{
    IniDocument doc;
    doc.m_text = std::move(bytes);
    const char *data = doc.m_text.data();
    const std::size_t size = doc.m_text.size();
    doc.m_index.assign(16, Slot {});

    bool endSeen = false;
    std::uint32_t live = kNone; // the section whose lines are being read, if it can be written
    std::size_t rawStart = std::string::npos; // the raw run being gathered
    std::uint32_t pendingSection = kNone; // a section whose anchor lies in that run...
    std::uint64_t pendingOffset = 0; // ...this far into it
    const auto flushRaw = [&](std::size_t until) {
        if (rawStart == std::string::npos)
            return;
        Line raw;
        raw.begin = rawStart;
        raw.length = until - rawStart;
        const std::uint32_t id = doc.pushLine(raw);
        if (pendingSection != kNone)
            doc.m_sectionAnchor[pendingSection] = Anchor { id, pendingOffset };
        rawStart = std::string::npos;
        pendingSection = kNone;
    };

    // Searching for the next LF from every line start would be quadratic in a file of lone CRs.
    std::size_t nextLf = 0;
    bool lfKnown = false;
    std::size_t pos = 0;
    while (pos < size) {
        if (!lfKnown || nextLf < pos) {
            lfKnown = true;
            const void *lf = std::memchr(data + pos, '\n', size - pos);
            nextLf = lf ? static_cast<std::size_t>(static_cast<const char *>(lf) - data) : size;
        }
        std::size_t contentEnd = nextLf;
        std::size_t following;
        LineEnd end;
        const void *cr = std::memchr(data + pos, '\r', nextLf - pos);
        if (cr) {
            contentEnd = static_cast<std::size_t>(static_cast<const char *>(cr) - data);
            if (contentEnd + 1 == nextLf && nextLf < size) {
                end = kCrLf;
                following = nextLf + 1;
            } else {
                end = kCr;
                following = contentEnd + 1;
            }
        } else if (nextLf < size) {
            end = kLf;
            following = nextLf + 1;
        } else {
            end = kNoEnd;
            following = size;
        }
        if (!endSeen && end != kNoEnd) {
            doc.m_newLineEnd = end;
            endSeen = true;
        }

        const std::string_view t = trimBlanks(std::string_view(data + pos, contentEnd - pos));
        const Shape shape = shapeOf(t);
        bool held = false;
        if (shape == Shape::Header) {
            // A repeated section is never read or written: its lines are only bytes.
            held = doc.findEntry(kHeader, kNone, headerName(t)) == kNone;
            live = held ? static_cast<std::uint32_t>(doc.m_sectionAnchor.size()) : kNone;
        } else if (shape == Shape::Key && live != kNone) {
            held = doc.findEntry(kKey, live, keyName(t)) == kNone;
        }
        if (held) {
            flushRaw(pos);
            Line line;
            line.begin = pos;
            line.length = contentEnd - pos;
            line.kind = shape == Shape::Header ? kHeader : kKey;
            line.section = live;
            line.end = end;
            const std::uint32_t id = doc.pushLine(line);
            if (shape == Shape::Header)
                doc.m_sectionAnchor.push_back(Anchor { id, kAfterLine });
            else
                doc.m_sectionAnchor[live] = Anchor { id, kAfterLine };
            doc.indexLine(id);
        } else {
            if (rawStart == std::string::npos)
                rawStart = pos;
            // Keys and other lines of a section move the place where its new keys go.
            if (live != kNone && (shape == Shape::Key || shape == Shape::Other)) {
                pendingSection = live;
                pendingOffset = following - rawStart;
            }
        }
        pos = following;
    }
    flushRaw(size);
    return doc;
}

std::uint32_t IniDocument::pushLine(const Line &line)
{
    const auto id = static_cast<std::uint32_t>(m_lines.size());
    m_lines.push_back(line);
    if (m_last == kNone)
        m_first = id;
    else
        m_lines[m_last].next = id;
    m_last = id;
    return id;
}

std::string_view IniDocument::nameOf(const Line &line) const
{
    const std::string_view t = trimBlanks(text(line));
    return line.kind == kHeader ? headerName(t) : keyName(t);
}

std::uint32_t IniDocument::findEntry(
    LineKind kind, std::uint32_t section, std::string_view name) const
{
    if (m_index.empty())
        return kNone;
    const std::uint32_t hash = nameHash(kind == kHeader ? kNone : section, name);
    const std::size_t mask = m_index.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        const Slot &slot = m_index[i];
        if (slot.line == kNone)
            return kNone;
        if (slot.hash != hash)
            continue;
        const Line &line = m_lines[slot.line];
        if (line.kind == kind && (kind == kHeader || line.section == section)
            && equalsIgnoringCase(nameOf(line), name))
            return slot.line;
    }
}

std::uint32_t IniDocument::findSection(std::string_view name) const
{
    const std::uint32_t id = findEntry(kHeader, kNone, name);
    return id == kNone ? kNone : m_lines[id].section;
}

std::uint32_t IniDocument::findKey(std::uint32_t section, std::string_view name) const
{
    return section == kNone ? kNone : findEntry(kKey, section, name);
}

void IniDocument::place(Slot slot)
{
    const std::size_t mask = m_index.size() - 1;
    std::size_t i = slot.hash & mask;
    while (m_index[i].line != kNone)
        i = (i + 1) & mask;
    m_index[i] = slot;
}

void IniDocument::growIndex()
{
    std::vector<Slot> old(m_index.size() < 16 ? 16 : m_index.size() * 2);
    old.swap(m_index);
    for (const Slot &slot : old) {
        if (slot.line != kNone)
            place(slot);
    }
}

// Only the first line of each name goes in, so a later duplicate is never found.
void IniDocument::indexLine(std::uint32_t id)
{
    const Line &line = m_lines[id];
    const std::string_view name = nameOf(line);
    if (findEntry(line.kind, line.section, name) != kNone)
        return;
    if (2 * (m_indexed + 1) > m_index.size())
        growIndex();
    place(Slot { id, nameHash(line.kind == kHeader ? kNone : line.section, name) });
    ++m_indexed;
}

std::string_view IniDocument::wholeValue(std::string_view section, std::string_view key) const
{
    const std::uint32_t id = findKey(findSection(trimBlanks(section)), trimBlanks(key));
    if (id == kNone)
        return {};
    const std::string_view t = trimBlanks(text(m_lines[id]));
    std::string_view v = trimBlanks(t.substr(t.find('=') + 1));
    // The reader copies a C string, so a NUL ends the value.
    v = v.substr(0, v.find('\0'));
    if (v.size() >= 2 && (v[0] == '"' || v[0] == '\'') && v.back() == v[0])
        v = v.substr(1, v.size() - 2);
    return v;
}

std::string IniDocument::value(
    std::string_view section, std::string_view key, std::size_t bufferSize) const
{
    if (bufferSize == 0)
        return {};
    return std::string(wholeValue(section, key).substr(0, bufferSize - 1));
}

std::size_t IniDocument::valueLength(std::string_view section, std::string_view key) const
{
    return wholeValue(section, key).size();
}

bool IniDocument::hasKey(std::string_view section, std::string_view key) const
{
    return findKey(findSection(trimBlanks(section)), trimBlanks(key)) != kNone;
}

bool IniDocument::endsWithBreak(const Line &line) const
{
    if (line.end != kNoEnd)
        return true;
    const std::string_view t = text(line);
    return !t.empty() && (t.back() == '\n' || t.back() == '\r');
}

std::uint32_t IniDocument::insertAfter(
    Anchor anchor, std::string_view lineText, LineKind kind, std::uint32_t section)
{
    std::uint32_t after = anchor.line;
    if (after != kNone && anchor.offset != kAfterLine && anchor.offset < m_lines[after].length) {
        // Inside a raw run: it is split after the anchor line, which ends with its break.
        Line tail = m_lines[after];
        tail.begin += anchor.offset;
        tail.length -= anchor.offset;
        tail.next = m_lines[after].next;
        const auto tailId = static_cast<std::uint32_t>(m_lines.size());
        m_lines.push_back(tail);
        Line &head = m_lines[after];
        head.length = anchor.offset;
        head.end = kNoEnd;
        head.next = tailId;
        if (m_last == after)
            m_last = tailId;
    }
    Line line;
    line.begin = m_text.size();
    line.length = lineText.size();
    line.kind = kind;
    line.section = section;
    line.end = m_newLineEnd;
    m_text.append(lineText);
    const auto id = static_cast<std::uint32_t>(m_lines.size());
    if (after == kNone) {
        line.next = m_first;
        m_first = id;
        if (m_last == kNone)
            m_last = id;
    } else {
        // A line that ended the file without a break gets one before anything follows it.
        Line &previous = m_lines[after];
        if (!endsWithBreak(previous))
            previous.end = m_newLineEnd;
        line.next = previous.next;
        previous.next = id;
        if (after == m_last)
            m_last = id;
    }
    m_lines.push_back(line);
    return id;
}

void IniDocument::setValue(std::string_view section, std::string_view key, std::string_view value)
{
    const std::string_view sectionName = trimBlanks(section);
    const std::string_view keyName = trimBlanks(key);
    std::uint32_t s = findSection(sectionName);
    if (s == kNone) {
        s = static_cast<std::uint32_t>(m_sectionAnchor.size());
        std::string header;
        header.reserve(sectionName.size() + 2);
        header.append("[").append(sectionName).append("]");
        const std::uint32_t id = insertAfter(Anchor { m_last, kAfterLine }, header, kHeader, s);
        m_sectionAnchor.push_back(Anchor { id, kAfterLine });
        indexLine(id);
    } else if (const std::uint32_t id = findKey(s, keyName); id != kNone) {
        Line &line = m_lines[id];
        const std::string_view old = text(line);
        const std::size_t keep = old.find('=') + 1;
        std::string replaced;
        replaced.reserve(keep + value.size());
        replaced.append(old.substr(0, keep)).append(value);
        m_garbage += line.length;
        line.begin = m_text.size();
        line.length = replaced.size();
        m_text.append(replaced);
        if (m_garbage > kCompactThreshold && m_garbage > m_text.size() / 2)
            compact();
        return;
    }

    std::string entry;
    entry.reserve(keyName.size() + 1 + value.size());
    entry.append(keyName).append("=").append(value);
    // A key name starting with ";" or "[" would not read back as a key; it is written all the
    // same, as the platform does, but not held as one.
    const std::string_view t = trimBlanks(entry);
    const bool isKey = t[0] != ';' && !(t[0] == '[' && t.find(']') != std::string_view::npos);
    const std::uint32_t id = insertAfter(m_sectionAnchor[s], entry, isKey ? kKey : kRaw, s);
    m_sectionAnchor[s] = Anchor { id, kAfterLine };
    if (isKey)
        indexLine(id);
}

void IniDocument::compact()
{
    std::string packed;
    packed.reserve(m_text.size() - m_garbage);
    for (std::uint32_t id = m_first; id != kNone; id = m_lines[id].next) {
        Line &line = m_lines[id];
        const std::uint64_t begin = packed.size();
        packed.append(m_text, line.begin, line.length);
        line.begin = begin;
    }
    m_text.swap(packed);
    m_garbage = 0;
}

std::string IniDocument::bytes() const
{
    std::size_t total = 0;
    for (std::uint32_t id = m_first; id != kNone; id = m_lines[id].next)
        total += m_lines[id].length + 2; // room for the longest line break
    std::string out;
    out.reserve(total);
    for (std::uint32_t id = m_first; id != kNone; id = m_lines[id].next) {
        const Line &line = m_lines[id];
        out.append(m_text, line.begin, line.length);
        switch (line.end) {
        case kLf:
            out += '\n';
            break;
        case kCrLf:
            out += "\r\n";
            break;
        case kCr:
            out += '\r';
            break;
        case kNoEnd:
            break;
        }
    }
    return out;
}

} // namespace corvalog
