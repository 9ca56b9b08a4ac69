#ifndef DOMTREE_P_H
#define DOMTREE_P_H

#include "tqtypes.h"

#include <QDomDocument>

// Walks over DOM trees that come from outside and may nest without end: none of them recurses.

// Levels below a node that are copied and written. QtXml itself recurses there, and its writer
// needs 2 KB of stack for each.
constexpr int MAX_TREE_DEPTH = TQMAX_NESTING + 128;

// The node itself, or, when the tree below it is deeper than MAX_TREE_DEPTH, a copy down to there.
QDomNode withinDepth(const QDomNode &node);

// The node that follows in document order below root; null at the end.
QDomNode nextBelow(const QDomNode &node, const QDomNode &root);

// The text below an element; never a null string.
QString textBelow(const QDomNode &parent);

// True when node is the ancestor or lies somewhere below it.
bool isWithin(QDomNode node, const QDomNode &ancestor);

// True when both documents are written alike, up to the order of attributes.
bool sameDocument(const QDomDocument &a, const QDomDocument &b);

#endif
