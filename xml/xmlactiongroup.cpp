#include "xmlactiongroup.h"

#include "xmlaction.h"

#include <QPointer>

#include <algorithm>

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

QList<XMLAction *> XMLActionGroup::actions() const { return m_actions; }

XMLAction *XMLActionGroup::checkedAction() const
{
    for (XMLAction *action : m_actions) {
        if (action->isSelected()) {
            return action;
        }
    }
    return nullptr;
}

void XMLActionGroup::toggleAction(XMLAction *action)
{
    if (m_actions.lastIndexOf(action) >= 0 && !action->isChecked()) {
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
    QList<QPointer<XMLAction>> others;
    for (XMLAction *action : m_actions) {
        if (action != reporter) {
            others.append(action);
        }
    }
    const QPointer<XMLActionGroup> self(this);
    m_updating = true;
    for (const QPointer<XMLAction> &action : others) {
        if (action) {
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
        const QObject *reporter = sender();
        action = qobject_cast<XMLAction *>(sender());
        if (!action) {
            // In its signal destroyed() an action is no longer one: it is only compared.
            m_actions.erase(std::remove_if(m_actions.begin(), m_actions.end(),
                                [reporter](const QObject *member) { return member == reporter; }),
                m_actions.end());
            return;
        }
        if (!m_actions.contains(action)) {
            return;
        }
    }
    action->setActionGroup(nullptr);
    disconnect(action, nullptr, this, nullptr);
    m_actions.removeOne(action);
    if (m_actions.contains(action)) {  // it was added twice, and must not outlive itself here
        connect(action, SIGNAL(destroyed(QObject *)), this, SLOT(removeAction()));
    }
}

void XMLActionGroup::removeAction() { removeAction(nullptr); }

void XMLActionGroup::approveToggle(bool &approved)
{
    auto *action = qobject_cast<XMLAction *>(sender());
    approved = m_actions.lastIndexOf(action) < 0 || !action->isChecked();
}
