#include "input.h"

#include <algorithm>

#include <unistd.h>

namespace {

constexpr qint64 CHUNK = 1 << 16;
constexpr char LINE_FEED = '\n';

}  // namespace

QString tooLarge(qint64 line)
{
    return QStringLiteral("line %1: an item has more than 16 MiB of text or %2 values; "
                          "--no-limit converts it all the same")
        .arg(line)
        .arg(MAX_ITEM_VALUES);
}

bool Input::isStandardInput() const { return m_name == QLatin1String("-"); }

bool Input::openFile()
{
    const OpenMode mode = ReadOnly | Unbuffered;
    const bool isOpen = isStandardInput() ? m_file.open(STDIN_FILENO, mode) : m_file.open(mode);
    if (!isOpen) {
        setErrorString(m_file.errorString());
        return false;
    }
    return QIODevice::open(mode);
}

QString Input::label() const
{
    return isStandardInput() ? QStringLiteral("standard input")
        : m_name.isEmpty()   ? QStringLiteral("\"\"")
                             : m_name;
}

qint64 Input::readData(char *data, qint64 size)
{
    if (isOverLimit()) {
        return -1;
    }
    const qint64 taken = m_file.read(data, size);
    if (taken < 0) {
        m_readError = m_file.errorString();
    }
    m_allowed -= std::max<qint64>(taken, 0);
    return taken;
}

QByteArray LineReader::take(qint64 most)
{
    QByteArray line;
    while (!line.endsWith(LINE_FEED) && line.size() <= most && (m_at < m_bytes.size() || fill())) {
        const auto end = m_bytes.indexOf(LINE_FEED, m_at);
        const auto next = end < 0 ? m_bytes.size() : end + 1;
        line += m_bytes.mid(m_at, next - m_at);
        m_at = int(next);
    }
    ++m_number;
    return line;
}

bool LineReader::fill()
{
    m_bytes = m_input.read(CHUNK);
    m_at = 0;
    return !m_bytes.isEmpty();
}
