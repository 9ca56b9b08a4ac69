#include "bench.h"
#include "item.h"
#include "packettext_p.h"
#include "server.h"
#include "xmlaction.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <memory>
#include <vector>

using namespace TQXmlInternal;

namespace {

constexpr int SIZE = 20;

QDomDocument newDocument() { return XMLObject::createDocument(QString(), QStringLiteral("root")); }

Figure::Make readText(int items)
{
    return [items] {
        return [text = Item::text(items)] {
            QDomDocument document = newDocument();
            QDomElement root = document.documentElement();
            readPacketText(root, text.constData(), size_t(text.size()));
        };
    };
}

Figure::Make readLines(int items)
{
    return [items] {
        return [text = Item::text(items), item = std::make_shared<XMLPacketable>()] {
            QDomDocument document = newDocument();
            QDomElement root = document.documentElement();
            QStringList lines = QString::fromUtf8(text).split(QLatin1Char('\n'));
            keep(item->toDom(root, lines, 0));
        };
    };
}

Figure::Make writeText(int items)
{
    return [items] {
        QDomDocument document = newDocument();
        QDomElement root = document.documentElement();
        for (int i = 0; i < items; ++i) {
            Item::build(document, root);
        }
        return [document, root, item = std::make_shared<XMLPacketable>()] {
            keep(item->toPacket(root).size());
        };
    };
}

Figure::Make editPage(int actions)
{
    return [actions] {
        auto page = std::make_shared<XMLUI>();
        for (int i = 0; i < actions; ++i) {
            XMLAction action(QStringLiteral("action"), i, 1);
            page->append(action);
        }
        return [page, actions] {
            page->setActionName(actions / 2, 1, QStringLiteral("renamed"));
            keep(page->visibleActionCount());
        };
    };
}

// An item that refers to that many others by name.
struct Archive
{
    std::vector<TQDB_REFERENCE> references;
    std::vector<std::unique_ptr<ArchiveNode>> children;
    std::vector<std::string> names;
    std::unique_ptr<ArchiveNode> root;
    TQCommServer server { "" };
    static Archive *current;

    explicit Archive(int count) : references(size_t(count)), names(size_t(count))
    {
        std::string text = "SI 30a\n";
        for (size_t i = 0; i < references.size(); ++i) {
            names[i] = "output " + std::to_string(i);
            text += "9 " + names[i] + "\n";
            auto *item = new TextItem("SI 30a\n1 x\nTI 0\n");
            item->setName(names[i].c_str());
            children.push_back(std::make_unique<ArchiveNode>(item));
            references[i] = { i + 1 < references.size() ? &references[i + 1] : nullptr,
                PACKETDATATYPE_NONE, { 0, 0 }, names[i].c_str() };
        }
        root = std::make_unique<ArchiveNode>(new TextItem(text + "TI 0\n"));
    }

    void run()
    {
        current = this;
        readyReferences = references.data();
        readyNode = [](const TQDB_REFERENCE *reference) {
            // The items referred to have no references.
            const size_t index = size_t(reference - current->references.data());
            ArchiveNode *child = current->children[index].get();
            readyReferences = nullptr;
            return child;
        };
        XMLPacketable item;
        item.setData(server, root.get());
        keep(item.getNodeConst().isNull());
    }
};
Archive *Archive::current = nullptr;

Figure::Make inlineItems(int count)
{
    return [count] { return [archive = std::make_shared<Archive>(count)] { archive->run(); }; };
}

const Register FIGURES = {
    { "growth_text_to_dom", readText(10 * SIZE), readText(SIZE), 10 },
    { "growth_lines_to_dom", readLines(10 * SIZE), readLines(SIZE), 10 },
    { "growth_dom_to_text", writeText(10 * SIZE), writeText(SIZE), 10 },
    { "growth_page_edit", editPage(50 * SIZE), editPage(5 * SIZE), 10 },
    { "growth_inlining", inlineItems(100 * SIZE), inlineItems(10 * SIZE), 10 },
};

}  // namespace
