#ifndef NEAREST_H
#define NEAREST_H

#include <QStringList>

/// The word that was probably meant; a null string if none is near.
QString nearest(const QString &word, const QStringList &words);

/// "there is no format "jsn"; did you mean json?", or which there are if none is near.
QString noSuch(const QString &what, const QString &word, const QStringList &words);

#endif
