#ifndef XMLUI_H
#define XMLUI_H

#include "xmlobject.h"

class XMLAction;

/// A user-interface page: a named element "ui" whose direct children of kind action describe it.
///
/// Actions are copied into the page and out of it. The functions that change actions find them by
/// type and originator, which need not be unique.
class TQXML_EXPORT XMLUI : public XMLObject
{
public:
    /// @{
    /// A page without actions, with that name or without one.
    XMLUI();
    explicit XMLUI(const QString &name);
    /// @}
    ~XMLUI() override;

    /// @{
    /// Attribute "name". Setting an empty text changes nothing; a null string when absent.
    void setName(const QString &name);
    QString getName() const;
    /// @}

    /// Appends a deep copy of the action's element and returns the copy.
    QDomElement append(XMLAction &action);

    /// @{
    /// Append a new XMLAction for each action of the page, or only for the visible ones, in order,
    /// and return how many. The caller owns the new actions; changing them does not change the
    /// page. The list is not cleared.
    int getActions(QList<XMLAction *> &actions, bool visibleOnly);
    int getActions(QList<XMLAction *> &actions);
    /// @}
    /// The number of visible actions. An action without the property "visible" is visible.
    int visibleActionCount();

    /// @{
    /// Change every action of the page that has that type and originator.
    void setActionVisible(int type, int originator, bool visible);
    void setActionName(int type, int originator, const QString &name);
    void setActionOrgName(int type, int originator, const QString &orgName);
    /// @}
};

#endif
