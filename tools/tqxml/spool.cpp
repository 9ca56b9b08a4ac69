#include "spool.h"

#include "command.h"
#include "streams.h"

namespace {

constexpr int CHUNK = 1 << 20;

}  // namespace

bool Spool::write(const QByteArray &bytes)
{
    m_bytes += bytes;
    return m_bytes.size() <= CHUNK || flush();
}

int Spool::print()
{
    if (m_file.isOpen()) {
        m_file.seek(0);
    }
    int code = DONE;
    while (code == DONE && m_file.isOpen() && !m_file.atEnd()) {
        code = writeOutput(m_file.read(CHUNK));
    }
    return code == DONE ? writeOutput(m_bytes) : code;
}

bool Spool::open()
{
    m_file.setAutoRemove(false);
    // It loses its name at once, so that nothing is left however the process ends.
    return m_file.isOpen() || (m_file.open() && QFile::remove(m_file.fileName()));
}

bool Spool::flush()
{
    const bool isKept = open() && m_file.write(m_bytes) == m_bytes.size() && m_file.flush();
    if (!isKept) {
        m_error = QStringLiteral("temporary file: %1").arg(m_file.errorString());
    }
    m_bytes.clear();
    return isKept;
}
