#pragma once

#include <string>

namespace corvalog {

// A real file system of a few kilobytes (a tmpfs mounted for the test), so a full disk is the
// system's own ENOSPC. Mounting needs the privilege to mount; where it is missing the disk is
// not available and the test says so.
class SmallDisk
{
public:
    explicit SmallDisk(int kilobytes);
    ~SmallDisk();
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    bool available() const { return m_mounted; }
    const std::string &why() const { return m_why; } // when not available
    std::string path(const std::string &name) const { return m_folder + "/" + name; }

private:
    std::string m_folder;
    bool m_mounted = false;
    std::string m_why;
};

} // namespace corvalog
