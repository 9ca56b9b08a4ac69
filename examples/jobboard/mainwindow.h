#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include "actionbar.h"
#include "jobmodel.h"
#include "packetlog.h"
#include "requestagent.h"
#include "xmlrouter.h"

#include <QMainWindow>

#include <memory>

class DetailPane;
class PacketPane;
class QLabel;
class QLineEdit;
class QProgressBar;
class QTableView;
class SourceTree;
class TQCommServer;
class XMLPacketable;

/// The planner's window: the jobs of what is chosen, the details of one, and the packets behind it.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// The connection is not owned and must outlive the window. Loading begins at once.
    explicit MainWindow(TQCommServer &server);
    ~MainWindow() override;

Q_SIGNALS:
    /// Everything that was asked for has arrived, loading was stopped, or it failed.
    void loaded();

private:
    void build();
    QTableView *buildTable();
    void sendPage();

    void load();
    void takeReply(int type, const std::list<QDomNode> &items);
    void showProgress();
    void fail(const QString &error);

    void choose(int action, bool checked);
    void showSource(const Source &source);
    void showJob(const QModelIndex &row);
    void showCounts();

    TQCommServer &m_server;
    XMLRouter m_router;
    PacketLog m_log;
    RequestAgent m_agent;
    JobModel m_jobs;
    JobFilter m_filter;
    std::unique_ptr<XMLPacketable> m_job;  // the one in the detail pane; null for none
    int m_requests = 0;  // of the loading under way
    bool m_isLoading = false;

    std::unique_ptr<ActionBar> m_bar;  // before the router goes
    SourceTree *m_sources;  // this and all below: children
    QTableView *m_table;
    QLineEdit *m_search;
    DetailPane *m_detail;
    PacketPane *m_packets;
    QLabel *m_counts;
    QProgressBar *m_progress;
};

#endif
