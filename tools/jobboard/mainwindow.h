#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include "actionbar.h"
#include "bridge.h"
#include "itemagent.h"
#include "jobmodel.h"
#include "packetlog.h"
#include "requestagent.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"

#include <QMainWindow>
#include <QTimer>

#include <memory>

class DetailPane;
class PacketPane;
class QLabel;
class QLineEdit;
class QTableView;
class SourceTree;
class TQCommServer;

/// Types of the tool bar's actions.
namespace Tool {
enum Type {
    Reload = 1,
    Stop,
    AnyState,
    OnlyWaiting,
    OnlyInProgress,
    OnlyDone,
    ShowDetails,
    ShowPackets,
    CopyXml,
    DarkLook
};
}

/// The planner's window: sources, the jobs of the selected one, the details of a job, and the
/// packets.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// The connection is not owned and must outlive the window. Loading begins at once.
    explicit MainWindow(TQCommServer &server);
    ~MainWindow() override;

private:
    void build();
    void buildStatus();
    QTableView *buildTable();
    void sendPage();

    void load();
    void takeReply(int type, const std::list<QDomNode> &items);
    void askOutputs(const std::list<QDomNode> &outputs);
    void checkServed(const QString &error);
    void finishLoading();
    void stop();
    void fail(const QString &error);
    void addReceived();
    void replaceShown();

    void choose(int action, bool checked);
    void showSource(const Source &source);
    void showCounts();
    QString counts() const;
    void showRows();
    void chooseJob(const TQKEY_ELEMENT &key);
    void askJob();
    void takeJob(const QDomElement &job, const QString &error);
    void showJob(const QDomElement &job);

    XMLRouter m_router;
    PacketLog m_log;
    Bridge m_bridge;
    RequestAgent m_agent;
    ItemAgent m_items;
    JobModel m_jobs;
    JobFilter m_filter;
    TQKEY_ELEMENT m_wanted = {};  // the selected job; the null key for none
    QTimer m_choice;  // waits for the event loop, until the selection is final
    XMLPacketable m_job;  // the one in the detail pane; a null element for none
    QString m_jobProblem;  // why the selected job is not shown; empty if it is

    int m_requests = 0;  // of the current loading
    bool m_isLoading = false;
    bool m_isReload = false;  // old rows stay until everything is received
    bool m_isPart = false;  // only a part is shown: the last loading ended early
    QString m_problem;  // why the last loading ended early; empty if it did not
    std::vector<Source> m_receivedSources;  // not shown yet
    std::vector<JobModel::Job> m_receivedJobs;

    std::unique_ptr<ActionBar> m_bar;  // deleted before the router
    SourceTree *m_sources;  // this and all below: children
    QTableView *m_table;
    QLineEdit *m_search;
    DetailPane *m_detail;
    PacketPane *m_packets;
    QLabel *m_counts;
};

#endif
