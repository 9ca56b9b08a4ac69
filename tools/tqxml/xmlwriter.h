#ifndef XMLWRITER_H
#define XMLWRITER_H

#include <QByteArray>
#include <QDomElement>
#include <QString>

/// What to do with characters that XML does not allow.
enum Unwritable { REFUSED, LEFT_OUT };

/// An element with its content as UTF-8: indented by one blank per level, attributes sorted by
/// name, so that it is the same in every run. The level is that of the element itself. A null
/// array, with an error, if a character is refused.
QByteArray xmlText(
    const QDomElement &element, QString &error, Unwritable unwritable = REFUSED, int level = 0);

/// The error for the first character of a text that XML does not allow; empty if there is none.
QString unwritableIn(const QString &text);

/// Writes xmlText() to standard output, or the error to standard error; returns the exit code.
int printXml(const QDomElement &element);

#endif
