#include "xmlui.h"

#include "xmlaction.h"

#include <QScopeGuard>
#include <QtAlgorithms>

#include <memory>

namespace {

const QString NAME = QStringLiteral("name");

// Calls change with every action of the page that has that type and originator.
template<typename Change>
void changeActions(const QDomElement &page, int type, int originator, Change change)
{
    std::list<QDomNode> nodes;
    XMLObject::getNodesOfType(page, XMLObject::XMLOBJECT_ACTION, nodes);
    XMLAction scratch;
    for (const QDomNode &node : nodes) {
        QDomElement e = node.toElement();
        if (e.isNull()) {
            continue;
        }
        scratch.setNode(e);
        if (scratch.getType() == type && scratch.getOriginator() == originator) {
            change(e);
        }
    }
}

}  // namespace

XMLUI::XMLUI() : XMLObject(XMLOBJECT_UI) {}

XMLUI::XMLUI(const QString &name) : XMLUI() { setName(name); }

XMLUI::~XMLUI() = default;

void XMLUI::setName(const QString &name) { setOwnAttribute(NAME, name); }
QString XMLUI::getName() const { return getAttribute(element(), NAME); }

QDomElement XMLUI::append(XMLAction &action)
{
    return element().isNull() ? QDomElement() : element().appendChild(action.getNode()).toElement();
}

int XMLUI::getActions(QList<XMLAction *> &actions, bool visibleOnly)
{
    std::list<QDomNode> nodes;
    getNodesOfType(element(), XMLOBJECT_ACTION, nodes);
    int count = 0;
    for (const QDomNode &node : nodes) {
        if (!node.isElement()) {
            continue;
        }
        auto action = std::make_unique<XMLAction>();
        action->setNode(node.toElement());
        if (visibleOnly && !action->getVisible()) {
            continue;
        }
        actions.append(action.get());
        action.release();  // the caller owns it now
        ++count;
    }
    return count;
}

int XMLUI::getActions(QList<XMLAction *> &actions) { return getActions(actions, false); }

int XMLUI::visibleActionCount()
{
    QList<XMLAction *> visible;
    const auto guard = qScopeGuard([&visible] { qDeleteAll(visible); });
    return getActions(visible, true);
}

void XMLUI::setActionVisible(int type, int originator, bool visible)
{
    changeActions(element(), type, originator,
        [visible](QDomElement &e) { XMLAction::setVisible(e, visible); });
}

void XMLUI::setActionName(int type, int originator, const QString &name)
{
    changeActions(
        element(), type, originator, [&name](QDomElement &e) { XMLAction::setName(e, name); });
}

void XMLUI::setActionOrgName(int type, int originator, const QString &orgName)
{
    changeActions(element(), type, originator,
        [&orgName](QDomElement &e) { XMLAction::setOrgName(e, orgName); });
}
