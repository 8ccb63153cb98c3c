#pragma once

#include "IniDocument.h"

#include <string>
#include <string_view>

namespace corvalog {

// The longest value ReadINI gives back: the platform's reader fills a buffer of 255 characters
// with its terminating NUL.
constexpr std::size_t kIniValueLength = 254;

// The two settings primitives, for use from one thread. ReadINI gives the stored value (at
// most 254 characters), the Default when the value is empty, and "" for the stored text
// "*NULL*"; when the file, section or key is missing it gives the Default as the platform's
// reader copies it (without trailing spaces, at most 254 characters, and "" for "*NULL*").
// WriteINI changes one value in place, creating the file when it is missing; true when the
// file was written. A section, key or value holding CR or LF is refused (false, nothing
// written): written raw it would end its line and add keys of its own. Parsed files are cached and
// checked against the file on every call.
std::string ReadINI(const std::string &FileName, std::string_view Section, std::string_view Key,
    std::string_view Default);
bool WriteINI(const std::string &FileName, std::string_view Section, std::string_view Key,
    std::string_view Value);

// True when the text holds CR or LF, which WriteINI refuses.
bool hasLineBreak(std::string_view text);

// ReadINI's rule applied to a document already in memory (a workspace load reads one file
// once, with exactly the per-key results ReadINI would give).
std::string readIniValue(const IniDocument &document, std::string_view Section,
    std::string_view Key, std::string_view Default);

} // namespace corvalog
