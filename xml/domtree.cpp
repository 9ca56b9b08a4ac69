#include "domtree_p.h"

#include <QIODevice>
#include <QStringList>
#include <QTextStream>

#include <algorithm>
#include <tuple>
#include <vector>

namespace TQXmlInternal {

namespace {

// Levels of most documents.
constexpr size_t USUAL_DEPTH = 16;

// Moves node to the next node in document order that is not below it. Depth is how many levels node
// is below the root, which is not left; false at its end.
bool stepOver(QDomNode &node, int &depth)
{
    while (depth > 0 && node.nextSibling().isNull()) {
        node = node.parentNode();
        --depth;
    }
    if (depth == 0) {
        return false;
    }
    node = node.nextSibling();
    return true;
}

bool isDeeper(const QDomNode &root, int limit)
{
    int depth = 0;
    QDomNode node = root;
    do {
        for (QDomNode child = node.firstChild(); !child.isNull(); child = node.firstChild()) {
            if (++depth > limit) {
                return true;
            }
            node = child;
        }
    } while (stepOver(node, depth));
    return false;
}

QDomNode copyWithin(const QDomNode &root, int limit)
{
    // Copies of the nodes from the root down to the current one.
    std::vector<QDomNode> copies { root.cloneNode(false) };
    int depth = 0;
    QDomNode node = root;
    do {
        if (depth > 0) {
            copies.resize(size_t(depth));
            copies.push_back(copies.back().appendChild(node.cloneNode(false)));
        }
        for (QDomNode child = node.firstChild(); depth < limit && !child.isNull();
             child = node.firstChild()) {
            node = child;
            ++depth;
            copies.push_back(copies.back().appendChild(node.cloneNode(false)));
        }
    } while (stepOver(node, depth));
    return copies.front();
}

bool isPlainText(const QDomNode &node) { return node.nodeType() == QDomNode::TextNode; }

// The text that a run of adjacent text nodes writes. Moves node to what follows the run.
QString takeTextRun(QDomNode &node)
{
    QString text;
    for (; isPlainText(node); node = node.nextSibling()) {
        text += writtenText(node);
    }
    return text;
}

// Moves node to what follows a run of text nodes. Returns whether the run writes nothing: that is
// so when it is empty and next to a CDATA section.
bool skipEmptyTexts(QDomNode &node)
{
    const bool follows = node.previousSibling().isCDATASection();
    return takeTextRun(node).isEmpty() && (follows || node.isCDATASection());
}

// Compares the texts that start at both nodes, and moves both to what follows. Adjacent text nodes
// are written as one: "a" and "b" like "ab". An empty text is written differently from no text.
bool sameTexts(QDomNode &a, QDomNode &b)
{
    const bool isText = isPlainText(a);
    if (isText != isPlainText(b)) {
        return skipEmptyTexts(isText ? a : b);
    }
    if (!isText) {
        return true;
    }
    const QDomNode afterA = a.nextSibling();
    const QDomNode afterB = b.nextSibling();
    if (isPlainText(afterA) || isPlainText(afterB)) {
        return takeTextRun(a) == takeTextRun(b);
    }
    if (a.nodeValue() != b.nodeValue()) {
        return false;
    }
    a = afterA;
    b = afterB;
    return true;
}

// Empty and null namespaces serialise differently.
bool sameNamespace(const QDomNode &a, const QDomNode &b)
{
    const QString space = a.namespaceURI();
    const QString other = b.namespaceURI();
    return space.isNull() ? other.isNull() : !other.isNull() && space == other;
}

bool sameAttribute(const QDomNode &a, const QDomNode &b)
{
    return a.nodeValue() == b.nodeValue() && a.nodeName() == b.nodeName() && sameNamespace(a, b);
}

// Compares two attributes that were found under the same name: only prefixes, which come with a
// namespace, can make a difference between their names.
bool sameContent(const QDomNode &a, const QDomNode &b)
{
    const bool isPlain = a.namespaceURI().isNull() && b.namespaceURI().isNull();
    return isPlain ? a.nodeValue() == b.nodeValue() : sameAttribute(a, b);
}

// What an attribute says: its name, value and namespace, and whether it has any.
using AttributeText = std::tuple<QString, QString, QString, bool>;

std::vector<AttributeText> sorted(const QDomNamedNodeMap &attributes)
{
    std::vector<AttributeText> list;
    for (int i = 0; i < attributes.length(); ++i) {
        const QDomNode attribute = attributes.item(i);
        const QString space = attribute.namespaceURI();
        list.emplace_back(attribute.nodeName(), attribute.nodeValue(), space, space.isNull());
    }
    std::sort(list.begin(), list.end());
    return list;
}

// Compares by name. QtXml does not find attributes with a prefix by name.
bool sameByName(const QDomNamedNodeMap &left, const QDomNamedNodeMap &right)
{
    for (int i = 0; i < left.length(); ++i) {
        const QDomNode attribute = left.item(i);
        const QDomNode other = right.namedItem(attribute.nodeName());
        if (other.isNull() || !sameAttribute(attribute, other)) {
            return sorted(left) == sorted(right);
        }
    }
    return true;
}

// `likely` is the name of the attribute that was compared last. Neighbouring elements often have
// the same attribute, and QtXml finds it faster by name than by index.
bool sameAttributes(const QDomNode &a, const QDomNode &b, QString &likely)
{
    const QDomNamedNodeMap left = a.attributes();
    const QDomNamedNodeMap right = b.attributes();
    const int count = left.length();
    if (count != right.length()) {
        return false;
    }
    if (count > MANY_ATTRIBUTES) {
        return attributeTexts(a.toElement()) == attributeTexts(b.toElement());
    }
    if (count != 1) {
        return sameByName(left, right);
    }
    const QDomNode attribute = left.namedItem(likely);
    const QDomNode other = right.namedItem(likely);
    if (!attribute.isNull() && !other.isNull()) {
        return sameContent(attribute, other);
    }
    const QDomNode first = left.item(0);
    likely = first.nodeName();
    const QDomNode match = right.namedItem(likely);
    return sameAttribute(first, match.isNull() ? right.item(0) : match);
}

// Compares two nodes, not their children. For `likely` see sameAttributes().
bool sameNode(const QDomNode &a, const QDomNode &b, QString &likely)
{
    const QDomNode::NodeType type = a.nodeType();
    if (type != b.nodeType()) {
        return false;
    }
    if (type != QDomNode::ElementNode) {
        return writtenText(a) == writtenText(b);
    }
    if (a.nodeName() != b.nodeName() || !sameNamespace(a, b)) {
        return false;
    }
    return a.hasAttributes() ? sameAttributes(a, b, likely) : !b.hasAttributes();
}

// Children of two nodes that are compared. Every copy of a node costs two atomic operations.
struct Level
{
    Level(const QDomNode &parentA, const QDomNode &parentB)
        : a(parentA.firstChild()), b(parentB.firstChild())
    {
    }

