#include "IniFile.h"

#include "runtime/VbError.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace corvalog {

namespace {

constexpr off_t kMaxIniFileBytes = off_t(1) << 30;

FileError makeError(int number)
{
    return FileError { number, std::string(vbErrorDescription(number)) };
}

void report(FileError *error, FileError value)
{
    if (error)
        *error = std::move(value);
}

std::string parentFolder(const std::string &path)
{
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

} // namespace

namespace {

bool writeAll(int fd, const std::string &bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        done += static_cast<std::size_t>(n);
    }
    return true;
}

// The temporary files of saves of this file whose program has gone (killed before its rename):
// "." + the file's name + "." + the saver's process id + "." + a count + ".tmp". A live
// program's temporary is its save in progress and stays.
void removeAbandonedTemporaries(const std::string &folder, const std::string &base)
{
    DIR *entries = ::opendir(folder.c_str());
    if (!entries)
        return;
    const std::string prefix = "." + base + ".";
    while (const struct dirent *entry = ::readdir(entries)) {
        const std::string_view name = entry->d_name;
        if (name.size() <= prefix.size() + 4 || name.substr(0, prefix.size()) != prefix
            || name.substr(name.size() - 4) != ".tmp")
            continue;
        const std::string_view middle = name.substr(prefix.size(), name.size() - prefix.size() - 4);
        const std::size_t dot = middle.find('.');
        if (dot == std::string_view::npos || dot == 0 || dot + 1 == middle.size())
            continue;
        const std::string_view pidText = middle.substr(0, dot);
        const std::string_view countText = middle.substr(dot + 1);
        const auto digits = [](std::string_view t) {
            return t.size() <= 10
                && std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; });
        };
        if (!digits(pidText) || !digits(countText))
            continue;
        const long pid = std::strtol(std::string(pidText).c_str(), nullptr, 10);
        if (pid <= 0 || pid == ::getpid() || pid > std::numeric_limits<pid_t>::max())
            continue;
        if (::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH)
            ::unlinkat(::dirfd(entries), entry->d_name, 0);
    }
    ::closedir(entries);
}

} // namespace

std::optional<IniDocument> loadIniFile(const std::string &path, FileError *error)
{
    // Non-blocking so that a FIFO in the settings' place is refused instead of hanging.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        report(error, fileErrorForPath(errno, path));
        return std::nullopt;
    }
    struct stat st;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        report(error, fileErrorFromErrno(EISDIR, false));
        return std::nullopt;
    }
    if (st.st_size > kMaxIniFileBytes) {
        ::close(fd);
        report(error, makeError(7));
        return std::nullopt;
    }

    // Room for one more block, so the end of an unchanged file is seen without growing (and
    // copying) the buffer.
    std::string bytes(static_cast<std::size_t>(st.st_size) + 4096, '\0');
    std::size_t used = 0;
    for (;;) {
        if (used == bytes.size()) {
            // The file grew since fstat: read on, within the same limit.
            if (bytes.size() >= static_cast<std::size_t>(kMaxIniFileBytes)) {
                ::close(fd);
                report(error, makeError(7));
                return std::nullopt;
            }
            bytes.resize(bytes.size() + 65536);
        }
        const ssize_t n = ::read(fd, bytes.data() + used, bytes.size() - used);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            const int e = errno;
            ::close(fd);
            report(error, fileErrorFromErrno(e, false));
            return std::nullopt;
        }
        if (n == 0)
            break;
        used += static_cast<std::size_t>(n);
    }
    ::close(fd);
    bytes.resize(used);
    return IniDocument::parseOwned(std::move(bytes));
}

bool saveIniFile(const std::string &path, const IniDocument &document, FileError *error)
{
    if (path.empty()) {
        report(error, makeError(75));
        return false;
    }
    std::string target = path;
    struct stat st;
    if (::lstat(path.c_str(), &st) == 0 && S_ISLNK(st.st_mode)) {
        char resolved[PATH_MAX];
        if (::realpath(path.c_str(), resolved))
            target = resolved;
    }
    const bool exists = ::stat(target.c_str(), &st) == 0;
    if (exists) {
        if (!S_ISREG(st.st_mode)) {
            report(error, fileErrorFromErrno(EISDIR, false));
            return false;
        }
        // The rename would replace a read-only file; the platform refuses to write one.
        if (::access(target.c_str(), W_OK) != 0) {
            report(error, fileErrorFromErrno(errno, false));
            return false;
        }
    } else if (errno != ENOENT) {
        report(error, fileErrorForPath(errno, target));
        return false;
    }

    const std::string folder = parentFolder(target);
    const std::string base = target.substr(target.find_last_of('/') + 1);
    removeAbandonedTemporaries(folder, base);
    const mode_t mode = exists ? (st.st_mode & 07777) : 0666;
    std::string temporary;
    int fd = -1;
    static unsigned counter = 0;
    for (int attempt = 0; fd < 0 && attempt < 100; ++attempt) {
        temporary = folder + "/." + base + "." + std::to_string(::getpid()) + "."
            + std::to_string(++counter) + ".tmp";
        fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (fd < 0 && errno != EEXIST) {
            report(error, fileErrorForPath(errno, target));
            return false;
        }
    }
    if (fd < 0) {
        report(error, fileErrorFromErrno(EEXIST, true));
        return false;
    }
    if (exists) {
        // The umask may have cut bits the file had; owner only matters when root saves.
        (void)::fchmod(fd, mode);
        (void)::fchown(fd, st.st_uid, st.st_gid);
    }

    const std::string bytes = document.bytes();
    int failure = 0;
    // The data must be on the disk before the rename makes it the file; the file's metadata
    // (times) need not be, so fdatasync is enough.
    if (!writeAll(fd, bytes) || ::fdatasync(fd) != 0)
        failure = errno;
    // Some file systems only report a full disk when the file is closed.
    if (::close(fd) != 0 && failure == 0)
        failure = errno;
    if (failure == 0 && ::rename(temporary.c_str(), target.c_str()) != 0)
        failure = errno;
    if (failure != 0) {
        ::unlink(temporary.c_str());
        report(error, fileErrorFromErrno(failure, false));
        return false;
    }
    // The folder is not synced: a crash right after the rename may bring back the old file,
    // whole, which is all the promise is (never a half-written one) and saves a second flush.
    return true;
}

} // namespace corvalog
