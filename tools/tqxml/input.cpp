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
    look(data, taken);
    m_allowed -= std::max<qint64>(taken, 0);
    return taken;
}

// Follows the characters of UTF-8: a first byte, and the 0 to 3 bytes that it announces.
void Input::look(const char *data, qint64 size)
{
    for (qint64 i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(data[i]);
        const bool isFollowing = (byte & 0xc0) == 0x80;
        const bool isWrong = isFollowing != (m_following > 0) || byte >= 0xf8;
        if (isWrong && m_lineNotInUtf8 == 0) {
            m_lineNotInUtf8 = m_lines;
        }
        m_following = isFollowing ? m_following - 1
            : byte < 0xc0         ? 0
            : byte < 0xe0         ? 1
            : byte < 0xf0         ? 2
                                  : 3;
        m_lines += byte == LINE_FEED;
    }
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
