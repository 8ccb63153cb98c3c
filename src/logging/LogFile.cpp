#include "LogFile.h"

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace corvalog {

namespace {

// How long a wait for the reader lasts before the interruption check is asked again.
constexpr int kPollMs = 100;

std::string fileNameOf(const std::string &path)
{
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool exists(const std::string &path)
{
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
}

// A name in the folder that names nothing yet: "name", then "name (2)", "name (3)", ...
std::string freeName(const std::string &folder, const std::string &name)
{
    const std::size_t dot = name.find_last_of('.');
    const std::string stem = dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
    const std::string extension = stem.size() == name.size() ? "" : name.substr(stem.size());
    std::string candidate = folder + "/" + name;
    for (int n = 2; exists(candidate) && n < 1000; ++n)
        candidate = folder + "/" + stem + " (" + std::to_string(n) + ")" + extension;
    return candidate;
}

// The descriptor a path names that the program was given: "/dev/stdout" (1), "/dev/stderr" (2),
// "/dev/fd/N" or "/proc/self/fd/N"; -1 for any other path. Opening those anew would start a
// second file description at offset 0 (and truncate), not continue the one handed down.
int inheritedDescriptor(const std::string &path)
{
    if (path == "/dev/stdout")
        return STDOUT_FILENO;
    if (path == "/dev/stderr")
        return STDERR_FILENO;
    for (const char *prefix : { "/dev/fd/", "/proc/self/fd/" }) {
        const std::string p = prefix;
        if (path.compare(0, p.size(), p) != 0 || path.size() == p.size()
            || path.size() > p.size() + 9)
            continue;
        int fd = 0;
        for (std::size_t i = p.size(); i < path.size(); ++i) {
            if (path[i] < '0' || path[i] > '9')
                return -1;
            fd = fd * 10 + (path[i] - '0');
        }
        return fd;
    }
    return -1;
}

FileError noReader()
{
    return { 68, "Device unavailable: no program has opened it for reading" };
}

} // namespace

LogFile::~LogFile()
{
    close();
}

bool LogFile::interrupted(std::int64_t waitedMs) const
{
    return m_interrupted ? m_interrupted() : waitedMs >= kStallLimitMs;
}

std::optional<FileError> LogFile::open(const std::string &path)
{
    close();
    m_truncated = false;
    m_start = m_end = 0;
    struct stat st;
    if (const int given = inheritedDescriptor(path); given >= 0) {
        const int fd = ::fcntl(given, F_DUPFD_CLOEXEC, 3);
        if (fd < 0 || ::fstat(fd, &st) != 0) {
            const int e = errno;
            if (fd >= 0)
                ::close(fd);
            return fileErrorFromErrno(e, false);
        }
        m_stream = !S_ISREG(st.st_mode);
        m_ownDescriptorFlags = false; // shared with the program that handed it down
        if (!m_stream) {
            const bool append = (::fcntl(fd, F_GETFL) & O_APPEND) != 0;
            const off_t at = append ? st.st_size : ::lseek(fd, 0, SEEK_CUR);
            m_start = m_end = at < 0 ? st.st_size : at;
        }
        m_fd = fd;
    } else if (::stat(path.c_str(), &st) == 0 && !S_ISREG(st.st_mode) && !S_ISDIR(st.st_mode)) {
        // Written for another program to read: opened for writing only, never truncated.
        int fd = -1;
        for (std::int64_t waited = 0;; waited += kPollMs) {
            fd = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
            if (fd >= 0)
                break;
            if (errno != ENXIO || !S_ISFIFO(st.st_mode))
                return fileErrorForPath(errno, path);
            if (interrupted(waited))
                return noReader();
            std::this_thread::sleep_for(std::chrono::milliseconds(kPollMs));
        }
        // Ours alone: a reader that takes nothing makes a write return rather than hang.
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
        m_stream = true;
        m_ownDescriptorFlags = true;
        m_fd = fd;
    } else {
        const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (fd < 0)
            return fileErrorForPath(errno, path);
        m_stream = false;
        m_ownDescriptorFlags = true;
        m_fd = fd;
    }
    m_path = path;
    return std::nullopt;
}

std::optional<LogFile::Failure> LogFile::fail(Failure failure)
{
    close();
    return failure;
}

std::optional<LogFile::Failure> LogFile::write(
    const std::string &row, const std::string &rescueFolder)
{
    if (m_fd < 0)
        return Failure { fileErrorFromErrno(EBADF, false), false, {} };
    if (m_stream)
        return writeToStream(row);
    // Linux lets a program write on into a deleted file; its rows would be gone at close.
    struct stat st;
    if (::fstat(m_fd, &st) == 0) {
        if (st.st_nlink == 0)
            return fail(Failure { fileErrorFromErrno(ENOENT, true), true, rescue(rescueFolder) });
        // Emptied by another program: writing at the old offset would leave a hole of NULs.
        if (st.st_size < m_end) {
            m_start = m_end = st.st_size;
            ::lseek(m_fd, st.st_size, SEEK_SET);
            m_truncated = true;
        }
    }
    std::size_t done = 0;
    while (done < row.size()) {
        const ssize_t n = ::write(m_fd, row.data() + done, row.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            Failure failure { fileErrorFromErrno(n < 0 ? errno : ENOSPC, false), false, {} };
            if (::ftruncate(m_fd, static_cast<off_t>(m_end)) != 0) {
                // The part of the row that did get in stays; the next row is never written.
            }
            return fail(failure);
        }
        done += static_cast<std::size_t>(n);
    }
    // Where the row really ended: a file opened for appending puts it at the end.
    const off_t at = ::lseek(m_fd, 0, SEEK_CUR);
    m_end = at >= 0 ? at : m_end + static_cast<std::int64_t>(row.size());
    return std::nullopt;
}

std::optional<LogFile::Failure> LogFile::writeToStream(const std::string &row)
{
    std::size_t done = 0;
    std::int64_t waited = 0;
    while (done < row.size()) {
        pollfd p { m_fd, POLLOUT, 0 };
        const int ready = ::poll(&p, 1, kPollMs);
        if (ready < 0 && errno != EINTR)
            return fail(Failure { fileErrorFromErrno(errno, false), false, {} });
        if (ready <= 0) {
            waited += kPollMs;
            if (interrupted(waited))
                return fail(Failure { noReader(), false, {}, false, true });
            continue;
        }
        if (p.revents & (POLLERR | POLLHUP))
            return fail(Failure { fileErrorFromErrno(EPIPE, false), false, {}, true });
        // A descriptor shared with others stays blocking; a pipe that said it has room takes
        // PIPE_BUF bytes without blocking.
        const std::size_t chunk = m_ownDescriptorFlags
            ? row.size() - done
            : std::min<std::size_t>(row.size() - done, PIPE_BUF);
        const ssize_t n = ::write(m_fd, row.data() + done, chunk);
        if (n < 0) {
            if (errno == EAGAIN || errno == EINTR)
                continue;
            const bool gone = errno == EPIPE;
            return fail(Failure { fileErrorFromErrno(errno, false), false, {}, gone });
        }
        done += static_cast<std::size_t>(n);
        waited = 0;
    }
    return std::nullopt;
}

std::optional<LogFile::Failure> LogFile::checkReader()
{
    if (m_fd < 0 || !m_stream)
        return std::nullopt;
    pollfd p { m_fd, POLLOUT, 0 };
    if (::poll(&p, 1, 0) > 0 && (p.revents & (POLLERR | POLLHUP)))
        return fail(Failure { fileErrorFromErrno(EPIPE, false), false, {}, true });
    return std::nullopt;
}

bool LogFile::takeTruncationNotice()
{
    const bool truncated = m_truncated;
    m_truncated = false;
    return truncated;
}

std::string LogFile::rescue(const std::string &folder) const
{
    if (folder.empty() || m_end <= m_start)
        return {};
    const std::string target = freeName(folder, fileNameOf(m_path));
    const int out = ::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (out < 0)
        return {};
    std::vector<char> buffer(1 << 16);
    off_t offset = static_cast<off_t>(m_start);
    bool ok = true;
    while (ok && offset < m_end) {
        const std::size_t want
            = std::min<std::size_t>(buffer.size(), static_cast<std::size_t>(m_end - offset));
        const ssize_t n = ::pread(m_fd, buffer.data(), want, offset);
        ok = n > 0 && ::write(out, buffer.data(), static_cast<std::size_t>(n)) == n;
        offset += n > 0 ? n : 0;
    }
    ok = ::fsync(out) == 0 && ok;
    ok = ::close(out) == 0 && ok;
    if (!ok) {
        ::unlink(target.c_str());
        return {};
    }
    return target;
}

void LogFile::close()
{
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

} // namespace corvalog
