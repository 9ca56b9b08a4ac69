#ifndef ACTIONBAR_H
#define ACTIONBAR_H

#include "xmlagent.h"

#include <QToolBar>

#include <map>
#include <memory>

class PacketLog;
class XMLAction;
class XMLActionGroup;

/// A tool bar that shows the page it is sent: each action of the page becomes a QAction.
///
/// Actions are known by their type. The page's first packet makes them; later ones change names,
/// visibility and whether they are enabled, but leave the checked state to the user. Checkable
/// actions with the same originator, other than 0, exclude each other.
class ActionBar : public QToolBar, public XMLAgent
{
    Q_OBJECT

public:
    static constexpr int TYPE = 2;

    /// Registers itself. Router and log are not owned and must outlive the bar.
    ActionBar(XMLRouter &to, PacketLog &log);
    ~ActionBar() override;

    /// What shows the action of that type, or what it stands for; null when no page had it.
    QAction *shown(int type) const;
    XMLAction *action(int type) const;

    void receive(XMLPacket *packet) override;

Q_SIGNALS:
    /// An action was triggered, or its checked state was written, changed or not: by the user, by
    /// its group or through action().
    void chosen(int type, bool checked);

private:
    struct Entry
    {
        std::unique_ptr<XMLAction> action;
        QAction *shown;  // child of the bar
    };

    void update(std::unique_ptr<XMLAction> action);
    Entry &add(std::unique_ptr<XMLAction> action);
    void press(int type);
    XMLActionGroup *group(int originator);

    PacketLog &m_log;
    std::map<int, XMLActionGroup *> m_groups;  // by originator; children
    std::map<int, Entry> m_entries;  // by type
    int m_lastOriginator = 0;
};

#endif
