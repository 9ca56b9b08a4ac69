#ifndef COMPARISON_H
#define COMPARISON_H

#include <QByteArray>
#include <QString>

#include <string_view>

/// Finds the first difference of two packet texts. The first text must outlive this object.
class Comparison
{
public:
    Comparison(const QByteArray &text, const QByteArray &other);

    bool isEqual() const { return m_isEqual; }
    /// Number of the first line that differs; the first line is 1.
    qint64 line() const;
    /// First word of that line.
    QString word() const;
    /// How many items and lists are open before that line.
    int levels() const;

private:
    size_t lineStart() const;

    const std::string_view m_text;
    const bool m_isEqual;
    size_t m_at;  // the first byte that differs
};

#endif
