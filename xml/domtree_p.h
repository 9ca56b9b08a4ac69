#ifndef TQXML_DOMTREE_P_H
#define TQXML_DOMTREE_P_H

#include "vocabulary_p.h"

#include <QDomDocument>
#include <QStringList>

namespace TQXmlInternal {

// Walks over DOM trees that come from outside and may nest without end: none of them recurses.

// The node itself, or, when the tree below it is deeper than MAX_TREE_DEPTH, a copy down to there.
QDomNode withinDepth(const QDomNode &node);

// The node that follows in document order below root; null at the end.
QDomNode nextBelow(const QDomNode &node, const QDomNode &root);

// The text that QtXml writes for a node, down to MAX_TREE_DEPTH.
QString writtenText(const QDomNode &node);

// The text below an element; never a null string.
QString textBelow(const QDomNode &parent);

// True when node is the ancestor or lies somewhere below it.
bool isWithin(QDomNode node, const QDomNode &ancestor);

// Attributes beyond which an element's are taken from its text: QtXml walks to an attribute at an
// index, which takes long where there are many.
constexpr int MANY_ATTRIBUTES = 256;

// The attributes of an element as QtXml writes them, name="value", by name; without the element's
// namespace.
QStringList attributeTexts(const QDomElement &e);

// True when both documents are written alike, up to the order of attributes.
bool sameDocument(const QDomDocument &a, const QDomDocument &b);

}  // namespace TQXmlInternal

#endif
