#include "LogFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace corvalog {

namespace {

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

} // namespace

LogFile::~LogFile()
{
    close();
}

std::optional<FileError> LogFile::open(const std::string &path)
{
    close();
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return fileErrorForPath(errno, path);
    m_fd = fd;
    m_path = path;
    m_size = 0;
    return std::nullopt;
}

std::optional<LogFile::Failure> LogFile::write(
    const std::string &row, const std::string &rescueFolder)
{
    if (m_fd < 0)
        return Failure { fileErrorFromErrno(EBADF, false), false, {} };
    // Linux lets a program write on into a deleted file; its rows would be gone at close.
    struct stat st;
    if (::fstat(m_fd, &st) == 0 && st.st_nlink == 0) {
        Failure failure { fileErrorFromErrno(ENOENT, true), true, rescue(rescueFolder) };
        close();
        return failure;
    }
    std::size_t done = 0;
    while (done < row.size()) {
        const ssize_t n = ::write(m_fd, row.data() + done, row.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            Failure failure { fileErrorFromErrno(n < 0 ? errno : ENOSPC, false), false, {} };
            if (::ftruncate(m_fd, static_cast<off_t>(m_size)) != 0) {
                // The part of the row that did get in stays; the next row is never written.
            }
            close();
            return failure;
        }
        done += static_cast<std::size_t>(n);
    }
    m_size += static_cast<std::int64_t>(row.size());
    return std::nullopt;
}

std::string LogFile::rescue(const std::string &folder) const
{
    if (folder.empty() || m_size == 0)
        return {};
    const std::string target = freeName(folder, fileNameOf(m_path));
    const int out = ::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (out < 0)
        return {};
    std::vector<char> buffer(1 << 16);
    off_t offset = 0;
    bool ok = true;
    while (ok && offset < m_size) {
        const ssize_t n = ::pread(m_fd, buffer.data(), buffer.size(), offset);
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
