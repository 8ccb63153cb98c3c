#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvalog {

// A private-profile (INI) file held in memory, read and edited with the platform's
// private-profile rules:
// - a line break is LF, CR LF or a lone CR;
// - section and key names match without regard to case, with blanks around them trimmed;
// - a section header is a line starting with "[" that has a "]"; its name is the text up to
//   the last "]" (a "[" line without "]" is an ordinary line of the section it is in);
// - the first matching section, and in it the first matching key, win: a repeated section's
//   keys are never read or written;
// - ";" comment lines, lines without "=" and lines before any section are never keys;
// - a value is the text after the first "=", trimmed of blanks, with one pair of enclosing
//   quotes (" or ') removed;
// - an edit replaces the value in place and keeps every other line, byte for byte; a new key
//   goes after the last line of its section that is neither blank nor a comment, a new
//   section (with no blank line before it) at the end of the document;
// - new lines end as the file's first line does (LF for a new file).
// Files are bytes: nothing here depends on an encoding. Reads and edits cost time in
// proportion to the names involved, not to the document's size, and the memory a document
// takes beyond its bytes follows the headers and keys it holds, so a document can be large.
// Not safe to share between threads while one of them edits it.
class IniDocument
{
public:
    IniDocument() = default;
    // The document a file's bytes make (any bytes: a NUL or a binary blob is only text here).
    static IniDocument parse(std::string_view bytes);
    // The same, keeping `bytes` as the document's storage instead of copying them.
    static IniDocument parseOwned(std::string &&bytes);

    // The value of a key as the platform's reader fills a buffer of `bufferSize` characters:
    // at most bufferSize - 1 characters, ending at a NUL; empty when the section or key is
    // missing or the value is empty.
    std::string value(
        std::string_view section, std::string_view key, std::size_t bufferSize = 255) const;
    // The length of a key's whole value, as value() would give it with a buffer of any size.
    std::size_t valueLength(std::string_view section, std::string_view key) const;
    // True when the section has the key, even with an empty value.
    bool hasKey(std::string_view section, std::string_view key) const;
    // Writes a value (a key that is present is changed in place). The text is written as it is:
    // a line break or "=" in a name, or a line break in the value, is the caller's concern.
    void setValue(std::string_view section, std::string_view key, std::string_view value);

    // The document as file bytes.
    std::string bytes() const;

private:
    static constexpr std::uint32_t kNone = 0xFFFFFFFFu;
    static constexpr std::uint64_t kAfterLine = ~std::uint64_t(0);
    enum LineEnd : std::uint8_t { kNoEnd, kLf, kCrLf, kCr };
    // Only the lines that can be read or written are held one by one: the first header of
    // each section name and the first key of each name in it. Everything else (blank lines,
    // comments, lines before the first section, repeated sections and keys) is kept as raw
    // runs of bytes with their line breaks, so memory follows what a file holds, not its
    // number of lines.
    enum LineKind : std::uint8_t { kHeader, kKey, kRaw };

    // One entry: its text lies in m_text (original bytes first, then edited and added lines).
    // Entries are chained in document order, so adding one never moves the others.
    struct Slot {
        std::uint32_t line = kNone;
        std::uint32_t hash = 0;
    };
    struct Line {
        std::uint64_t begin = 0;
        std::uint64_t length = 0;
        std::uint32_t next = kNone;
        std::uint32_t section = kNone; // ordinal of the section a header or key belongs to
        LineKind kind = kRaw;
        LineEnd end = kNoEnd; // the break after the text (a raw run holds its own)
    };
    // Where a new key of a section goes: after an entry, or inside a raw run after the line
    // that ends `offset` bytes into it (the last line of the section that is neither blank nor
    // a comment).
    struct Anchor {
        std::uint32_t line = kNone;
        std::uint64_t offset = kAfterLine;
    };

    static IniDocument build(std::string &&bytes);
    std::string_view text(const Line &line) const
    {
        return std::string_view(m_text).substr(line.begin, line.length);
    }
    std::string_view nameOf(const Line &line) const;
    std::string_view wholeValue(std::string_view section, std::string_view key) const;
    std::uint32_t findSection(std::string_view name) const;
    std::uint32_t findKey(std::uint32_t section, std::string_view name) const;
    std::uint32_t findEntry(LineKind kind, std::uint32_t section, std::string_view name) const;
    void indexLine(std::uint32_t id);
    void growIndex();
    void place(Slot slot);
    std::uint32_t pushLine(const Line &line);
    bool endsWithBreak(const Line &line) const;
    std::uint32_t insertAfter(
        Anchor anchor, std::string_view text, LineKind kind, std::uint32_t section);
    void compact();

    std::string m_text;
    std::vector<Line> m_lines;
    std::vector<Anchor> m_sectionAnchor; // per section: where a new key goes
    std::vector<Slot> m_index; // open-addressing table of the first header or key of each name
    std::size_t m_indexed = 0;
    std::size_t m_garbage = 0; // bytes of m_text no line uses any more
    std::uint32_t m_first = kNone;
    std::uint32_t m_last = kNone;
    LineEnd m_newLineEnd = kLf;
};

} // namespace corvalog
