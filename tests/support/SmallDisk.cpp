#include "SmallDisk.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/mount.h>
#include <unistd.h>

namespace corvalog {

SmallDisk::SmallDisk(int kilobytes)
{
    const char *tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/corvalog-disk-XXXXXX";
    if (!::mkdtemp(pattern.data())) {
        m_why = std::string("no folder for the disk: ") + std::strerror(errno);
        return;
    }
    m_folder = pattern;
    const std::string options = "size=" + std::to_string(kilobytes) + "k,mode=0777";
    if (::mount("tmpfs", m_folder.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, options.c_str()) != 0) {
        m_why = std::string("cannot mount a tmpfs here: ") + std::strerror(errno);
        return;
    }
    m_mounted = true;
}

SmallDisk::~SmallDisk()
{
    if (m_mounted)
        ::umount2(m_folder.c_str(), MNT_DETACH);
    if (!m_folder.empty())
        ::rmdir(m_folder.c_str());
}

} // namespace corvalog
