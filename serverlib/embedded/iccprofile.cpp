// Reads ICC profiles. A profile is a header of 128 bytes, which begins with the size of the whole
// profile, the number of tags, a table with the place of each tag, and the tags.

#include "iccprofile_p.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#define CMS_NO_REGISTER_KEYWORD  // which C++17 does not know
#include <lcms2.h>

namespace TQServerInternal {

namespace {

constexpr int HEADER_SIZE = 128;
// Offsets in the header.
enum HeaderField { SizeAt = 0, DeviceClassAt = 12, ColourSpaceAt = 16, SignatureAt = 36 };
constexpr qint64 MAX_SIZE = 64 << 20;

qint64 numberAt(const QByteArray &bytes, int at)
{
    return qFromBigEndian<quint32>(bytes.constData() + at);
}

struct CloseProfile
{
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
using OpenProfile = std::unique_ptr<void, CloseProfile>;

// Opens a regular file and nothing else. Does not wait for the writer of a FIFO.
bool openFile(QFile &file, const QByteArray &path, QString &error)
{
    const int descriptor = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    struct stat status = {};
    const bool isOpen = descriptor >= 0 && ::fstat(descriptor, &status) == 0;
    const bool isFile = isOpen && S_ISREG(status.st_mode);
    if (!isFile) {
        error =
            isOpen ? QStringLiteral("not a file") : QString::fromLocal8Bit(std::strerror(errno));
    }
    if (isFile &&
        file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered,
            QFileDevice::AutoCloseHandle)) {
        return true;
    }
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    return false;
}

// Reads a file that is as long as its header says; false with the reason when it is not.
bool readWhole(QFile &file, QByteArray &bytes, QString &reason)
{
    const qint64 size = file.size();
    bytes = file.read(HEADER_SIZE);
    if (bytes.size() < HEADER_SIZE) {
        reason = QStringLiteral("%1 bytes, less than a header").arg(bytes.size());
        return false;
    }
    if (bytes.mid(SignatureAt, 4) != "acsp") {
        reason = QStringLiteral("no signature \"acsp\"");
        return false;
    }
    const qint64 expected = numberAt(bytes, SizeAt);
    if (size != expected) {
        reason = QStringLiteral("%1 bytes, the header says %2").arg(size).arg(expected);
        return false;
    }
    if (size > MAX_SIZE) {
        reason = QStringLiteral("%1 bytes, more than %2").arg(size).arg(MAX_SIZE);
        return false;
    }
    bytes += file.read(size - HEADER_SIZE);
    reason = QStringLiteral("%1 bytes can be read of %2").arg(bytes.size()).arg(size);
    return bytes.size() == size;
}

// Four characters of the header, without the blanks at their end; empty unless all are printable
// ASCII.
QString wordAt(const QByteArray &bytes, int at)
{
    const QByteArray word = bytes.mid(at, 4);
    const bool isPrintable = std::all_of(word.begin(), word.end(),
        [](char character) { return character >= ' ' && character <= '~'; });
    return isPrintable ? QString::fromLatin1(word).trimmed() : QString();
}

// Reads the values that are stored out of a profile's header; false with the reason when the
// profile is damaged.
bool readHeader(IccProfile &profile, QString &reason)
{
    const QByteArray &bytes = profile.bytes;
    profile.deviceClass = wordAt(bytes, DeviceClassAt);
    profile.colourSpace = wordAt(bytes, ColourSpaceAt);
    if (profile.deviceClass.isEmpty() || profile.colourSpace.isEmpty()) {
        reason = QStringLiteral("no class and colour space that can be printed");
        return false;
    }
    const OpenProfile open(
        cmsOpenProfileFromMem(bytes.constData(), static_cast<cmsUInt32Number>(bytes.size())));
    if (!open) {
        reason = QStringLiteral("no header and table of tags that can be read");
        return false;
    }
    const cmsUInt32Number version = cmsGetEncodedICCversion(open.get());
    profile.version = QStringLiteral("%1.%2").arg(version >> 24).arg(version >> 20 & 0xf);
    // lcms2 does not count tags that lie outside the profile.
    const qint64 tags = numberAt(bytes, HEADER_SIZE);
    const qint64 found = cmsGetTagCount(open.get());
    reason = QStringLiteral("of %1 tags, %2 lie in the file").arg(tags).arg(found);
    return found == tags && tags > 0;
}

QString fileName(const QString &path) { return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1); }

}  // namespace

std::optional<IccProfile> IccProfile::read(const QByteArray &path, QString &error)
{
    const QString shown = QFile::decodeName(path);
    QFile file;
    QString reason;
    if (!openFile(file, path, reason)) {
        error = QStringLiteral("%1: %2").arg(shown, reason);
        return {};
    }
    IccProfile profile;
    profile.name = nameOf(shown);
    profile.file = fileName(shown);
    if (!readWhole(file, profile.bytes, reason) || !readHeader(profile, reason)) {
        error = QStringLiteral("%1: not a whole ICC profile: %2").arg(shown, reason);
        return {};
    }
    return profile;
}

QString IccProfile::nameOf(const QString &path)
{
    const QString file = fileName(path);
    const auto extension = file.lastIndexOf(QLatin1Char('.'));
    return extension > 0 ? file.left(extension) : file;
}

}  // namespace TQServerInternal
