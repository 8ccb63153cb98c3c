#include "workspace/IniDocument.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

// Input: file bytes, then optionally 0x1E and edits as section, key and value fields separated
// by 0x1F. The file must come back byte for byte; after the edits, every value written must
// read back the same from the document and from a re-read of its bytes.
namespace {

using corvalog::IniDocument;
using namespace std::string_view_literals;

std::string_view trim(std::string_view s)
{
    auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f'; };
    while (!s.empty() && blank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && blank(s.back()))
        s.remove_suffix(1);
    return s;
}

std::string lower(std::string_view s)
{
    std::string out(s);
    for (char &c : out)
        c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    return out;
}

// Text that a line break, a NUL or a name's own syntax would turn into something else on
// reading; writing it is allowed, reading it back the same is not promised.
bool roundTrips(std::string_view section, std::string_view key, std::string_view value)
{
    const std::string_view k = trim(key);
    return section.find_first_of("\r\n\0[]"sv) == std::string_view::npos
        && key.find_first_of("\r\n\0="sv) == std::string_view::npos
        && value.find_first_of("\r\n\0"sv) == std::string_view::npos
        && (k.empty() || (k[0] != ';' && k[0] != '['));
}

std::string expectedRead(std::string_view value)
{
    std::string_view v = trim(value);
    if (v.size() >= 2 && (v[0] == '"' || v[0] == '\'') && v.back() == v[0])
        v = v.substr(1, v.size() - 2);
    return std::string(v.substr(0, 254));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    const std::size_t mark = input.find('\x1e');
    const std::string_view file = input.substr(0, mark);

    IniDocument doc = IniDocument::parse(file);
    if (doc.bytes() != file)
        __builtin_trap();
    for (std::string_view probe : { ""sv, "a"sv, "k"sv, "Workspace"sv }) {
        if (doc.value(probe, probe).size() > 254 || doc.value(probe, "k"sv, 3).size() > 2)
            __builtin_trap();
    }

    std::vector<std::string_view> fields;
    if (mark != std::string_view::npos) {
        std::string_view rest = input.substr(mark + 1);
        for (std::size_t cut; (cut = rest.find('\x1f')) != std::string_view::npos;) {
            fields.push_back(rest.substr(0, cut));
            rest.remove_prefix(cut + 1);
        }
        fields.push_back(rest);
    }
    bool clean = true;
    std::map<std::pair<std::string, std::string>,
        std::tuple<std::string_view, std::string_view, std::string_view>>
        written;
    for (std::size_t i = 0; i + 2 < fields.size() && i < 3 * 16; i += 3) {
        doc.setValue(fields[i], fields[i + 1], fields[i + 2]);
        clean = clean && roundTrips(fields[i], fields[i + 1], fields[i + 2]);
        written[{ lower(trim(fields[i])), lower(trim(fields[i + 1])) }]
            = { fields[i], fields[i + 1], fields[i + 2] };
    }

    const std::string bytes = doc.bytes();
    const IniDocument reread = IniDocument::parse(bytes);
    if (reread.bytes() != bytes)
        __builtin_trap();
    if (!clean)
        return 0;
    for (const auto &[names, edit] : written) {
        const auto &[section, key, value] = edit;
        const std::string expected = expectedRead(value);
        if (doc.value(section, key) != expected || reread.value(section, key) != expected)
            __builtin_trap();
    }
    return 0;
}
