#include "SystemFolders.h"

#include "IniFile.h"
#include "runtime/Ascii.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>
#include <cerrno>
#include <climits>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvalog {

namespace {

// The error number MakeDir leaves unreported, as creating a folder that is there already gives it.
constexpr int kPathFileAccessError = 75;

std::string joinPath(const std::string &folder, const std::string &name)
{
    if (!folder.empty() && folder.back() == '/')
        return folder + name;
    return folder + "/" + name;
}

std::string executableFolder()
{
    char buffer[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (length <= 0)
        return {};
    const std::string exe(buffer, static_cast<std::size_t>(length));
    const std::size_t slash = exe.rfind('/');
    if (slash == std::string::npos)
        return {};
    return slash == 0 ? std::string("/") : exe.substr(0, slash);
}

// The folder the desktop designates. A fresh account may not have it yet; the program only
// ever creates its own folder inside, so the designated one is made here, as a desktop would.
std::string standardFolder(QStandardPaths::StandardLocation location)
{
    const QString folder = QStandardPaths::writableLocation(location);
    if (!folder.isEmpty())
        QDir().mkpath(folder);
    return folder.toStdString();
}

} // namespace

SystemFolders SystemFolders::current()
{
    SystemFolders folders;
    // The application object knows the executable's folder best; without one (tools started
    // before it, tests) the kernel's link to the running image gives the same answer.
    folders.programFolder = QCoreApplication::instance()
        ? QCoreApplication::applicationDirPath().toStdString()
        : executableFolder();
    folders.localAppData = standardFolder(QStandardPaths::GenericDataLocation);
    folders.documents = standardFolder(QStandardPaths::DocumentsLocation);
    return folders;
}

bool FolderExists(const std::string &path)
{
    struct stat info;
    return !path.empty() && ::stat(path.c_str(), &info) == 0;
}

void MakeDir(const std::string &path, UserPrompts &prompts)
{
    if (FolderExists(path))
        return;
    if (::mkdir(path.c_str(), 0777) == 0)
        return;
    const int number = fileErrorFromErrno(errno, true).number;
    if (number == kPathFileAccessError)
        return;
    prompts.message("Error",
        "Error " + std::to_string(number) + " while attempting to create folder: " + path,
        PromptIcon::Critical);
}

SettingsPaths setUpPaths(const SystemFolders &folders, UserPrompts &prompts)
{
    SettingsPaths paths;
    paths.programFolder = folders.programFolder;

    paths.settingsFolder = folders.localAppData.empty()
        ? folders.programFolder
        : joinPath(folders.localAppData, kProgramName);
    MakeDir(paths.settingsFolder, prompts);

    paths.logFolder = folders.documents.empty()
        ? folders.programFolder
        : joinPath(folders.documents, std::string(kProgramName) + " Logs");
    MakeDir(paths.logFolder, prompts);

    // A Config.INI beside the program makes a portable installation: its settings travel with it.
    if (FolderExists(pathIgnoringCase(folders.programFolder, "Config.INI")))
        paths.settingsFolder = folders.programFolder;

    paths.settingsFile = pathIgnoringCase(paths.settingsFolder, "config.ini");
    return paths;
}

std::string pathIgnoringCase(const std::string &folder, const std::string &name)
{
    const std::string exact = joinPath(folder, name);
    if (FolderExists(exact))
        return exact;
    DIR *dir = ::opendir(folder.empty() ? "/" : folder.c_str());
    if (!dir)
        return exact;
    // Several spellings can sit side by side here; taking the smallest keeps the choice the
    // same from run to run whatever order the directory lists them in.
    std::string best;
    while (const dirent *entry = ::readdir(dir)) {
        const std::string_view candidate(entry->d_name);
        if (equalsIgnoringCase(candidate, name) && (best.empty() || candidate < best))
            best = candidate;
    }
    ::closedir(dir);
    return best.empty() ? exact : joinPath(folder, best);
}

} // namespace corvalog
