#include "actionbar.h"

#include "packetlog.h"
#include "xmlaction.h"
#include "xmlactiongroup.h"
#include "xmlpacket.h"
#include "xmlrouter.h"
#include "xmlui.h"

#include <QAction>

ActionBar::ActionBar(XMLRouter &to, PacketLog &log) : XMLAgent(TYPE), m_log(log)
{
    to.add(this);
    m_log.setAgentName(getAgentID(), QStringLiteral("Tool bar"));
}

ActionBar::~ActionBar() { router->remove(this); }

QAction *ActionBar::shown(int type) const
{
    const auto found = m_entries.find(type);
    return found == m_entries.end() ? nullptr : found->second.shown;
}

XMLAction *ActionBar::action(int type) const
{
    const auto found = m_entries.find(type);
    return found == m_entries.end() ? nullptr : found->second.action.get();
}

void ActionBar::receive(XMLPacket *packet)
{
    const std::unique_ptr<XMLPacket> sent(packet);  // ours from here on
    m_log.add(PacketLog::Received, *sent);
    std::list<QDomNode> pages;
    sent->getNodesOfType(XMLObject::XMLOBJECT_UI, pages);
    for (const QDomNode &node : pages) {
        XMLUI page;
        page.setNode(node.toElement());
        QList<XMLAction *> actions;
        page.getActions(actions);
        for (XMLAction *action : actions) {
            update(std::unique_ptr<XMLAction>(action));
        }
    }
}

void ActionBar::update(std::unique_ptr<XMLAction> action)
{
    const QString name = action->getName();
    const bool visible = action->getVisible();
    const bool enabled = action->isEnabled();
    const auto known = m_entries.find(action->getType());
    Entry &entry = known == m_entries.end() ? add(std::move(action)) : known->second;
    entry.action->setName(name);
    entry.action->setVisible(visible);
    entry.action->setEnabled(enabled);
    entry.shown->setText(name);
    entry.shown->setVisible(visible);
    entry.shown->setEnabled(enabled);
}

ActionBar::Entry &ActionBar::add(std::unique_ptr<XMLAction> action)
{
    if (action->getOriginator() != m_lastOriginator) {
        addSeparator();
        m_lastOriginator = action->getOriginator();
    }
    const int type = action->getType();
    QAction *shown = addAction(action->getName());
    shown->setCheckable(action->isCheckable());
    shown->setChecked(action->isChecked());
    connect(shown, &QAction::triggered, this, [this, type] { press(type); });
    connect(action.get(), &XMLAction::toggled, this, [this, type, shown](bool checked) {
        shown->setChecked(checked);
        Q_EMIT chosen(type, checked);
    });
    if (XMLActionGroup *exclusive = group(action->getOriginator())) {
        exclusive->addAction(action.get());
        connect(action.get(), &XMLAction::toggling, exclusive, &XMLActionGroup::approveToggle);
    }
    return m_entries[type] = Entry { std::move(action), shown };
}

XMLActionGroup *ActionBar::group(int originator)
{
    if (originator == 0) {
        return nullptr;
    }
    XMLActionGroup *&known = m_groups[originator];
    if (!known) {
        known = new XMLActionGroup(this, nullptr);
    }
    return known;
}

void ActionBar::press(int type)
{
    const Entry &entry = m_entries.at(type);
    XMLAction &action = *entry.action;
    if (!action.isCheckable()) {
        Q_EMIT chosen(type, false);
        return;
    }
    bool approved = true;
    Q_EMIT action.toggling(approved);
    if (approved && action.actionGroup()) {
        action.actionGroup()->toggleAction(&action);
    } else if (approved) {
        action.toggle();
    }
    entry.shown->setChecked(action.isChecked());  // the click has moved its mark already
}
