#ifndef ACTIONBAR_H
#define ACTIONBAR_H

#include "boardagent.h"
#include "xmlaction.h"

#include <QHash>
#include <QToolBar>

class XMLActionGroup;

/// A tool bar that shows a page: each action of the page that it receives becomes a QAction.
///
/// The type identifies an action. The first packet creates the actions. Later packets change names,
/// visibility and whether actions are enabled and checked; so does the user. Checkable actions with
/// the same originator, other than 0, exclude each other.
class ActionBar : public QToolBar, public BoardAgent
{
    Q_OBJECT

public:
    static constexpr int TYPE = 2;

    ActionBar(XMLRouter &to, PacketLog &log);

    /// The QAction, or the XMLAction, of that type; null if no page had it.
    QAction *shown(int type) const { return m_entries.value(type).shown; }
    XMLAction *action(int type) const { return m_entries.value(type).action; }

Q_SIGNALS:
    /// An action was triggered, or its checked state was set (even to the same value): by the user,
    /// its group, a page or through action().
    void chosen(int type, bool checked);

protected:
    void take(const XMLPacket &packet) override;

private:
    struct Entry
    {
        XMLAction *action = nullptr;
        QAction *shown = nullptr;
    };

    void update(const XMLAction &sent, const Entry &entry);
    void add(XMLAction *action);
    void press(int type);

    QHash<int, XMLActionGroup *> m_groups;  // by originator; children
    QHash<int, Entry> m_entries;  // by type; children
    int m_lastOriginator = 0;
};

#endif
