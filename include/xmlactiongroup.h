#ifndef XMLACTIONGROUP_H
#define XMLACTIONGROUP_H

#include "tqxml_export.h"

#include <QList>
#include <QObject>
#include <QPointer>

class XMLAction;

/// Actions of which at most one stays checked: when one reports a toggle, all others are unchecked.
///
/// The group does not own its actions. A deleted member is removed from the list. Group and members
/// may be deleted in any order, also in a slot that one of their signals calls. When the group is
/// deleted, XMLAction::actionGroup() of its members is left as it is.
class TQXML_EXPORT XMLActionGroup : public QObject
{
    Q_OBJECT

public:
    /// The name, as Latin-1, becomes the object name; it may be null.
    XMLActionGroup(QObject *parent, const char *name);
    ~XMLActionGroup() override;

    /// Adds the action and returns it. An action added twice is listed twice. Null is
    /// ignored.
    XMLAction *addAction(XMLAction *action);
    /// The members in the order of adding.
    QList<XMLAction *> actions() const;
    /// The first member that is selected (not: checked), or null.
    XMLAction *checkedAction() const;
    /// Toggles the action if it is a member and not checked.
    void toggleAction(XMLAction *action);

Q_SIGNALS:
    /// For applications. The library never emits it.
    void triggered(XMLAction *action);

public Q_SLOTS:
    /// Unchecks every member except the sender, whether the sender is now checked or not.
    void updateActions();
    /// @{
    /// Removes one occurrence of the action from the list and disconnects the action from the
    /// group. Without an action, or with null, it is the sender of the signal that is removed.
    void removeAction(XMLAction * /*action*/);
    void removeAction();
    /// @}
    /// For a member's signal toggling(): sets \a approved to whether the toggle is allowed. A
    /// checked member may not be toggled; to uncheck it, check another.
    void approveToggle(bool &approved);

private:
    QList<QPointer<XMLAction>> m_actions;  // not owned; null for a destroyed action
    bool m_updating = false;  // inside updateActions()
};

#endif
