// Disks without room, for tests.
#ifndef KOVDOA_TESTS_DISKROOM_H
#define KOVDOA_TESTS_DISKROOM_H

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <csignal>
#include <cstddef>
#include <string>

namespace ResultTesting {

// While it lives, no file of this process can grow beyond so many bytes: writes fall short or fail, as they do on a
// full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(std::size_t bytes) : m_signalBefore(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit = {static_cast<rlim_t>(bytes), m_before.rlim_max};
        m_isSet = setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signalBefore);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

    bool isSet() const { return m_isSet; }

private:
    void (*m_signalBefore)(int);
    rlimit m_before = {};
    bool m_isSet = false;
};

// A disk in memory with room for so many bytes, seen by the calling thread and the threads it starts from now on.
// Mounting takes privileges; tests skip where isMounted() is false.
class SmallDisk
{
public:
    explicit SmallDisk(std::size_t bytes)
    {
        // In a namespace of its own, so that nothing stays mounted should the process die.
        if (unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0) {
            m_isMounted = mountWith(0, bytes);
        }
    }
    ~SmallDisk()
    {
        if (m_isMounted) {
            umount2(mountPoint().constData(), MNT_DETACH);
        }
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isMounted() const { return m_isMounted; }
    bool resize(std::size_t bytes) const { return mountWith(MS_REMOUNT, bytes); }
    QString path(const QString& name) const { return m_folder.filePath(name); }
    int files(const QString& folder) const { return QDir(path(folder)).entryList(QDir::Files).size(); }

private:
    QByteArray mountPoint() const { return QFile::encodeName(m_folder.path()); }
    bool mountWith(unsigned long flags, std::size_t bytes) const
    {
        const std::string size = "size=" + std::to_string(bytes);
        return mount("tmpfs", mountPoint().constData(), "tmpfs", flags, size.c_str()) == 0;
    }

    QTemporaryDir m_folder;
    bool m_isMounted = false;
};

}  // namespace ResultTesting

#endif
