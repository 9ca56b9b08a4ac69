#include "bench.h"
#include "item.h"
#include "packettext_p.h"
#include "server.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"

#include <pugixml.hpp>

#include <memory>
#include <sstream>

using namespace TQXmlInternal;

namespace {

// A packetable element in a document of its own.
struct Tree
{
    QDomDocument document = XMLObject::createDocument(QString(), QStringLiteral("root"));
    QDomElement root = document.documentElement();

    static std::shared_ptr<Tree> withItems(int items)
    {
        auto tree = std::make_shared<Tree>();
        for (int i = 0; i < items; ++i) {
            Item::build(tree->document, tree->root);
        }
        return tree;
    }
};

Measured readText()
{
    return [text = Item::text()] {
        Tree tree;
        readPacketText(tree.root, text.constData(), size_t(text.size()));
        keep(tree.root.hasChildNodes());
    };
}

Measured buildDirectly()
{
    return [] {
        Tree tree;
        Item::build(tree.document, tree.root);
        keep(tree.root.hasChildNodes());
    };
}

Measured writeText()
{
    const auto tree = Tree::withItems(1);
    return [tree, item = std::make_shared<XMLPacketable>()] {
        keep(item->toPacket(tree->root).toUtf8().size());
    };
}

Measured walk()
{
    const auto tree = Tree::withItems(1);
    return [tree] { keep(Item::walk(tree->root)); };
}

constexpr int HEAP_ITEMS = 1000;

Measured holdConverted()
{
    const std::shared_ptr<TQPacketable> item = Item::serverItem();
    return [item, packet = std::make_shared<XMLPacket>()] {
        for (int i = 0; i < HEAP_ITEMS; ++i) {
            packet->append(*item, false);
        }
    };
}

Measured holdBuilt()
{
    return [tree = Tree::withItems(0)] {
        for (int i = 0; i < HEAP_ITEMS; ++i) {
            Item::buildPacketable(tree->document, tree->root);
        }
    };
}
// The same tree in a library that is built for speed, to show what QtXml itself costs.
void copyInto(pugi::xml_node target, const QDomNode &source)
{
    for (QDomNode node = source.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.isText()) {
            target.append_child(pugi::node_pcdata).set_value(node.nodeValue().toUtf8().constData());
            continue;
        }
        pugi::xml_node copy = target.append_child(node.nodeName().toUtf8().constData());
        const QDomNamedNodeMap attributes = node.attributes();
        for (int i = 0; i < attributes.length(); ++i) {
            const QDomNode attribute = attributes.item(i);
            copy.append_attribute(attribute.nodeName().toUtf8().constData())
                .set_value(attribute.nodeValue().toUtf8().constData());
        }
        copyInto(copy, node);
    }
}

Measured buildPugi()
{
    auto source = std::make_shared<pugi::xml_document>();
    copyInto(*source, Tree::withItems(1)->root);
    return [source] {
        pugi::xml_document copy;
        copy.append_copy(source->first_child());
        keep(copy.first_child());
    };
}

Measured savePugi()
{
    auto source = std::make_shared<pugi::xml_document>();
    copyInto(*source, Tree::withItems(1)->root);
    return [source] {
        std::ostringstream out;
        source->save(out, " ");
        keep(out.tellp());
    };
}

Measured saveItem()
{
    const auto tree = Tree::withItems(1);
    return [tree] { keep(XMLObject::toString(tree->root).size()); };
}

const Register FIGURES = {
    { "text_to_dom", readText, buildDirectly },
    { "dom_to_text", writeText, walk },
    { "heap_per_item", holdConverted, holdBuilt, 1, Figure::Bytes },
    { "text_to_dom_over_pugixml", readText, buildPugi },
    { "to_string_over_pugixml", saveItem, savePugi },
};

}  // namespace
