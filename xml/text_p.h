#ifndef TQXML_TEXT_P_H
#define TQXML_TEXT_P_H

#include <QString>
#include <QStringView>

#include <array>
#include <string>

namespace TQXmlInternal {

// Position of the first c, or -1. For short texts it is faster than QStringView::indexOf().
inline qsizetype indexOf(QStringView text, char16_t c)
{
    const char16_t *const begin = text.utf16();
    const char16_t *const found = std::char_traits<char16_t>::find(begin, size_t(text.size()), c);
    return found ? found - begin : -1;
}

// Removes the first part that is not empty from text, with the separators around it, and returns
// it. Empty when there is none.
inline QStringView takePart(QStringView &text, char16_t separator)
{
    QStringView part;
    while (part.isEmpty() && !text.isEmpty()) {
        const qsizetype end = indexOf(text, separator);
        part = end < 0 ? text : text.left(end);
        text = end < 0 ? QStringView() : text.mid(end + 1);
    }
    return part;
}

// Calls visit with each part of text between the separators, without the empty ones.
template<typename Visit>
void forEachPart(QStringView text, char16_t separator, Visit visit)
{
    for (;;) {
        const QStringView part = takePart(text, separator);
        if (part.isEmpty()) {
            return;
        }
        visit(part);
    }
}

// @{
// Read what QString::toInt() and toUInt() read. Otherwise they return false and leave value as it
// is.
bool readNumber(QStringView text, int base, int &value);
bool readNumber(QStringView text, int base, unsigned int &value);
// @}

// The number as the library stores it: lower case, without prefix, with "-" when negative.
QString numberText(qint64 value, int base);

// The same, as a part of a buffer that has room for a sign and 64 binary digits.
using NumberBuffer = std::array<char, 65>;
QLatin1String writeNumber(NumberBuffer &buffer, qint64 value, int base);

}  // namespace TQXmlInternal

#endif
