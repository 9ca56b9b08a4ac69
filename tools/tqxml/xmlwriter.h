#ifndef XMLWRITER_H
#define XMLWRITER_H

#include <QByteArray>
#include <QDomElement>
#include <QString>

/// What becomes of characters that XML cannot hold.
enum Unwritable { REFUSED, LEFT_OUT };

/// UTF-8 text of an element with all below: indented by one blank per level, the attributes in
/// the order of their names, so that it is the same in every run. The element itself is at the
/// given level. A null array, with an error that says why, when a character is refused.
QByteArray xmlText(
    const QDomElement &element, QString &error, Unwritable unwritable = REFUSED, int level = 0);

/// Writes xmlText() to standard output, or the error to standard error; returns the exit code.
int printXml(const QDomElement &element);

#endif
