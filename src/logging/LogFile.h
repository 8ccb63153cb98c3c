#pragma once

#include "runtime/FileError.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace corvalog {

// The open log file (or recording). Every row goes to the operating system the moment it is
// written, so a killed program loses nothing it wrote. A row that cannot be written whole is
// taken back out (the file ends with the last whole row).
//
// What the path names decides how it is written:
// - a regular file is created or replaced. One deleted while open, or whose folder was
//   removed, is noticed at the next row; its rows are then copied to a file of the same name
//   in the rescue folder, since they would vanish with the file when it is closed. One emptied
//   by another program (a rotation that copies and truncates) is written on at its new end,
//   never leaving a hole of NUL bytes, and the next write says so once;
// - "/dev/stdout", "/dev/stderr" and "/dev/fd/N" are the descriptors the program was given,
//   used as they are: a file opened for appending is appended to, nothing is truncated;
// - a FIFO, a pipe, a socket or a device is opened for writing only and written as the
//   reader takes it: a reader that leaves ends the writing at once, and a reader that stops
//   reading never holds the writer longer than its interruption check allows.
class LogFile
{
public:
    LogFile() = default;
    ~LogFile();
    LogFile(const LogFile &) = delete;
    LogFile &operator=(const LogFile &) = delete;

    // Asked while a write or the opening of a FIFO waits for a reader: true ends the wait (the
    // row is not written). Without one, the wait ends after kStallLimitMs.
    void setInterruption(std::function<bool()> interrupted)
    {
        m_interrupted = std::move(interrupted);
    }

    // Opens the path as described above; the reason when it cannot.
    std::optional<FileError> open(const std::string &path);
    bool isOpen() const { return m_fd >= 0; }
    // True for a regular file (not a pipe, FIFO or terminal): it can have files beside it.
    bool isRegularFile() const { return isOpen() && !m_stream; }
    const std::string &path() const { return m_path; }

    // What went wrong with a row; the file is closed by then.
    struct Failure {
        FileError error;
        bool removed = false; // the file (or its folder) was deleted while logging
        std::string rescuedTo; // where the rows of a removed file were saved, or "" if nowhere
        bool readerGone = false; // nothing reads the pipe any more
        bool interrupted = false; // the wait for the reader was ended before the row went out
    };
    // Writes one row (or the header). On failure nothing of the row stays in a kept file.
    std::optional<Failure> write(const std::string &row, const std::string &rescueFolder = {});
    // For a stream whose reader has left: the failure, and the file closed. Costs one poll.
    std::optional<Failure> checkReader();
    // True once after a write found the file emptied by another program.
    bool takeTruncationNotice();

    void close();

private:
    std::string rescue(const std::string &folder) const;
    std::optional<Failure> writeToStream(const std::string &row);
    bool waitForReader(int fd);
    bool interrupted(std::int64_t waitedMs) const;
    std::optional<Failure> fail(Failure failure);

    int m_fd = -1;
    std::string m_path;
    bool m_stream = false;
    bool m_ownDescriptorFlags = false; // may be made non-blocking (not shared with others)
    std::int64_t m_start = 0; // where this log's rows begin in the file
    std::int64_t m_end = 0; // where they end
    bool m_truncated = false;
    std::function<bool()> m_interrupted;
    static constexpr int kStallLimitMs = 2000;
};

} // namespace corvalog
