#ifndef ICCPROFILE_P_H
#define ICCPROFILE_P_H

#include <QByteArray>
#include <QString>

#include <optional>

namespace TQServerInternal {

// An ICC profile as it is stored.
struct IccProfile
{
    // Reads a file and checks that it is a whole profile; none, with the reason, when it is not.
    // The path is in the encoding of the file system.
    static std::optional<IccProfile> read(const QByteArray &path, QString &error);
    // The name that the profile of a file is stored under: the file's name without folder and
    // extension.
    static QString nameOf(const QString &path);

    QString name;
    QString file;  // name without folder
    QString deviceClass;
    QString colourSpace;
    QString version;
    QByteArray bytes;
};

}  // namespace TQServerInternal

#endif
