#ifndef PARTFOLDER_P_H
#define PARTFOLDER_P_H

#include <QByteArray>
#include <QString>

namespace TQServerInternal {

// Where a new file is made before it gets its name: a folder beside it, of random name and for its
// owner alone. A lock on the folder says that its owner lives; a folder of such a name without one
// was left by a process that was killed.
class PartFolder
{
public:
    // Makes the folder for a file of that path, which is absolute.
    explicit PartFolder(const QString &target);
    // Removes it and what is in it.
    ~PartFolder();
    PartFolder(const PartFolder &) = delete;
    PartFolder &operator=(const PartFolder &) = delete;

    // Removes what killed processes have left of that file.
    static void removeOrphans(const QString &target);

    // False when the folder could not be made; errno says why.
    bool exists() const { return m_folder >= 0; }
    // Path of the part.
    QString part() const;
    // Whether the part is all that is in the folder.
    bool holdsPartAlone() const;
    // Writes the part out to the disk and moves it to the target, unless there is something of that
    // name. False, with errno, when that fails.
    bool moveToTarget();

private:
    QByteArray m_target;
    QByteArray m_path;  // of the folder
    int m_folder = -1;  // descriptor, with the lock
};

}  // namespace TQServerInternal

#endif
