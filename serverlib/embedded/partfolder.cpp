// Makes a new file in a folder of its own, so that nobody ever sees half of it under its name, and
// so that nothing stays for ever when the process is killed.

#include "partfolder_p.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace TQServerInternal {

namespace {

constexpr const char *PART = "part";
// A folder is named ".FILE.init-XXXXXX", with random characters in place of each X.
constexpr const char *SUFFIX = ".init-";
constexpr const char *RANDOM = "XXXXXX";

// Another process may remove a new folder before it is locked, because it looks like an orphan.
constexpr int ATTEMPTS = 100;

QByteArray folderOf(const QByteArray &path) { return path.left(path.lastIndexOf('/') + 1); }

QByteArray prefixOf(const QByteArray &target)
{
    return '.' + target.mid(target.lastIndexOf('/') + 1) + SUFFIX;
}

// Closes a descriptor and keeps errno.
void closeQuietly(int &descriptor)
{
    const int number = errno;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    descriptor = -1;
    errno = number;
}

// Opens and locks a folder; links to folders are not followed. Negative when somebody else holds
// the lock. Also when the folder of that name is no longer the one that was opened: the process
// that had the lock before has removed it.
int lockFolder(const QByteArray &path)
{
    int folder = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat opened = {};
    struct stat named = {};
    const bool isLocked = folder >= 0 && ::flock(folder, LOCK_EX | LOCK_NB) == 0 &&
        ::fstat(folder, &opened) == 0 && ::lstat(path.constData(), &named) == 0;
    if (!isLocked || opened.st_ino != named.st_ino || opened.st_dev != named.st_dev) {
        closeQuietly(folder);
    }
    return folder;
}

QStringList entriesOf(const QByteArray &folder)
{
    return QDir(QFile::decodeName(folder))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

// Removes a folder whose lock the caller holds, and the files in it.
void removeLocked(int folder, const QByteArray &path)
{
    for (const QString &name : entriesOf(path)) {
        ::unlinkat(folder, QFile::encodeName(name).constData(), 0);
    }
    ::rmdir(path.constData());
}

// Writes a file or folder at a path in a folder to the disk.
bool flush(int folder, const char *path)
{
    int descriptor = ::openat(folder, path, O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    const bool flushed = descriptor >= 0 && ::fsync(descriptor) == 0;
    closeQuietly(descriptor);
    return flushed;
}

// Gives a file in a folder its final name unless that is taken.
bool renameToNew(int folder, const char *name, const char *target)
{
    if (::renameat2(folder, name, AT_FDCWD, target, RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // File systems without that kind of renaming have links.
    return ::linkat(folder, name, AT_FDCWD, target, 0) == 0;
}

}  // namespace

PartFolder::PartFolder(const QString &target) : m_target(QFile::encodeName(target))
{
    const QByteArray pattern = folderOf(m_target) + prefixOf(m_target) + RANDOM;
    for (int i = 0; i < ATTEMPTS && m_folder < 0; ++i) {
        m_path = pattern;
        if (!::mkdtemp(m_path.data())) {
            return;
        }
        m_folder = lockFolder(m_path);
        if (!exists() && errno != EWOULDBLOCK) {
            ::rmdir(m_path.constData());
        }
    }
}

PartFolder::~PartFolder()
{
    if (exists()) {
        removeLocked(m_folder, m_path);
        closeQuietly(m_folder);
    }
}

void PartFolder::removeOrphans(const QString &target)
{
    const QByteArray file = QFile::encodeName(target);
    const QByteArray folder = folderOf(file);
    const QByteArray prefix = prefixOf(file);
    const auto size = size_t(prefix.size()) + std::strlen(RANDOM);
    for (const QString &entry : entriesOf(folder)) {
        const QByteArray name = QFile::encodeName(entry);
        if (!name.startsWith(prefix) || size_t(name.size()) != size) {
            continue;
        }
        const QByteArray path = folder + name;
        int orphan = lockFolder(path);
        if (orphan >= 0) {
            removeLocked(orphan, path);
            closeQuietly(orphan);
        }
    }
}

QString PartFolder::part() const
{
    return QFile::decodeName(m_path) + QLatin1Char('/') + QLatin1String(PART);
}

bool PartFolder::holdsPartAlone() const
{
    return entriesOf(m_path) == QStringList { QLatin1String(PART) };
}

bool PartFolder::moveToTarget()
{
    if (!flush(m_folder, PART) || !renameToNew(m_folder, PART, m_target.constData())) {
        return false;
    }
    flush(AT_FDCWD, folderOf(m_target).constData());
    return true;
}

}  // namespace TQServerInternal
