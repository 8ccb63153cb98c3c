#pragma once

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

} // namespace corvalog
