#include "FileError.h"

#include "VbError.h"

#include <cerrno>
#include <sys/stat.h>

namespace corvalog {

namespace {

FileError makeError(int number)
{
    return FileError { number, std::string(vbErrorDescription(number)) };
}

bool folderOfExists(const std::string &path)
{
    const std::size_t slash = path.find_last_of('/');
    const std::string folder
        = slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
    struct stat st;
    return ::stat(folder.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

} // namespace

FileError fileErrorFromErrno(int errnoValue, bool isFolderOperation)
{
    switch (errnoValue) {
    case ENOENT:
        return isFolderOperation ? makeError(76) : makeError(53);
    case ENOTDIR:
        return makeError(76);
    case EACCES:
    case EPERM:
    case EROFS:
        return makeError(70);
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return makeError(61);
    case EEXIST:
        // MkDir on an existing folder is an access error, not "already exists".
        return isFolderOperation ? makeError(75) : makeError(58);
    case EMFILE:
    case ENFILE:
        return makeError(67);
    case ENAMETOOLONG:
    case EINVAL:
        return makeError(52);
    case EIO:
        return makeError(57);
    case ENXIO:
    case ENODEV:
        return makeError(68);
    case ENOMEM:
        return makeError(7);
    case EXDEV:
        return makeError(74);
    default: // EISDIR, ENOTEMPTY, EBUSY, ELOOP, ...
        return makeError(75);
    }
}

FileError fileErrorForPath(int errnoValue, const std::string &path)
{
    return fileErrorFromErrno(errnoValue, errnoValue == ENOENT && !folderOfExists(path));
}

} // namespace corvalog
