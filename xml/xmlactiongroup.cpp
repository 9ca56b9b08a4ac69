#include "xmlactiongroup.h"

#include "xmlaction.h"

#include <QScopeGuard>

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
        connect(action, &XMLAction::toggled, this, &XMLActionGroup::updateActions);
        connect(action, &QObject::destroyed, this, qOverload<>(&XMLActionGroup::removeAction));
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
    // The flag is tested first, because finding the sender takes a walk over all members.
    const QObject *reporter = m_updating ? nullptr : sender();
    if (!reporter) {
        return;
    }
    // A slot that is called by setChecked() may delete members, or this group.
    const QList<QPointer<XMLAction>> members = m_actions;
    const QPointer<XMLActionGroup> self(this);
    m_updating = true;
    const auto end = qScopeGuard([&self] {
        if (self) {
            self->m_updating = false;
        }
    });
    for (const QPointer<XMLAction> &action : members) {
        if (action && action != reporter) {
            action->setChecked(false);
        }
        if (!self) {
            return;
        }
    }
}

void XMLActionGroup::removeAction(XMLAction *action)
{
    // The sender of destroyed() is no longer an XMLAction, and its pointer in the list is null.
    auto *living = qobject_cast<XMLAction *>(action ? action : sender());
    if (!action && living && !m_actions.contains(living)) {
        return;  // the signal of an action that is not a member
    }
    if (living) {
        living->setActionGroup(nullptr);
        disconnect(living, nullptr, this, nullptr);
        m_actions.removeOne(living);
    } else {
        m_actions.removeAll(QPointer<XMLAction>());
    }
}

void XMLActionGroup::removeAction() { removeAction(nullptr); }

void XMLActionGroup::approveToggle(bool &approved)
{
    auto *action = qobject_cast<XMLAction *>(sender());
    approved = !action || !m_actions.contains(action) || !action->isChecked();
}
