#include "xmlactiongroup.h"

#include "xmlaction.h"

XMLActionGroup::XMLActionGroup(QObject *parent, const char *name) : QObject(parent)
{
    setObjectName(QString::fromLatin1(name));
}

XMLActionGroup::~XMLActionGroup() = default;

XMLAction *XMLActionGroup::addAction(XMLAction *action)
{
    if (action) {
        m_actions.append(action);
        action->setActionGroup(this);
        connect(action, SIGNAL(toggled(bool)), this, SLOT(updateActions()));
        connect(action, SIGNAL(destroyed(QObject *)), this, SLOT(removeAction()));
    }
    return action;
}

QList<XMLAction *> XMLActionGroup::actions() const
{
    QList<XMLAction *> living;
    for (const QPointer<XMLAction> &action : m_actions) {
        if (action) {
            living.append(action);
        }
    }
    return living;
}

XMLAction *XMLActionGroup::checkedAction() const
{
    for (const QPointer<XMLAction> &action : m_actions) {
        if (action && action->isSelected()) {
            return action;
        }
    }
    return nullptr;
}

void XMLActionGroup::toggleAction(XMLAction *action)
{
    if (action && m_actions.contains(action) && !action->isChecked()) {
        action->toggle();
    }
}

void XMLActionGroup::updateActions()
{
    const QObject *reporter = sender();
    if (!reporter || m_updating) {
        return;
    }
    // What the slots of the others' signals do may delete members, or this group.
    const QList<QPointer<XMLAction>> members = m_actions;
    const QPointer<XMLActionGroup> self(this);
    m_updating = true;
    for (const QPointer<XMLAction> &action : members) {
        if (action && action != reporter) {
            action->setChecked(false);
        }
        if (!self) {
            return;
        }
    }
    m_updating = false;
}

void XMLActionGroup::removeAction(XMLAction *action)
{
    if (!action) {
        action = qobject_cast<XMLAction *>(sender());
        if (!m_actions.contains(action)) {
            action = nullptr;
        }
    }
    if (action) {
        action->setActionGroup(nullptr);
        disconnect(action, nullptr, this, nullptr);
        m_actions.removeOne(action);
    } else {
        m_actions.removeAll(
            QPointer<XMLAction>());  // an action that signals destroyed() is null here already
    }
}

void XMLActionGroup::removeAction() { removeAction(nullptr); }

void XMLActionGroup::approveToggle(bool &approved)
{
    auto *action = qobject_cast<XMLAction *>(sender());
    approved = !action || !m_actions.contains(action) || !action->isChecked();
}
