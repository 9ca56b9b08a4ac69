#ifndef ITEMTABLE_H
#define ITEMTABLE_H

#include "tqtypes.h"

#include <QByteArray>
#include <QDomNode>

#include <list>
#include <vector>

/// A table for people of packetable elements of one data type: their keys, names and the fields
/// with these data tags. The first tag only tells what a name is called.
QByteArray itemTable(const std::list<QDomNode> &items, const std::vector<unsigned> &tags);

#endif