    void step()
    {
        a = a.nextSibling();
        b = b.nextSibling();
    }

    QDomNode a;
    QDomNode b;
};

}  // namespace

QDomNode withinDepth(const QDomNode &node)
{
    return isDeeper(node, MAX_TREE_DEPTH) ? copyWithin(node, MAX_TREE_DEPTH) : node;
}

QString writtenText(const QDomNode &node)
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    stream << withinDepth(node);
    return text;
}

QDomNode nextBelow(const QDomNode &node, const QDomNode &root)
{
    QDomNode next = node.firstChild();
    for (QDomNode at = node; next.isNull() && at != root; at = at.parentNode()) {
        next = at.nextSibling();
    }
    return next;
}

QString textBelow(const QDomNode &parent)
{
    QDomNode node = parent.firstChild();
    if (isPlainText(node) && node.nextSibling().isNull()) {
        const QString text = node.nodeValue();
        return text.isNull() ? QStringLiteral("") : text;
    }
    QString text = QStringLiteral("");
    for (; !node.isNull(); node = nextBelow(node, parent)) {
        if (node.isText()) {
            text += node.nodeValue();
        }
    }
    return text;
}

bool isWithin(QDomNode node, const QDomNode &ancestor)
{
    while (!node.isNull() && node != ancestor) {
        node = node.parentNode();
    }
    return !node.isNull();
}

QStringList attributeTexts(const QDomElement &e)
{
    // <name xmlns="..." a="1" b="2"/>
    const QDomNode bare = e.hasChildNodes() ? e.cloneNode(false) : QDomNode(e);
    const QString tag = writtenText(bare);
    const auto start = tag.indexOf(QLatin1Char(' '), e.tagName().size()) + 1;
    const auto end = tag.lastIndexOf(QLatin1Char('"'));
    QStringList texts = tag.mid(start, end - start).split(QStringLiteral("\" "));
    if (!e.namespaceURI().isNull()) {
        texts.removeFirst();
    }
    const auto nameOf = [](const QString &text) {
        return text.left(text.indexOf(QLatin1Char('=')));
    };
    std::sort(texts.begin(), texts.end(),
        [&nameOf](const QString &a, const QString &b) { return nameOf(a) < nameOf(b); });
    for (QString &text : texts) {
        text += QLatin1Char('"');
    }
    return texts;
}

bool sameDocument(const QDomDocument &a, const QDomDocument &b)
{
    std::vector<Level> levels;  // down to where the walk is
    levels.reserve(USUAL_DEPTH);
    levels.emplace_back(a, b);
    QString likely;
    while (!levels.empty()) {
        Level &level = levels.back();
        if (!sameTexts(level.a, level.b) || level.a.isNull() != level.b.isNull()) {
            return false;
        }
        if (level.a.isNull()) {
            levels.pop_back();
            if (!levels.empty()) {
                levels.back().step();
            }
            continue;
        }
        if (!sameNode(level.a, level.b, likely)) {
            return false;
        }
        if (level.a.hasChildNodes() || level.b.hasChildNodes()) {
            levels.emplace_back(level.a, level.b);
        } else {
            level.step();
        }
    }
    return true;
}

}  // namespace TQXmlInternal
