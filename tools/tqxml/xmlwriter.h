#ifndef XMLWRITER_H
#define XMLWRITER_H

#include <QByteArray>
#include <QDomElement>
#include <QString>

/// UTF-8 text of an element with all below: indented by one blank per level, the attributes in
/// the order of their names, so that it is the same in every run. A null array, with an error
/// that says why, for characters that XML cannot hold, unless these are left out.
QByteArray xmlText(const QDomElement &element, QString &error, bool leavesOut = false);

/// Writes xmlText() to standard output, or the error to standard error; returns the exit code.
int printXml(const QDomElement &element);

#endif
