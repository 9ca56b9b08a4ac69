#ifndef TQXML_DOMTREE_P_H
#define TQXML_DOMTREE_P_H

#include "vocabulary_p.h"

#include <QDomDocument>
#include <QStringList>

namespace TQXmlInternal {

// Functions that walk over untrusted DOM trees. None of them recurses, however deep the tree is.

// The node itself. If its tree is deeper than MAX_TREE_DEPTH, a copy without the deeper levels.
QDomNode withinDepth(const QDomNode &node);

// The node that follows in document order below root; null at the end.
QDomNode nextBelow(const QDomNode &node, const QDomNode &root);

// The text that QtXml writes for a node, without what is deeper than MAX_TREE_DEPTH.
QString writtenText(const QDomNode &node);

// The text below an element; never a null string.
QString textBelow(const QDomNode &parent);

// Whether node is `ancestor` or is below it.
bool isWithin(QDomNode node, const QDomNode &ancestor);

// An element with more attributes than this is read from its written text: finding an attribute by
// index takes QtXml time in proportion to the index.
constexpr int MANY_ATTRIBUTES = 256;

// The attributes of an element as QtXml writes them, name="value", sorted by name. The element's
// own namespace is not among them.
QStringList attributeTexts(const QDomElement &e);

// Whether both documents serialise to the same text, apart from the order of attributes.
bool sameDocument(const QDomDocument &a, const QDomDocument &b);

}  // namespace TQXmlInternal

#endif
