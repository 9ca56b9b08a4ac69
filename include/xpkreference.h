#ifndef XPKREFERENCE_H
#define XPKREFERENCE_H

#include "tqxml_export.h"

#include "tqtypes.h"

#include <QString>

class XMLPacketable;

/// A reference from a data item to another item, by key or by name, with a copy of that item.
class TQXML_EXPORT XPKReference
{
public:
    /// @{
    /// A reference by key or by name. It takes over the item, which may be null.
    XPKReference(XMLPacketable *packetable, TQKEY_ELEMENT key);
    XPKReference(XMLPacketable *packetable, const QString &name);
    /// @}
    /// Deletes the item.
    ~XPKReference();
    XPKReference(const XPKReference &) = delete;
    XPKReference &operator=(const XPKReference &) = delete;

    TQKEY_ELEMENT key;  ///< the null key for a reference by name
    QString name;  ///< a null string for a reference by key
    XMLPacketable *packetable;  ///< owned; may be null
};

#endif
