#ifndef PARTFOLDER_P_H
#define PARTFOLDER_P_H

#include <QByteArray>
#include <QString>

namespace TQServerInternal {

// Where a new file is made before it gets its name: a folder next to the file, with a random name
// and without access for other users. The process that makes the file holds a lock on the folder; a
// folder of such a name without a lock was left by a process that was killed.
class PartFolder
{
public:
    // Makes the folder for a file of that path, which is absolute.
    explicit PartFolder(const QString &target);
    // Removes it and what is in it.
    ~PartFolder();
    PartFolder(const PartFolder &) = delete;
    PartFolder &operator=(const PartFolder &) = delete;

    // Removes the folders that killed processes have left for that file.
    static void removeOrphans(const QString &target);

    // False when the folder could not be made; errno says why.
    bool exists() const { return m_folder >= 0; }
    // Path of the part.
    QString part() const;
    // Whether nothing but the part is in the folder.
    bool holdsPartAlone() const;
    // Writes the part to the disk and moves it to the target, unless that name is taken. False,
    // with errno, when that fails.
    bool moveToTarget();

private:
    QByteArray m_target;
    QByteArray m_path;  // of the folder
    int m_folder = -1;  // descriptor, with the lock
};

}  // namespace TQServerInternal

#endif
