#ifndef XMLMONITOR_H
#define XMLMONITOR_H

#include "tqxml_monitor_export.h"
#include "xmlrouterobserver.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>

class XMLRouter;

QT_FORWARD_DECLARE_CLASS(QAction)
QT_FORWARD_DECLARE_CLASS(QBoxLayout)
QT_FORWARD_DECLARE_CLASS(QComboBox)
QT_FORWARD_DECLARE_CLASS(QLabel)
QT_FORWARD_DECLARE_CLASS(QLineEdit)
QT_FORWARD_DECLARE_CLASS(QTableView)

namespace TQXmlInternal {
class PacketFilter;
class PacketLog;
class PacketModel;
class XmlView;
}

/// Shows what passes through a router: the packets as a list, with request and reply paired, the
/// dropped ones with the reason, the agents that come and go, and the text of the chosen packet.
///
/// It is a widget for a window of its own or for a pane. Its actions have shortcuts while one of
/// its widgets has the focus.
///
/// It records in bounded memory: the last 50,000 packets, of which it keeps texts of 64 MiB in all
/// and 1 MiB each. What was dropped is said below the list. During a burst it spends less than half
/// of the time on writing texts; packets beyond that are listed without a text.
class TQXML_MONITOR_EXPORT XMLMonitor : public QWidget
{
    Q_OBJECT

public:
    /// Observes the router, which is not owned and may be null.
    explicit XMLMonitor(XMLRouter *router, QWidget *parent = nullptr);
    /// Stops observing.
    ~XMLMonitor() override;

    /// Observes another router, or none. The monitor becomes its observer, in place of the one
    /// before. What was recorded stays.
    void setRouter(XMLRouter *router);
    /// An observer for a router of another thread, which the monitor then shows. The caller owns
    /// it; it is used and destroyed in the router's thread, and may outlive the monitor. Create it
    /// in the monitor's thread, and observe with it no more than one router.
    ///
    /// It never waits for the monitor's thread, and keeps at most 64 MiB of texts for it.
    std::unique_ptr<XMLRouterObserver> makeObserver();
    /// The name that is shown for an agent; "agent 7" without one.
    void setAgentName(int agentID, const QString &name);

public Q_SLOTS:
    /// A paused monitor does not record.
    void setPaused(bool isPaused);
    /// Forgets all packets.
    void clear();
    /// Scrolls to each new packet; on unless switched off.
    void setFollowing(bool isFollowing);
    /// Copies the chosen packets to the clipboard, as XML.
    void copy();
    /// @{
    /// Write all packets to a file (*.tqpackets), or show those of a file and pause. False on
    /// failure, which is said below the list. Without a name the user is asked for one.
    bool save(const QString &fileName = QString());
    bool open(const QString &fileName = QString());
    /// @}

private:
    void makeActions();
    QAction *makeAction(const QString &text, const QKeySequence &shortcut);
    QLineEdit *addField(QBoxLayout *row, const QString &label, const QString &name);
    QWidget *makeBar();
    QWidget *makeList();
    QWidget *makePane();
    void connectFields();

    void refresh();
    void filter();
    void showChosen();
    void goToPartner();
    void findInText(bool isBackward);
    void showStatus();
    QString status() const;

    const std::unique_ptr<TQXmlInternal::PacketLog> m_log;
    QPointer<XMLRouter> m_router;
    QTimer m_refresh;  // runs while there is something new to show
    QTimer m_filterDelay;  // until the user stops typing
    QString m_problem;  // of the last file; empty for none
    TQXmlInternal::PacketModel *m_model;  // this and all below: children
    TQXmlInternal::PacketFilter *m_shown;
    QAction *m_pause = nullptr;
    QAction *m_follow = nullptr;
    QLineEdit *m_agent = nullptr;
    QComboBox *m_kind = nullptr;
    QLineEdit *m_words = nullptr;
    QTableView *m_list = nullptr;
    QLineEdit *m_find = nullptr;
    TQXmlInternal::XmlView *m_text = nullptr;
    QLabel *m_status = nullptr;
};

#endif
