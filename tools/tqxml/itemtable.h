#ifndef ITEMTABLE_H
#define ITEMTABLE_H

#include "tqtypes.h"

#include <QByteArray>
#include <QDomNode>

#include <list>
#include <vector>

/// A table for people, with the keys and names of packetable elements of one data type, and the
/// fields with these data tags. The first tag is that of the name: only its heading is used.
QByteArray itemTable(const std::list<QDomNode> &items, const std::vector<unsigned> &tags);

#endif
