#ifndef XMLUI_H
#define XMLUI_H

#include "xmlobject.h"

class XMLAction;

/// A user-interface page: a named element "ui" whose direct children of kind action describe it.
///
/// Actions go in and come out as copies; an action of the page is known by its type and
/// originator, which need not be unique.
class TQXML_EXPORT XMLUI : public XMLObject
{
public:
    /// @{
    /// A page without actions, and with no name or that one.
    XMLUI();
    explicit XMLUI(const QString &name);
    /// @}
    ~XMLUI() override;

    /// @{
    /// Attribute "name": an empty text leaves the earlier one; a null string when absent.
    void setName(const QString &name);
    QString getName() const;
    /// @}

    /// Appends a deep copy of the action's element and returns the copy.
    QDomElement append(XMLAction &action);

    /// @{
    /// Appends a new XMLAction for each action of the page, in order, or only for the visible ones,
    /// and returns how many. The new actions are the caller's to delete; changing them does not
    /// change the page. The list is not cleared.
    int getActions(QList<XMLAction *> &actions, bool visibleOnly);
    int getActions(QList<XMLAction *> &actions);
    /// @}
    /// How many actions are visible; those that do not say count as visible.
    int visibleActionCount();

    /// @{
    /// Changes every action of the page with that type and originator.
    void setActionVisible(int type, int originator, bool visible);
    void setActionName(int type, int originator, const QString &name);
    void setActionOrgName(int type, int originator, const QString &orgName);
    /// @}
};

#endif
