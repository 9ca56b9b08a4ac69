#include "spool.h"

#include "command.h"
#include "streams.h"

namespace {

constexpr int CHUNK = 1 << 20;
const QString TEMPORARY_FILE = QStringLiteral("temporary file: ");

}  // namespace

bool Spool::write(const QByteArray &bytes)
{
    m_bytes += bytes;
    return m_bytes.size() <= CHUNK || flush();
}

int Spool::print()
{
    const int code = m_file.isOpen() ? printFile() : DONE;
    return code == DONE ? writeOutput(m_bytes) : code;
}

int Spool::printFile()
{
    int code = m_file.seek(0) ? DONE : FAILED;
    QByteArray bytes = m_file.read(CHUNK);
    for (; code == DONE && !bytes.isEmpty(); bytes = m_file.read(CHUNK)) {
        code = writeOutput(bytes);
    }
    return m_file.error() == QFile::NoError ? code : fail(TEMPORARY_FILE + m_file.errorString());
}

bool Spool::open()
{
    m_file.setAutoRemove(false);
    // The file is unlinked at once, so it is gone however the process ends.
    return m_file.isOpen() || (m_file.open() && QFile::remove(m_file.fileName()));
}

bool Spool::flush()
{
    const int error = open() ? writeTo(m_file.handle(), m_bytes) : 0;
    if (!m_file.isOpen() || error != 0) {
        m_error = TEMPORARY_FILE + (error == 0 ? m_file.errorString() : reasonOf(error));
    }
    m_bytes.clear();
    return m_error.isEmpty();
}
