#pragma once

#include "IniDocument.h"
#include "runtime/FileError.h"

#include <optional>
#include <string>

namespace corvalog {

// Reads an INI file. A missing file is an error (53, or 76 when its folder is missing too);
// callers that treat it as empty decide so. A folder, a device or a file over 1 GiB is refused.
std::optional<IniDocument> loadIniFile(const std::string &path, FileError *error = nullptr);

// Writes a document atomically: a temporary file beside the target is written, flushed to the
// disk and renamed over it, so a crash or a full disk never leaves a half-written file. The
// file keeps its permissions; a read-only file or a folder in the way is an error and is left
// as it was. A symbolic link is followed and the file it names is replaced.
bool saveIniFile(const std::string &path, const IniDocument &document, FileError *error = nullptr);

} // namespace corvalog
