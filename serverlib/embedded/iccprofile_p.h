#ifndef ICCPROFILE_P_H
#define ICCPROFILE_P_H

#include <QByteArray>
#include <QString>

#include <optional>

namespace TQServerInternal {

// An ICC profile as it is stored.
struct IccProfile
{
    // Reads a file, whose path is given as the system knows it, and checks that it is a whole
    // profile. None, with the reason, when it is not.
    static std::optional<IccProfile> read(const QByteArray &path, QString &error);
    // The name that the profile of a file is stored under: the file's, without folder and
    // extension.
    static QString nameOf(const QString &path);

    QString name;
    QString file;  // without folder
    QString deviceClass;
    QString colourSpace;
    QString version;
    QByteArray bytes;
};

}  // namespace TQServerInternal

#endif
