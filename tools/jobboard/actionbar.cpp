#include "actionbar.h"

#include "xmlactiongroup.h"
#include "xmlpacket.h"
#include "xmlui.h"

#include <QAction>

ActionBar::ActionBar(XMLRouter &to, PacketLog &log)
    : BoardAgent(TYPE, QStringLiteral("Tool bar"), to, log)
{
}

void ActionBar::take(const XMLPacket &packet)
{
    std::list<QDomNode> pages;
    packet.getNodesOfType(XMLObject::XMLOBJECT_UI, pages);
    for (const QDomNode &node : pages) {
        XMLUI page;
        page.setNode(node.toElement());
        QList<XMLAction *> actions;
        page.getActions(actions);
        for (XMLAction *action : actions) {
            if (m_entries.contains(action->getType())) {
                update(*action, m_entries.value(action->getType()));
                delete action;
            } else {
                add(action);
            }
        }
    }
}

void ActionBar::update(const XMLAction &sent, const Entry &entry)
{
    entry.action->setName(sent.getName());
    entry.action->setVisible(sent.getVisible());
    entry.action->setEnabled(sent.isEnabled());
    entry.shown->setText(sent.getName());
    entry.shown->setVisible(sent.getVisible());
    entry.shown->setEnabled(sent.isEnabled());
    entry.action->setCheckable(sent.isCheckable());
    entry.shown->setCheckable(sent.isCheckable());
    if (sent.isChecked() != entry.action->isChecked()) {
        entry.action->setChecked(sent.isChecked());  // the shown one follows
    }
}

void ActionBar::add(XMLAction *action)
{
    action->setParent(this);
    if (action->getOriginator() != m_lastOriginator) {
        addSeparator();
        m_lastOriginator = action->getOriginator();
    }
    const int type = action->getType();
    QAction *shown = addAction(action->getName());
    shown->setCheckable(action->isCheckable());
    shown->setChecked(action->isChecked());
    connect(shown, &QAction::triggered, this, [this, type] { press(type); });
    connect(action, &XMLAction::toggled, this, [this, type, shown](bool checked) {
        shown->setChecked(checked);
        Q_EMIT chosen(type, checked);
    });
    if (action->getOriginator() != 0) {
        XMLActionGroup *&exclusive = m_groups[action->getOriginator()];
        exclusive = exclusive ? exclusive : new XMLActionGroup(this, nullptr);
        exclusive->addAction(action);
        connect(action, &XMLAction::toggling, exclusive, &XMLActionGroup::approveToggle);
    }
    m_entries[type] = { action, shown };
    update(*action, m_entries[type]);
}

void ActionBar::press(int type)
{
    const Entry entry = m_entries.value(type);
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
