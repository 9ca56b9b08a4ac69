#ifndef FIELDLOSS_H
#define FIELDLOSS_H

#include <QDomElement>
#include <QString>

/// The name of the first field that a conversion to packet text and back changes; empty if there is
/// none. Ignores fields that packet text cannot hold, and inlined items.
QString firstLoss(const QDomElement &written, const QDomElement &read);

#endif
