#ifndef FIELDBUILDERS_P_H
#define FIELDBUILDERS_P_H

#include "fieldtable_p.h"

#include <QDomDocument>
#include <QStringView>

// Appends a new element of that shape to parent, filled from the text of its line. The document is
// the parent's: asking each parent for it anew would cost its depth.
QDomElement buildField(Shape shape, QDomDocument &document, QDomElement &parent,
    const QString &name, QStringView text);

// A new element without a parent, with one attribute unless its value is empty.
QDomElement makeElement(
    QDomDocument &document, const QString &name, const QString &attribute, QStringView value);

#endif
