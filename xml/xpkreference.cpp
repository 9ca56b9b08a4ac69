#include "xpkreference.h"

#include "xmlpacketable.h"

XPKReference::XPKReference(XMLPacketable *item, TQKEY_ELEMENT itemKey)
    : key(itemKey), packetable(item)
{
}

XPKReference::XPKReference(XMLPacketable *item, const QString &itemName)
    : key(TQKEY_CC::getNullKey()), name(itemName), packetable(item)
{
}

XPKReference::~XPKReference()
{
    delete packetable;
    packetable = nullptr;
}
