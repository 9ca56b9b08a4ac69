#ifndef QTCOMPAT_P_H
#define QTCOMPAT_P_H

#include <QString>
#include <QStringView>

// All that differs between Qt 5.15 and Qt 6.

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
using TextSize = int;
#else
using TextSize = qsizetype;
#endif

inline void appendTo(QString &text, QStringView part)
{
    text.append(part.data(), TextSize(part.size()));
}

#endif
