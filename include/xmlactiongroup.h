#ifndef XMLACTIONGROUP_H
#define XMLACTIONGROUP_H

#include "tqxml_export.h"

#include <QList>
#include <QObject>
#include <QPointer>

class XMLAction;

/// Actions of which at most one stays checked: when one reports a toggle, all others are unchecked.
///
/// The group owns no action. A member that is deleted leaves the list by itself; group and members
/// may be deleted in any order, also from inside the slots of their signals. A member's group
/// pointer is not cleared when the group dies.
class TQXML_EXPORT XMLActionGroup : public QObject
{
    Q_OBJECT

public:
    /// The name, as Latin-1, becomes the object name; it may be null.
    XMLActionGroup(QObject *parent, const char *name);
    ~XMLActionGroup() override;

    /// Adds the action and returns it. Added twice it is listed twice; null is only returned.
    XMLAction *addAction(XMLAction *action);
    /// The members in the order of adding.
    QList<XMLAction *> actions() const;
    /// The first member that is selected (not: checked), or null.
    XMLAction *checkedAction() const;
    /// Toggles a member that is not checked; leaves all others alone.
    void toggleAction(XMLAction *action);

Q_SIGNALS:
    /// For applications to emit; the library never does.
    void triggered(XMLAction *action);

public Q_SLOTS:
    /// Unchecks every member but the sender, whatever the sender's new state is.
    void updateActions();
    /// @{
    /// Takes one occurrence of the action off the list and disconnects it from the group; null, or
    /// none, stands for the sender of the signal.
    void removeAction(XMLAction * /*action*/);
    void removeAction();
    /// @}
    /// Answers a member's toggling(): true means that the toggle is allowed. Only a checked member
    /// is refused, so that the mark moves by checking another.
    void approveToggle(bool &approved);

private:
    QList<QPointer<XMLAction>> m_actions;  // not owned; null where an action is dying or gone
    bool m_updating = false;  // inside updateActions()
};

#endif
