#pragma once

#include "workspace/IniFile.h"

#include <cstdint>
#include <optional>
#include <string>

namespace corvalog {

// The open log file. Every row goes to the operating system the moment it is written, so a
// killed program loses nothing it wrote. A row that cannot be written whole is taken back out
// (the file ends with the last whole row). A file deleted while open, or whose folder was
// removed, is noticed at the next row; its rows are then copied to a file of the same name in
// the rescue folder, since they would vanish with the file when it is closed.
class LogFile
{
public:
    LogFile() = default;
    ~LogFile();
    LogFile(const LogFile &) = delete;
    LogFile &operator=(const LogFile &) = delete;

    // Creates or replaces the file; the reason when it cannot.
    std::optional<FileError> open(const std::string &path);
    bool isOpen() const { return m_fd >= 0; }
    const std::string &path() const { return m_path; }

    // What went wrong with a row; the file is closed by then.
    struct Failure {
        FileError error;
        bool removed = false; // the file (or its folder) was deleted while logging
        std::string rescuedTo; // where the rows of a removed file were saved, or "" if nowhere
    };
    // Writes one row (or the header). On failure nothing of the row stays in the file.
    std::optional<Failure> write(const std::string &row, const std::string &rescueFolder = {});

    void close();

private:
    std::string rescue(const std::string &folder) const;

    int m_fd = -1;
    std::string m_path;
    std::int64_t m_size = 0;
};

} // namespace corvalog
