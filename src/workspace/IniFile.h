#pragma once

#include "IniDocument.h"

#include <optional>
#include <string>

namespace corvalog {

// Why a file could not be read or written: the script error number and its description
// (53 File not found, 70 Permission denied, 76 Path not found, 61 Disk full, 75 Path/File
// access error, ...).
struct FileError {
    int number = 0;
    std::string description;
};

// The script error a failed file or folder call's errno stands for. A missing entry is 53 File
// not found for a file and 76 Path not found for a folder.
FileError fileErrorFromErrno(int errnoValue, bool isFolderOperation);

// The same for a call on a file path: a missing file whose folder is missing too is "Path not
// found", as the script runtime says.
FileError fileErrorForPath(int errnoValue, const std::string &path);

// Reads an INI file. A missing file is an error (53, or 76 when its folder is missing too);
// callers that treat it as empty decide so. A folder, a device or a file over 1 GiB is refused.
std::optional<IniDocument> loadIniFile(const std::string &path, FileError *error = nullptr);

// Writes a document atomically: a temporary file beside the target is written, flushed to the
// disk and renamed over it, so a crash or a full disk never leaves a half-written file. The
// file keeps its permissions; a read-only file or a folder in the way is an error and is left
// as it was. A symbolic link is followed and the file it names is replaced.
bool saveIniFile(const std::string &path, const IniDocument &document, FileError *error = nullptr);

} // namespace corvalog
