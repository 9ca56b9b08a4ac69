#ifndef COMPARISON_H
#define COMPARISON_H

#include <QByteArray>
#include <QString>

#include <string_view>

/// A packet text, which must outlive this, and where another one starts to differ from it.
class Comparison
{
public:
    Comparison(const QByteArray &text, const QByteArray &other);

    bool isEqual() const { return m_isEqual; }
    /// Number of the first line that differs, from 1 on.
    qint64 line() const;
    /// First word of that line.
    QString word() const;
    /// Levels of items and lists that are open before that line.
    int levels() const;

private:
    size_t lineStart() const;

    const std::string_view m_text;
    const bool m_isEqual;
    size_t m_at;  // the first byte that differs
};

#endif
