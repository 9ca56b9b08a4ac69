#ifndef FIELDLOSS_H
#define FIELDLOSS_H

#include <QDomElement>
#include <QString>

/// What a conversion to packet text would lose.
struct Loss
{
    QDomElement element;  ///< where
    QString reason;  ///< empty if nothing is lost

    bool isNone() const { return reason.isEmpty(); }
};

/// The first thing in a packetable, an item or a list that packet text has no place for.
Loss firstUnheld(const QDomElement &block);
/// The first field that a conversion to packet text and back changes.
Loss firstChanged(const QDomElement &written, const QDomElement &read);

#endif
