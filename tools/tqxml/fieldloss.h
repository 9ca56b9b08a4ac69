#ifndef FIELDLOSS_H
#define FIELDLOSS_H

#include <QDomElement>
#include <QString>

/// Name of the first field that is not the same in what was read back; empty when there is none.
/// Fields that packet text does not carry, and items that are inlined, do not count.
QString firstLoss(const QDomElement &written, const QDomElement &read);

#endif
