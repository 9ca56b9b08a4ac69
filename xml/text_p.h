#ifndef TEXT_P_H
#define TEXT_P_H

#include <QString>
#include <QStringView>

// Calls visit with each part of text between the separators, without the empty ones.
template<typename Visit>
void forEachPart(QStringView text, QChar separator, Visit visit)
{
    while (!text.isEmpty()) {
        const auto end = text.indexOf(separator);
        const QStringView part = end < 0 ? text : text.left(end);
        if (!part.isEmpty()) {
            visit(part);
        }
        text = end < 0 ? QStringView() : text.mid(end + 1);
    }
}

// @{
// Read what QString::toInt() and toUInt() read; false, with value as it was, when they cannot.
bool readNumber(QStringView text, int base, int &value);
bool readNumber(QStringView text, int base, unsigned int &value);
// @}

// The number as the library stores it: lower case, without prefix, with "-" when negative.
QString numberText(qint64 value, int base);

#endif
