#ifndef QTCOMPAT_P_H
#define QTCOMPAT_P_H

#include <QtGlobal>

// All that differs between Qt 5.15 and Qt 6.

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
using TextSize = int;
#else
using TextSize = qsizetype;
#endif

#endif
