#ifndef ACTIONBAR_H
#define ACTIONBAR_H

#include "boardagent.h"
#include "xmlaction.h"

#include <QHash>
#include <QToolBar>

class XMLActionGroup;

/// A tool bar that shows the page it is sent: each action of the page becomes a QAction.
///
/// Actions are known by their type. The page's first packet makes them; later ones change names,
/// visibility, whether they are enabled, and what is checked, as the user does. Checkable actions
/// with the same originator, other than 0, exclude each other.
class ActionBar : public QToolBar, public BoardAgent
{
    Q_OBJECT

public:
    static constexpr int TYPE = 2;

    ActionBar(XMLRouter &to, PacketLog &log);

    /// What shows the action of that type, or what it stands for; null when no page had it.
    QAction *shown(int type) const { return m_entries.value(type).shown; }
    XMLAction *action(int type) const { return m_entries.value(type).action; }

Q_SIGNALS:
    /// An action was triggered, or its checked state was written, changed or not: by the user, by
    /// its group, by a page that has it changed, or through action().
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
