#include "comparison.h"

#include <algorithm>

namespace {

constexpr char LINE_FEED = '\n';

}  // namespace

Comparison::Comparison(const QByteArray &text, const QByteArray &other)
    : m_text(text.constData(), size_t(text.size())), m_isEqual(text == other)
{
    const std::string_view with(other.constData(), size_t(other.size()));
    const size_t shorter = std::min(m_text.size(), with.size());
    m_at = size_t(std::mismatch(m_text.begin(), m_text.begin() + shorter, with.begin()).first -
        m_text.begin());
}

qint64 Comparison::line() const
{
    return 1 + std::count(m_text.begin(), m_text.begin() + m_at, LINE_FEED);
}

QString Comparison::word() const
{
    const size_t start = lineStart();
    const size_t end = std::min(m_text.find(' ', start), m_text.size());
    return QString::fromUtf8(m_text.data() + start, int(end - start));
}

int Comparison::levels() const
{
    int levels = 0;
    for (size_t at = 0; at < lineStart(); at = m_text.find(LINE_FEED, at) + 1) {
        const std::string_view word = m_text.substr(at, 3);
        levels += (word == "SI " || word == "SL ") - (word == "TI " || word == "TL ");
    }
    return levels;
}

size_t Comparison::lineStart() const
{
    const size_t end = m_at == 0 ? std::string_view::npos : m_text.rfind(LINE_FEED, m_at - 1);
    return end == std::string_view::npos ? 0 : end + 1;
}
